#include "mainwindow/CommandLine.h"

#include <QTest>

/// What the joined arguments ask for.
class tst_CommandLine : public QObject
{
    Q_OBJECT

private slots:
    void parses_data();
    void parses();
};

void tst_CommandLine::parses_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<bool>("diagnostic");
    QTest::addColumn<bool>("forceUpdate");
    QTest::addColumn<bool>("limitChannels");
    QTest::addColumn<QString>("suffix");
    const auto row = [](const char* arguments, bool diagnostic, bool force, bool limit, const char* suffix) {
        QTest::newRow(*arguments == '\0' ? "none" : arguments)
            << QString::fromUtf8(arguments) << diagnostic << force << limit << QString::fromUtf8(suffix);
    };
    row("", false, false, false, "");
    row("-diag", true, false, false, " (diag)");
    row("-forceupdate", false, true, false, " (forceupdate)");
    row("-maxchannels", false, false, true, " (max channels = 4)");
    row("-diag -maxchannels", true, false, true, " (diag) (max channels = 4)");
    row("-diag -forceupdate -maxchannels", true, true, true, " (diag) (forceupdate) (max channels = 4)");
    row("-maxchannels -forceupdate -diag", true, true, true, " (max channels = 4) (forceupdate) (diag)");
    row("-diag -diag", true, false, false, " (diag) (diag)");
    row("-DIAG", false, false, false, "");
    row("-DIAG -diag", true, false, false, " (diag)");
    row("-diagnostic", false, false, false, "");
    row("file.prf -diag", false, false, false, "");
    row("file.PRF -diag", false, false, false, "");
    row("/home/me/my own setup.prf -diag", false, false, false, "");
    row("-maxchannels my setup.Prf -diag", false, false, true, " (max channels = 4)");
    row("some file -diag", true, false, false, " (diag)");
    row(".prf -diag", false, false, false, "");
    row("a.prf.txt -diag", true, false, false, " (diag)");
    row("my -diag setup.prf -forceupdate", true, false, false, " (diag)");
    row("-diag  -maxchannels", true, false, false, " (diag)");
    row(" -diag", false, false, false, "");
    row("-diag ", true, false, false, " (diag)");
    row("  ", false, false, false, "");
}

void tst_CommandLine::parses()
{
    QFETCH(QString, arguments);
    const CommandLine result = CommandLine::parse(arguments);
    QTEST(result.diagnostic, "diagnostic");
    QTEST(result.forceUpdate, "forceUpdate");
    QTEST(result.limitChannels, "limitChannels");
    QTEST(result.titleSuffix, "suffix");
}

QTEST_APPLESS_MAIN(tst_CommandLine)
#include "tst_CommandLine.moc"
