#include "PortClient.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <memory>
#include <sys/types.h>

/// The built program as its user starts it.
class tst_SimulatorProgram : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void printsItsPortAndTalks();
    void takesCommands();
    void tellsWhenATrapGoesOff();
    void reportsErrorsAndGoesOn();
    void endsWithItsInput();
    void staysIfToldTo();
    void endsOnASignal_data();
    void endsOnASignal();
    void playsAScript();
    void scriptErrorsEndIt();
    void refusesBadCommandLines_data();
    void refusesBadCommandLines();
    void tellsAboutItself();
    void startsInAnotherImage();
    void usesTheGivenName();

private:
    void start(const QStringList& arguments);
    /// Waits for a line of output that contains the text, and returns it; empty when none comes.
    QString waitForLine(const QString& text);
    QString port() { return waitForLine(QStringLiteral("port: ")).section(QStringLiteral(": "), 1); }
    bool hasEnded();
    QString script(const QByteArray& text);

    std::unique_ptr<QProcess> m_program;
    QStringList m_lines;
    QTemporaryDir m_folder;
};

void tst_SimulatorProgram::cleanup()
{
    if (m_program && m_program->state() != QProcess::NotRunning) {
        m_program->terminate();
        QVERIFY(m_program->waitForFinished(5000));
    }
    m_program.reset();
    m_lines.clear();
}

void tst_SimulatorProgram::start(const QStringList& arguments)
{
    m_program = std::make_unique<QProcess>();
    m_program->start(QStringLiteral(VYR_SIMULATOR_PROGRAM), arguments);
    QVERIFY2(m_program->waitForStarted(), qPrintable(m_program->errorString()));
}

QString tst_SimulatorProgram::waitForLine(const QString& text)
{
    QString found;
    const bool came = QTest::qWaitFor([&] {
        while (m_program->canReadLine()) {
            m_lines.append(QString::fromUtf8(m_program->readLine()).trimmed());
        }
        while (found.isEmpty() && !m_lines.isEmpty()) {
            const QString line = m_lines.takeFirst();
            if (line.contains(text)) {
                found = line;
            }
        }
        return !found.isEmpty();
    });
    Q_UNUSED(came) // the caller sees it in the text
    return found;
}

bool tst_SimulatorProgram::hasEnded()
{
    return m_program->state() == QProcess::NotRunning || m_program->waitForFinished(5000);
}

QString tst_SimulatorProgram::script(const QByteArray& text)
{
    QString path = m_folder.filePath(QStringLiteral("scene"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size()) {
        return {};
    }
    return path;
}

void tst_SimulatorProgram::printsItsPortAndTalks()
{
    start({QStringLiteral("--unpaced")});
    const PortClient client(port());
    QVERIFY(client.isOpen());
    QCOMPARE(client.ask("v"), QByteArray("VYRApp V2.7.0\n"));
}

void tst_SimulatorProgram::takesCommands()
{
    start({});
    const PortClient client(port());
    m_program->write("fault Too hot\nstatus\nlog on\n");
    QCOMPARE(waitForLine(QStringLiteral("fault:")), QStringLiteral("fault: Too hot"));
    QVERIFY(!waitForLine(QStringLiteral("730:")).isEmpty());
    QCOMPARE(client.ask("fault?"), QByteArray("FAULT: Too hot\n"));
    QVERIFY(waitForLine(QStringLiteral("->")).endsWith(QStringLiteral("fault?")));
    QVERIFY(waitForLine(QStringLiteral("<-")).endsWith(QStringLiteral("FAULT: Too hot\\n")));
    m_program->write("replug ttyVYR8\n");
    QCOMPARE(waitForLine(QStringLiteral("unplugged")), QStringLiteral("unplugged"));
    QVERIFY(port().endsWith(QStringLiteral("/ttyVYR8")));
    m_program->write("quit\n");
    QVERIFY(hasEnded());
    QCOMPARE(m_program->exitCode(), 0);
}

void tst_SimulatorProgram::tellsWhenATrapGoesOff()
{
    start({QStringLiteral("--unpaced")});
    const PortClient client(port());
    m_program->write("trap isappvalid 2 refuse\nlines\n");
    QVERIFY(!waitForLine(QStringLiteral("0")).isEmpty()); // by then the trap is set
    QCOMPARE(client.ask("isappvalid"), QByteArray("Yes\n"));
    QCOMPARE(client.ask("isappvalid"), QByteArray("refused\n"));
    QCOMPARE(waitForLine(QStringLiteral("trap:")), QStringLiteral("trap: isappvalid"));
}

void tst_SimulatorProgram::reportsErrorsAndGoesOn()
{
    start({});
    QVERIFY(!port().isEmpty());
    m_program->write("nonsense\nstatus\n");
    QVERIFY(!waitForLine(QStringLiteral("mode:")).isEmpty());
    QVERIFY(m_program->readAllStandardError().startsWith("input:1: unknown command \"nonsense\""));
}

void tst_SimulatorProgram::endsWithItsInput()
{
    start({});
    const QString path = port();
    QVERIFY(QFileInfo::exists(path));
    m_program->write("wait 10\nstatus"); // a last line without an end counts
    m_program->closeWriteChannel();
    QVERIFY(!waitForLine(QStringLiteral("mode:")).isEmpty());
    QVERIFY(hasEnded());
    QCOMPARE(m_program->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_program->exitCode(), 0);
    QVERIFY(!QFileInfo::exists(QFileInfo(path).path()));
}

void tst_SimulatorProgram::staysIfToldTo()
{
    start({QStringLiteral("--stay"), QStringLiteral("--unpaced")});
    const QString path = port();
    m_program->write("status\n");
    m_program->closeWriteChannel();
    QVERIFY(!waitForLine(QStringLiteral("730:")).isEmpty());
    const PortClient client(path);
    QVERIFY(!m_program->waitForFinished(100)); // the end of its input would have ended it at once
    QCOMPARE(client.ask("v"), QByteArray("VYRApp V2.7.0\n"));
}

void tst_SimulatorProgram::endsOnASignal_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("terminate") << SIGTERM;
    QTest::newRow("interrupt") << SIGINT;
    QTest::newRow("hang-up") << SIGHUP;
}

void tst_SimulatorProgram::endsOnASignal()
{
    QFETCH(int, number);
    start({QStringLiteral("--stay")});
    const QString path = port();
    QCOMPARE(::kill(static_cast<pid_t>(m_program->processId()), number), 0);
    QVERIFY(hasEnded());
    QCOMPARE(m_program->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_program->exitCode(), 0);
    QVERIFY(!QFileInfo::exists(QFileInfo(path).path()));
}

void tst_SimulatorProgram::playsAScript()
{
    const QString path = script("# a scene\nwarmup 0\nwarn First\nwait 50\nstatus\nwarn Second\nstatus\n");
    start({QStringLiteral("--script"), path, QStringLiteral("--unpaced")});
    m_program->closeWriteChannel();
    QCOMPARE(waitForLine(QStringLiteral("warning:")), QStringLiteral("warning: First"));
    QCOMPARE(waitForLine(QStringLiteral("warning:")), QStringLiteral("warning: Second"));
    QVERIFY(hasEnded());
    QCOMPARE(m_program->exitCode(), 0);
}

void tst_SimulatorProgram::scriptErrorsEndIt()
{
    start({QStringLiteral("--stay"), QStringLiteral("--script"), script("warn One\nfault\nstatus\n")});
    QVERIFY(hasEnded());
    QCOMPARE(m_program->exitCode(), 3);
    QVERIFY(m_program->readAllStandardError().endsWith("/scene:2: usage: fault TEXT\n"));
    QVERIFY(!m_program->readAllStandardOutput().contains("mode:"));

    start({QStringLiteral("--script"), m_folder.filePath(QStringLiteral("missing"))});
    QVERIFY(hasEnded());
    QCOMPARE(m_program->exitCode(), 3);
    QVERIFY(m_program->readAllStandardError().contains("missing: "));
}

void tst_SimulatorProgram::refusesBadCommandLines_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QByteArray>("complaint");
    QTest::newRow("unknown option") << QStringList{QStringLiteral("--fast")} << 1 << QByteArray("fast");
    QTest::newRow("stray word") << QStringList{QStringLiteral("word")} << 1 << QByteArray("word");
    QTest::newRow("both paces") << QStringList{QStringLiteral("--paced"), QStringLiteral("--unpaced")} << 1
                                << QByteArray("exclude");
    QTest::newRow("unknown image") << QStringList{QStringLiteral("--image"), QStringLiteral("x")} << 1
                                   << QByteArray("No such image: x");
    QTest::newRow("missing value") << QStringList{QStringLiteral("--script")} << 1 << QByteArray("script");
    QTest::newRow("no file name") << QStringList{QStringLiteral("--name"), QStringLiteral("a/b")} << 2
                                  << QByteArray("a/b");
}

void tst_SimulatorProgram::refusesBadCommandLines()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QByteArray, complaint);
    start(arguments);
    QVERIFY(hasEnded());
    QCOMPARE(m_program->exitCode(), exitCode);
    const QByteArray said = m_program->readAllStandardError();
    QVERIFY2(said.contains(complaint), said.constData());
    QCOMPARE(m_program->readAllStandardOutput(), QByteArray());
}

void tst_SimulatorProgram::tellsAboutItself()
{
    start({QStringLiteral("--help")});
    QVERIFY(hasEnded());
    QCOMPARE(m_program->exitCode(), 0);
    const QByteArray help = m_program->readAllStandardOutput();
    for (const char* part :
         {"--paced", "--unpaced", "--stay", "--image", "--name", "--script", "Exit codes:"}) {
        QVERIFY2(help.contains(part), part);
    }
    start({QStringLiteral("--version")});
    QVERIFY(hasEnded());
    QVERIFY(m_program->readAllStandardOutput().startsWith("vyr-simulator "));
}

void tst_SimulatorProgram::startsInAnotherImage()
{
    start({QStringLiteral("--image"), QStringLiteral("updater"), QStringLiteral("--unpaced")});
    const PortClient client(port());
    QCOMPARE(client.ask("v"), QByteArray("LoaderUpdater V1.2.0\n"));
    QCOMPARE(client.ask("v?a"), QByteArray("LoaderUpdater V1.2.0\n"));
}

void tst_SimulatorProgram::usesTheGivenName()
{
    start({QStringLiteral("--name"), QStringLiteral("ttyACM7")});
    QVERIFY(port().endsWith(QStringLiteral("/ttyACM7")));
}

QTEST_GUILESS_MAIN(tst_SimulatorProgram)
#include "tst_SimulatorProgram.moc"
