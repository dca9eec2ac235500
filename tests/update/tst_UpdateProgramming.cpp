// Programming one image: what goes over the wire, what the progress dialog shows, and how it ends.

#include "device/Device.h"
#include "update/FlashProgramming.h"
#include "update/Update.h"
#include "update/UpdateBench.h"
#include "update/UpdateResult.h"

#include <QLabel>
#include <QProgressBar>
#include <QTest>
#include <QTimer>

namespace {
using namespace std::chrono_literals;
constexpr const char* firstLine = "S00600004844521B\n";
const QString title = QStringLiteral("Programming the Test");

QByteArray lineOf(int size, const QByteArray& end = "\n")
{
    return QByteArray(size, 'A') + end;
}

/// Counts how often a widget is painted.
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget& widget) { widget.installEventFilter(this); }
    int count() const { return m_count; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        m_count += event->type() == QEvent::Paint ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }

private:
    int m_count = 0;
};
} // namespace

class tst_UpdateProgramming : public UpdateTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void bytes_data();
    void bytes();
    void startsAtTheBeginning();
    void noDevice();
    void answers_data();
    void answers();
    void silence();
    void portClosed();
    void dialog();
    void titleIsText();
    void values_data();
    void values();
    void cancel_data();
    void cancel();
    void cancelBeforeTheFirstLine();
    void windowAnswers();

private:
    /// Writes the image and programs it.
    int program(const QByteArray& image, int lineCount = 3);
    int programFile(QFile& file, int lineCount = 3);
    QByteArray sent() const; ///< as the device got it
    bool isDialogGone() const { return m_window->findChildren<QProgressDialog*>().isEmpty(); }

    std::unique_ptr<Update::InProgress> m_run;
};

void tst_UpdateProgramming::init()
{
    // No poll disturbs a loader.
    QVERIFY(buildUpdate([](UpdatableDevice& device) { device.running = device.loader; }));
    m_illuminator->clearCommands();
    m_device->clearLines();
    m_run = std::make_unique<Update::InProgress>(*m_window->update());
}

void tst_UpdateProgramming::cleanup()
{
    m_run.reset();
    removeUpdate();
}

int tst_UpdateProgramming::programFile(QFile& file, int lineCount)
{
    return FlashProgramming::sendWithDialog(*m_window->device(), file, lineCount, title, m_window.get());
}

int tst_UpdateProgramming::program(const QByteArray& image, int lineCount)
{
    QFile file(m_home->path(QStringLiteral("image.srec")));
    if (!file.open(QIODevice::WriteOnly) || file.write(image) != image.size()) {
        qFatal("The image cannot be written");
    }
    file.close();
    file.open(QIODevice::ReadOnly | QIODevice::Text);
    return programFile(file, lineCount);
}

QByteArray tst_UpdateProgramming::sent() const
{
    QByteArray bytes;
    const QList<QByteArray> lines = m_illuminator->bench().lines();
    for (const QByteArray& line : lines) {
        bytes += line;
        bytes += '\n';
    }
    return bytes;
}

void tst_UpdateProgramming::bytes_data()
{
    QTest::addColumn<QByteArray>("image"); // behind its first line
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char* name, const QByteArray& image, const QByteArray& expected) {
        QTest::newRow(name) << image << expected;
    };
    row("nothing", "", "");
    row("three lines", "S1\nS2\nS9\n", "wf:S1\nwf:S2\nwf:S9\n");
    row("ends of two characters", "S1\r\nS9\r\n", "wf:S1\nwf:S9\n");
    row("last line without an end", "S1\nS9", "wf:S1\nwf:S9\n");
    row("blank line", "S1\n\nS9\n", "wf:S1\nwf:\nwf:S9\n");
    row("blanks are kept", "S1 \n S9\t\n", "wf:S1 \nwf: S9\t\n");
    row("end of file character", "S1\n\x1a\nS9\n", "wf:S1\n");
    row("end of file character, and no more", "S1\n\x1a", "wf:S1\n");
    row("end of file character first", "\x1aS1\nS9\n", "");
    row("end of file character within a line", "S1\x1aS2\nS9\n", "wf:S1\x1aS2\nwf:S9\n");
    row("no line of an image", "hello, world\n", "wf:hello, world\n");
    row("63 bytes", lineOf(59), "wf:" + lineOf(59));
    row("64 bytes", lineOf(60), "wf:" + lineOf(60) + "\n");
    row("65 bytes", lineOf(61), "wf:" + lineOf(61));
    row("128 bytes", lineOf(124), "wf:" + lineOf(124));
    row("64 bytes, ends of two characters", lineOf(60, "\r\n"), "wf:" + lineOf(60) + "\n");
    row("64 bytes without an end", lineOf(61, ""), "wf:" + lineOf(61));
    row("64 bytes with the end that is missing", lineOf(60, ""), "wf:" + lineOf(60) + "\n");
    row("64 bytes, and more lines", lineOf(60) + lineOf(60) + "S9\n",
        "wf:" + lineOf(60) + "\nwf:" + lineOf(60) + "\nwf:S9\n");
    row("long", lineOf(199), "wf:" + lineOf(199));
}

void tst_UpdateProgramming::bytes()
{
    QFETCH(QByteArray, image);
    QFETCH(QByteArray, expected);
    QCOMPARE(program(firstLine + image), int(UpdateResult::Ok));
    QCOMPARE(sent(), expected);
}

void tst_UpdateProgramming::startsAtTheBeginning()
{
    QFile file(m_home->path(QStringLiteral("image.srec")));
    QVERIFY(file.open(QIODevice::ReadWrite | QIODevice::Text));
    file.write(QByteArray(firstLine) + "S1\nS9\n");
    file.readAll();
    QCOMPARE(programFile(file), int(UpdateResult::Ok));
    QCOMPARE(programFile(file), int(UpdateResult::Ok));
    QCOMPARE(sent(), QByteArray("wf:S1\nwf:S9\nwf:S1\nwf:S9\n"));
}

void tst_UpdateProgramming::noDevice()
{
    QFile file;
    QCOMPARE(m_window->update()->programFlash(file, 1, title), int(UpdateResult::LineNotSent));
    QVERIFY(isDialogGone());
}

void tst_UpdateProgramming::answers_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("code");
    const auto row = [](const char* answer, int code) {
        QTest::newRow(answer) << QByteArray(answer) << code;
    };
    row("Wrote", UpdateResult::Ok);
    row("Wrote 16 bytes to 0x12000", UpdateResult::Ok);
    row("ok:Wrote.", UpdateResult::Ok);
    row("wrote", -40008);
    row("WROTE", -40008);
    row("Writ", -40008);
    row("Wro te", -40008);
    row("refused", -40008);
    row("ok", -40008);
}

void tst_UpdateProgramming::answers()
{
    QFETCH(QByteArray, answer);
    QFETCH(int, code);
    m_device->answer("wf:", 2, answer);
    QCOMPARE(program(QByteArray(firstLine) + "S1\nS2 is damaged\nS9\n"), code);
    QCOMPARE(m_device->lines().value(1), QByteArray("wf:S2 is damaged"));
    QCOMPARE(m_device->count("wf:"), code == 0 ? 3 : 2);
    QVERIFY(isDialogGone());
}

/// The one row that has to wait for an answer that does not come.
void tst_UpdateProgramming::silence()
{
    m_device->answer("wf:", 2, "");
    QCOMPARE(program(QByteArray(firstLine) + "S1\nS2\nS9\n"), -40007);
    QCOMPARE(sent(), QByteArray("wf:S1\nwf:S2\n"));
    QVERIFY(isDialogGone());
}

void tst_UpdateProgramming::portClosed()
{
    m_device->when("wf:", 2, [this] { m_illuminator->bench().wire().unplug(); });
    QCOMPARE(program(QByteArray(firstLine) + "S1\nS2\nS9\n"), -40007);
    QCOMPARE(sent(), QByteArray("wf:S1\nwf:S2\n"));
    QVERIFY(isDialogGone());
}

void tst_UpdateProgramming::dialog()
{
    bool looked = false;
    m_device->when("wf:", 1, [this, &looked] {
        const QProgressDialog* const progress = UpdateTrace::progressDialog();
        QVERIFY(progress != nullptr);
        QCOMPARE(progress->labelText(), QStringLiteral("Programming the Test...<br><br>Do not unplug unit"));
        QCOMPARE(progress->windowTitle(), QStringLiteral("Firmware Update"));
        QCOMPARE(progress->parentWidget(), m_window.get());
        QCOMPARE(progress->windowModality(), Qt::ApplicationModal);
        QVERIFY(progress->windowFlags().testFlag(Qt::WindowTitleHint));
        QVERIFY(progress->isWindow());
        QCOMPARE(progress->minimum(), 0);
        QCOMPARE(progress->maximum(), 7);
        QCOMPARE(progress->findChild<QPushButton*>()->text(), QStringLiteral("Cancel"));
        // Two lines of text between which one is empty, not the marks.
        const auto* const text = progress->findChild<QLabel*>();
        QVERIFY(text->sizeHint().height() >= 3 * text->fontMetrics().height());
        QVERIFY(text->sizeHint().width() < text->fontMetrics().horizontalAdvance(text->text()));
        looked = true;
    });
    QCOMPARE(program(QByteArray(firstLine) + "S1\nS9\n", 7), int(UpdateResult::Ok));
    QVERIFY(looked);
    QVERIFY(isDialogGone());
    QCOMPARE(m_bench->log().count(QStringLiteral("Start programming FLASH"), QsLogging::LogLevel::Info), 1);
}

void tst_UpdateProgramming::titleIsText()
{
    QString text;
    m_trace->setOnShow([&text](QWidget& widget) { text = widget.findChild<QLabel*>()->text(); });
    QFile file(m_home->path(QStringLiteral("image.srec")));
    QVERIFY(file.open(QIODevice::ReadWrite | QIODevice::Text));
    QCOMPARE(FlashProgramming::sendWithDialog(*m_window->device(), file, 1, QStringLiteral("<b>%1 & %2"),
                                              m_window.get()),
             int(UpdateResult::Ok));
    QCOMPARE(text, QStringLiteral("&lt;b&gt;%1 &amp; %2...<br><br>Do not unplug unit"));
}

void tst_UpdateProgramming::values_data()
{
    QTest::addColumn<int>("lineCount");
    QTest::newRow("as counted") << 5;
    QTest::newRow("fewer counted") << 2; // a damaged line ended the count
    QTest::newRow("more counted") << 9;
}

void tst_UpdateProgramming::values()
{
    QFETCH(int, lineCount);
    constexpr int lines = 5;
    QList<int> values;
    m_trace->setOnShow(
        [&values](QWidget& widget) { values.append(qobject_cast<QProgressDialog*>(&widget)->value()); });
    for (int line = 1; line <= lines; ++line) {
        m_device->when("wf:", line, [&values] {
            const QProgressDialog* const progress = UpdateTrace::progressDialog();
            values.append(progress == nullptr ? -1 : progress->value());
        });
    }
    QCOMPARE(program(firstLine + QByteArray("S1\n").repeated(lines), lineCount), int(UpdateResult::Ok));
    QList<int> expected{0};
    for (int line = 1; line <= lines; ++line) {
        expected.append(qMin(line, lineCount)); // the dialog stays, and stays full
    }
    QCOMPARE(values, expected);
}

void tst_UpdateProgramming::cancel_data()
{
    QTest::addColumn<int>("way");
    QTest::newRow("click") << 0;
    QTest::newRow("Escape") << 1;
    QTest::newRow("closed") << 2;
}

void tst_UpdateProgramming::cancel()
{
    QFETCH(int, way);
    m_device->when("wf:", 2, [way] {
        QProgressDialog* const progress = UpdateTrace::progressDialog();
        QVERIFY(progress != nullptr);
        if (way == 0) {
            cancelProgress();
        } else if (way == 1) {
            QTest::keyClick(progress, Qt::Key_Escape);
        } else {
            progress->close();
        }
    });
    QCOMPARE(program(QByteArray(firstLine) + "S1\nS2\nS3\nS9\n", 4), -40012);
    QCOMPARE(sent(), QByteArray("wf:S1\nwf:S2\n"));
    QVERIFY(isDialogGone());
    // The next one begins anew.
    QCOMPARE(program(QByteArray(firstLine) + "S1\nS9\n", 2), int(UpdateResult::Ok));
}

void tst_UpdateProgramming::cancelBeforeTheFirstLine()
{
    m_trace->setOnShow([](QWidget& widget) { qobject_cast<QProgressDialog*>(&widget)->cancel(); });
    QCOMPARE(program(QByteArray(firstLine) + "S1\nS9\n"), -40012);
    QCOMPARE(sent(), QByteArray());
    QVERIFY(isDialogGone());
}

void tst_UpdateProgramming::windowAnswers()
{
    constexpr int lines = 10;
    m_device->lineTime = 40ms;
    int ticks = 0;
    QTimer timer;
    auto* const widget = m_window->findChild<QPushButton*>(QStringLiteral("pushButtonSettings"));
    const PaintCounter paints(*widget);
    connect(&timer, &QTimer::timeout, &timer, [&ticks, widget] {
        ++ticks;
        widget->update();
    });
    timer.start(5ms);
    QCOMPARE(program(firstLine + QByteArray("S1\n").repeated(lines), lines), int(UpdateResult::Ok));
    QVERIFY2(ticks > lines, QByteArray::number(ticks));
    QVERIFY2(paints.count() > lines, QByteArray::number(paints.count()));
}

QTEST_MAIN(tst_UpdateProgramming)
#include "tst_UpdateProgramming.moc"
