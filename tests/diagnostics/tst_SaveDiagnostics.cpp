#include "diagnostics/DiagnosticsBench.h"
#include "support/FileSizeLimit.h"
#include "update/Update.h"

#include <QRegularExpression>
#include <QStatusBar>
#include <QTest>
#include <QTimer>

namespace {
const QString question = QStringLiteral("already exists");

QString savedText(const QString& path)
{
    return QString(QStringLiteral("Diagnostics saved in\n") + path);
}
} // namespace

/// The button "Save Diagnostics": what it asks, what it says, and what it leaves alone.
class tst_SaveDiagnostics : public DiagnosticsTest
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(buildRoom()); }
    void cleanup() { removeRoom(); }
    void proposal();
    void proposalWithoutDocuments();
    void tellsWhereItIs();
    void endingIsAdded_data();
    void endingIsAdded();
    void completedNameIsAskedFor();
    void completedNameIsNotReplacedUnasked();
    void canceled();
    void noPlace_data();
    void noPlace();
    void fullDisk_data();
    void fullDisk();
    void worksAfterAFailure();
    void sendsNothing();
    void operatorsLevel();
    void refusedDuringAnUpdate();
    void windowGoesMeanwhile();
    void programEndsMeanwhile();
};

void tst_SaveDiagnostics::proposal()
{
    save({QString()});
    QCOMPARE(m_choosers.size(), 1);
    const FileChooser::Chooser& shown = m_choosers.first();
    static const QRegularExpression name(QStringLiteral("^VYR-Diagnostics-(\\d{8}-\\d{6})\\.zip$"));
    const QRegularExpressionMatch match = name.match(shown.name);
    QVERIFY2(match.hasMatch(), qPrintable(shown.name));
    const QDateTime time = QDateTime::fromString(match.captured(1), QStringLiteral("yyyyMMdd-hhmmss"));
    QVERIFY(time.isValid() && qAbs(time.secsTo(QDateTime::currentDateTime())) < 60);
    QCOMPARE(shown.folder, m_home->path(QStringLiteral("Documents")));
    QCOMPARE(shown.caption, QStringLiteral("Choose a file for the diagnostics"));
    QCOMPARE(shown.filters, QStringList{QStringLiteral("ZIP archives (*.zip)")});
    QCOMPARE(shown.mode, QFileDialog::AcceptSave);
    QCOMPARE(shown.parent, &m_hand->dialog());
}

void tst_SaveDiagnostics::proposalWithoutDocuments()
{
    QVERIFY(QDir(m_home->path(QStringLiteral("Documents"))).removeRecursively());
    save({QString()});
    QCOMPARE(m_choosers.size(), 1);
    QCOMPARE(m_choosers.first().folder, m_home->path(QStringLiteral(".")).chopped(2));
}

void tst_SaveDiagnostics::tellsWhereItIs()
{
    save({target()});
    QCOMPARE(m_boxes.size(), 1);
    const BoxAnswerer::Box& box = m_boxes.first();
    QCOMPARE(box.text, savedText(target()));
    QCOMPARE(box.title, QString());
    QCOMPARE(box.icon, QMessageBox::Information);
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(box.textFormat, Qt::PlainText);
    QCOMPARE(box.parent, &m_hand->dialog());
}

void tst_SaveDiagnostics::endingIsAdded_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("written");
    const auto row = [](const char* typed, const char* written) {
        QTest::newRow(typed) << QString::fromUtf8(typed) << QString::fromUtf8(written);
    };
    row("a.zip", "a.zip");
    row("a", "a.zip");
    row("A.ZIP", "A.ZIP");
    row("a.tar.gz", "a.tar.gz.zip");
    row("VYR_Log.txt", "VYR_Log.txt.zip");
    row("<b>%1 %n &amp;", "<b>%1 %n &amp;.zip");
    row("Störung 3 µm", "Störung 3 µm.zip");
}

void tst_SaveDiagnostics::endingIsAdded()
{
    QFETCH(QString, typed);
    QFETCH(QString, written);
    save({target(typed)});
    QCOMPARE(m_choosers.size(), 1);
    QCOMPARE(targets(), QStringList{written});
    QVERIFY(ZipContents(target(written)).isWhole());
    QCOMPARE(m_boxes.size(), 1);
    QCOMPARE(m_boxes.first().text, savedText(target(written)));
}

void tst_SaveDiagnostics::completedNameIsAskedFor()
{
    QVERIFY(write(target(), "old"));
    save({target(QStringLiteral("a")), target()});
    QCOMPARE(m_choosers.size(), 2);
    QCOMPARE(m_choosers.last().name, QStringLiteral("a.zip"));
    QCOMPARE(m_choosers.last().folder, QFileInfo(target()).path());
    QCOMPARE(m_boxes.size(), 2);
    QVERIFY(m_boxes.first().text.contains(question));
    QVERIFY(ZipContents(target()).isWhole());
    QCOMPARE(targets(), QStringList{QStringLiteral("a.zip")});
}

void tst_SaveDiagnostics::completedNameIsNotReplacedUnasked()
{
    QVERIFY(write(target(), "old"));
    save({target(QStringLiteral("a"))});
    QCOMPARE(m_choosers.size(), 2);
    QVERIFY(m_boxes.isEmpty());
    QCOMPARE(contentOf(target()), QByteArray("old"));
}

void tst_SaveDiagnostics::canceled()
{
    m_bench->log().clear();
    save({QString()});
    QCOMPARE(m_choosers.size(), 1);
    QVERIFY(m_boxes.isEmpty());
    QCOMPARE(targets(), QStringList());
    QVERIFY(!m_bench->log().contains(QStringLiteral("iagnostics")));
}

void tst_SaveDiagnostics::noPlace_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("reason");
    // Where not even the administrator makes files.
    QTest::newRow("unwritable folder")
        << QStringLiteral("/proc/a.zip") << QStringLiteral("No such file or directory");
    QTest::newRow("no folder") << QStringLiteral("none/a.zip") << QStringLiteral("No such file or directory");
    QTest::newRow("below a file") << QStringLiteral("file/a.zip") << QStringLiteral("Not a directory");
}

void tst_SaveDiagnostics::noPlace()
{
    QFETCH(QString, path);
    QFETCH(QString, reason);
    QVERIFY(write(target(QStringLiteral("file")), "kept"));
    const QString whole = QDir::isAbsolutePath(path) ? path : target(path);
    m_bench->log().clear();
    save({whole});
    QCOMPARE(m_boxes.size(), 1);
    QCOMPARE(m_boxes.first().text, QString(QStringLiteral("Diagnostics could not be saved in\n") + whole +
                                           QLatin1Char('\n') + reason));
    QCOMPARE(m_boxes.first().title, QString());
    QCOMPARE(m_boxes.first().icon, QMessageBox::Warning);
    QCOMPARE(m_boxes.first().buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(m_boxes.first().textFormat, Qt::PlainText);
    QCOMPARE(targets(), QStringList{QStringLiteral("file")});
    QCOMPARE(m_bench->log().count(QStringLiteral("Diagnostics not saved:"), QsLogging::LogLevel::Error), 1);
}

void tst_SaveDiagnostics::fullDisk_data()
{
    QTest::addColumn<int>("room");
    QTest::addColumn<bool>("hasOld");
    for (const int room : {0, 100, 2000, 12'000}) {
        QTest::addRow("%d bytes", room) << room << false;
        QTest::addRow("%d bytes, in another's place", room) << room << true;
    }
}

void tst_SaveDiagnostics::fullDisk()
{
    QFETCH(int, room);
    QFETCH(bool, hasOld);
    QByteArray log;
    for (int i = 0; log.size() < 200'000; ++i) {
        log += QByteArray::number(qHash(i), 36) + '\n';
    }
    QVERIFY(write(logFile(), log));
    QVERIFY(!hasOld || write(target(), "old"));
    {
        const FileSizeLimit limit(static_cast<rlim_t>(room));
        save({target()});
    }
    QVERIFY(!m_boxes.isEmpty());
    QCOMPARE(m_boxes.last().icon, QMessageBox::Warning);
    QCOMPARE(m_boxes.last().text, QString(QStringLiteral("Diagnostics could not be saved in\n") + target() +
                                          QStringLiteral("\nFile too large")));
    QCOMPARE(targets(), hasOld ? QStringList{QStringLiteral("a.zip")} : QStringList());
    QCOMPARE(contentOf(target()), hasOld ? QByteArray("old") : QByteArray());
}

void tst_SaveDiagnostics::worksAfterAFailure()
{
    save({target(QStringLiteral("none/a.zip"))});
    save({target()});
    QCOMPARE(m_boxes.size(), 1);
    QCOMPARE(m_boxes.first().text, savedText(target()));
    QVERIFY(ZipContents(target()).isWhole());
}

void tst_SaveDiagnostics::sendsNothing()
{
    m_window->device()->setPolling(false);
    QCOMPARE(m_window->device()->waitWhileBusy(), int(DeviceResult::Ok));
    m_illuminator->bench().clearReceived();
    save({target()});
    QTest::qWait(int(severalPolls.count()));
    QVERIFY(ZipContents(target()).isWhole());
    QCOMPARE(m_illuminator->bench().lines(), QList<QByteArray>());
    // They would have been seen.
    QCOMPARE(m_window->device()->resetDevice(), int(DeviceResult::Ok));
    QVERIFY(m_illuminator->waitForCommand("reset"));
}

void tst_SaveDiagnostics::operatorsLevel()
{
    m_hand.reset();
    m_window.reset();
    m_window = m_bench->start();
    m_hand = std::make_unique<DialogHand>(*m_window);
    QVERIFY(m_hand->open());
    QVERIFY(!m_hand->captions().contains(QStringLiteral("System Config")));
    QVERIFY(m_hand->clickTab(QStringLiteral("Update")));
    QVERIFY(m_hand->part<QWidget>("pushButtonSaveDiagnostics")->isVisible());
    QVERIFY(saved().isWhole());
}

void tst_SaveDiagnostics::refusedDuringAnUpdate()
{
    {
        const Update::InProgress run(*m_window->update());
        save({target()});
        QCOMPARE(statusText(*m_window), QStringLiteral("Firmware update in progress."));
    }
    QVERIFY(m_choosers.isEmpty());
    QVERIFY(m_boxes.isEmpty());
    QVERIFY(saved().isWhole());
}

void tst_SaveDiagnostics::windowGoesMeanwhile()
{
    auto* const button = m_hand->part<QPushButton>("pushButtonSaveDiagnostics");
    bool wasThere = false;
    QTimer::singleShot(0, this, [&] {
        QTRY_VERIFY(qobject_cast<QFileDialog*>(QApplication::activeModalWidget()) != nullptr);
        wasThere = true;
        m_hand.reset();
        m_window.reset();
    });
    button->click();
    QVERIFY(wasThere);
    QCOMPARE(targets(), QStringList());
}

void tst_SaveDiagnostics::programEndsMeanwhile()
{
    const FileChooser chooser({target()});
    const BoxAnswerer answerer;
    QTimer::singleShot(0, m_window.get(), [this] { m_window->device()->shutDown(); });
    clickSave();
    QCOMPARE(chooser.choosers().size(), 1);
    QVERIFY(answerer.boxes().isEmpty());
    QCOMPARE(targets(), QStringList());
}

QTEST_MAIN(tst_SaveDiagnostics)
#include "tst_SaveDiagnostics.moc"
