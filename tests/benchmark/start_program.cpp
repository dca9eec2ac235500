// The program as it is, which tells when it was painted first: what bench_start runs.

#include "FirstPaint.h"
#include "app/Startup.h"
#include "mainwindow/PelorinMainWindow.h"

#include <memory>

int main(int argc, char** argv)
{
    std::unique_ptr<Bench::FirstPaint> paint;
    return runProgram(argc, argv, [&paint](PelorinMainWindow& window) {
        paint = std::make_unique<Bench::FirstPaint>(window);
    });
}
