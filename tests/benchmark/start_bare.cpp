// The least that a program with a window of this size does: the baseline of bench_start, which runs it.

#include "FirstPaint.h"

#include <QApplication>
#include <QMainWindow>

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    QMainWindow window;
    window.resize(1024, 775);
    const Bench::FirstPaint paint(window);
    window.show();
    return QApplication::exec();
}
