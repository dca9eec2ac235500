// Runs a fuzzer's target over its seeds, once each: what was found and mended stays mended, with any
// compiler.

#include "FuzzInput.h"

#include <QDirIterator>
#include <QFile>

#include <cstdio>

namespace {
/// The number of inputs that were run; the target ends the process when one breaks something.
int runAll(const QString& folder)
{
    int count = 0;
    QDirIterator files(folder, QDir::Files);
    while (files.hasNext()) {
        QFile file(files.next());
        std::printf("%s\n", qPrintable(file.fileName()));
        std::fflush(stdout); // the last name is the one to look at
        if (!file.open(QIODevice::ReadOnly))
            return 0;
        const QByteArray bytes = file.readAll();
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                               static_cast<std::size_t>(bytes.size()));
        ++count;
    }
    return count;
}
} // namespace

int main()
{
    const QString more = QString::fromUtf8(VYR_MORE_SEEDS);
    const bool ran = runAll(QString::fromUtf8(VYR_SEEDS)) > 0 && (more.isEmpty() || runAll(more) > 0);
    return ran ? 0 : 1; // no seeds at all would prove nothing
}
