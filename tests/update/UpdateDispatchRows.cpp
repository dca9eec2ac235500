#include "update/UpdateDispatchRows.h"

#include "device/Device.h"

#include <QTest>

namespace {
// What a run consists of.
const QString backup = QStringLiteral("backup");
const QString isLoaderValid = QStringLiteral("isloadervalid");
const QString isAppValid = QStringLiteral("isappvalid");
const QString goLoader = QStringLiteral("goloader");
const QString goApp = QStringLiteral("goapp");
const QString updaterProgress = QStringLiteral("progress: Programming the Loader Updater");
const QString loaderProgress = QStringLiteral("progress: Programming the Loader");
const QString applicationProgress = QStringLiteral("progress: Programming the Application");
const QString wroteUpdater = QStringLiteral("wrote updater");
const QString wroteLoader = QStringLiteral("wrote loader");
const QString wroteApplication = QStringLiteral("wrote application");
const QString restarting = QStringLiteral(
    "information [Firmware Update] [not modal] [no buttons]: Restarting application. Please wait...");
const QString complete = QStringLiteral("information: Update complete!");

QString warning(const char* text)
{
    return QStringLiteral("warning: ") + QLatin1String(text);
}

const QString loaderBroken = warning("Loader failed CRC check. Send back to factory for reprogramming.");
const QString noTransition = warning("Error transitioning to loader.");
const QString noJump = warning("Error - Unable to jump to loader.");
const QString canceled = warning("User canceled programming.");
const QString notSwitched = warning("Error updating firmware.  Error -40011");
const QString notSent = warning("Error updating firmware.  Error -40007");
const QString notWritten = warning("Error updating firmware.  Error -40008");

// Whole parts of it.
QStringList enter()
{
    return {isLoaderValid, goLoader, backup};
}
QStringList updater()
{
    return {updaterProgress, wroteUpdater, isAppValid, goApp};
}
QStringList loader()
{
    return {loaderProgress, wroteLoader, isLoaderValid, goLoader};
}
QStringList application()
{
    return {applicationProgress, wroteApplication, restarting, isAppValid, isAppValid, goApp, complete};
}
QStringList everything()
{
    return enter() + updater() + loader() + application();
}

// What the device runs, other than the application.
constexpr const char* inLoader = "Loader V1.5.0";
constexpr const char* inUpdater = "LoaderUpdater V1.0.0";
} // namespace

void DispatchTest::replug(const QByteArray& image)
{
    m_device->running = image;
    Simulator::Wire& wire = m_illuminator->bench().wire();
    QMetaObject::invokeMethod(
        &wire,
        [this, &wire] {
            wire.unplug();
            runLater(m_window.get(), std::chrono::milliseconds(100), [&wire] { wire.plug(); });
        },
        Qt::QueuedConnection);
}

DispatchTest::Plan DispatchTest::whileChoosing(const Plan& what)
{
    return [what](DispatchTest& t) {
        t.m_trace->setOnShow([&t, what](QWidget& widget) {
            if (widget.inherits("QFileDialog")) {
                what(t);
            }
        });
    };
}

std::vector<DispatchTest::Row> DispatchTest::entering()
{
    const Plan updatesController = [](DispatchTest& t) {
        t.m_illuminator->bench().wire().sendUnsolicited("Firmware Update 10 %\n");
        QVERIFY(QTest::qWaitFor(
            [&t] { return t.m_window->device()->deviceMode() == DeviceMode::UpdatingLaserController; }));
    };
    const Plan isUnplugged = [](DispatchTest& t) {
        t.m_illuminator->bench().wire().unplug();
        t.m_window->device()->checkConnectionStatus();
    };
    const QStringList noDevice{warning("Error communicating with device.")};
    return {
        {"application", {}, everything()},
        {"loader", {}, QStringList{backup} + updater() + loader() + application(), inLoader},
        {"loader updater", {}, everything(), inUpdater},
        {"another image", {}, everything(), "Bootstrap V1.2.3"},
        {"unknown image", {}, everything(), "Unknown V1.2.3"},
        {"application that updates its laser controller", {updatesController}, everything()},
        {"not identified", {whileChoosing([](DispatchTest& t) { t.reconnectAs("nobody knows"); })}, noDevice},
        {"unplugged while the user chooses", {whileChoosing(isUnplugged)}, noDevice},
    };
}

std::vector<DispatchTest::Row> DispatchTest::switching()
{
    const QStringList noEntry{isLoaderValid, goLoader, noJump, notSwitched};
    const QStringList broken{isLoaderValid, warning("Loader failed CRC check."), notSwitched};
    const Plan loaderDamaged = answers("isloadervalid", 1, "No");
    return {
        {"loader damaged", {loaderDamaged}, broken},
        {"loader damaged, another image", {loaderDamaged}, broken, "Bootstrap V1.2.3"},
        {"not asked in the loader",
         {hasSameLoader(), [](DispatchTest& t) { t.reconnectAs("Loader V3.0.0"); }, loaderDamaged},
         QStringList{backup} + application(),
         inLoader},
        {"loader not entered", {starts("goloader", 1, inApplication)}, noEntry},
        {"loader not entered, other image", {starts("goloader", 1, inUpdater)}, noEntry},
        {"loader not entered, nobody knows", {starts("goloader", 1, "hm")}, noEntry},
        {"port closed before the switch",
         {closes("isloadervalid", 1)},
         {isLoaderValid, noTransition, notSwitched}},
        {"loader comes back on a new port",
         {hasSameLoader(), answers("goloader", 1, ""),
          [](DispatchTest& t) { t.m_device->when("goloader", 1, [&t] { t.replug("Loader V3.0.0"); }); }},
         enter() + application()},
    };
}

std::vector<DispatchTest::Row> DispatchTest::versions()
{
    const auto releaseHas = [](quint16 major, quint8 minor, quint8 patch) -> Plan {
        return [=](DispatchTest& t) {
            t.m_release.loader.major = major;
            t.m_release.loader.minor = minor;
            t.m_release.loader.patch = patch;
        };
    };
    const Plan hasNoHeader = [](DispatchTest& t) { t.m_release.loader.hasHeader = false; };
    const QStringList loaderStays = enter() + application();
    return {
        {"same version", {hasSameLoader()}, loaderStays},
        {"other patch", {hasLoader("Loader V3.0.1")}, everything()},
        {"other minor", {hasLoader("Loader V3.1.0")}, everything()},
        {"numbers swapped", {hasLoader("Loader V3.1.2"), releaseHas(3, 2, 1)}, everything()},
        {"higher numbers of a major of two bytes",
         {hasSameLoader(), releaseHas(256 + 3, 0, 0)},
         everything()},
        {"all numbers at their ends",
         {hasLoader("Loader V255.255.255"), releaseHas(255, 255, 255)},
         loaderStays},
        {"image without a version", {hasNoHeader}, everything()},
        {"image and device without a version",
         {hasNoHeader, hasLoader("Unknown V1.2.3"), starts("goloader", 1, inLoader)},
         loaderStays},
        {"application's version is not asked",
         {hasSameLoader(), hasApplication("VYRApp V3.0.0")},
         loaderStays},
        {"damaged loader is written whatever its version",
         {hasSameLoader(), hasApplication(inUpdater), answers("isloadervalid", 1, "No")},
         QStringList{isLoaderValid, backup} + loader() + application(),
         inUpdater},
    };
}

std::vector<DispatchTest::Row> DispatchTest::changedDuringBackup()
{
    return {
        {"application again, loader entered anew",
         {becomes(inApplication)},
         enter() + QStringList{isLoaderValid, goLoader} + updater() + loader() + application()},
        {"application again, loader damaged",
         {becomes(inApplication), answers("isloadervalid", 2, "No")},
         enter() + QStringList{isLoaderValid, loaderBroken, noTransition, notSwitched}},
        {"application again, loader not entered",
         {becomes(inApplication), starts("goloader", 2, inApplication)},
         enter() + QStringList{isLoaderValid, goLoader, noJump, notSwitched}},
        {"application again, port closed",
         {becomes(inApplication), closes("isloadervalid", 2)},
         enter() + QStringList{isLoaderValid, noTransition, notSwitched}},
        {"application again, same version",
         {becomes(inApplication), hasSameLoader()},
         enter() + application()},
        {"loader updater", {becomes(inUpdater)}, enter() + loader() + application()},
        {"loader updater, same version", {becomes(inUpdater), hasSameLoader()}, enter() + application()},
        {"another image all at once",
         {becomes("Bootstrap V1.2.3")},
         enter() + QStringList{noTransition, notSwitched}},
        {"not identified any more",
         {becomes("nobody knows")},
         enter() + QStringList{noTransition, notSwitched}},
        {"damaged loader, but in the loader",
         {becomes(inLoader), hasSameLoader(), answers("isloadervalid", 1, "No")},
         QStringList{isLoaderValid, backup} + updater() + loader() + application(),
         inUpdater},
    };
}

std::vector<DispatchTest::Row> DispatchTest::programmingUpdater()
{
    const QString name = FirmwareImages::fileName(FirmwareImages::Role::LoaderUpdater);
    const Plan isFolder = [name](DispatchTest& t) { t.m_release.folders = QStringList{name}; };
    const Plan isNone = [name](DispatchTest& t) { t.m_release.contents[name] = "none\n"; };
    const QStringList begun = enter() + QStringList{updaterProgress};
    const QStringList twoLines = begun + QStringList{QStringLiteral("wrote 2 lines of updater")};
    const QStringList wrote = begun + QStringList{wroteUpdater, isAppValid};
    const QStringList notStarted =
        wrote + QStringList{goApp, warning("Error - Unable to jump to loader updater."), notSwitched};
    return {
        {"updater cannot be opened",
         {isFolder},
         enter() + QStringList{warning("Unable to open loader updater file."),
                               warning("Error updating firmware.  Error -40000")}},
        {"updater is none",
         {isNone},
         enter() + QStringList{warning("Invalid loader updater firmware file."), noTransition, notSwitched}},
        {"updater is not looked at without need", {hasSameLoader(), isNone}, enter() + application()},
        {"updater canceled",
         {cancels(3)},
         begun + QStringList{QStringLiteral("wrote 3 lines of updater"), canceled}},
        {"updater refused", {answers("wf:", 2, "refused")}, twoLines + QStringList{notWritten}},
        {"port closed within updater", {closes("wf:", 2)}, twoLines + QStringList{notSent}},
        {"updater damaged",
         {answers("isappvalid", 1, "No")},
         wrote +
             QStringList{warning("Loader Updater failed CRC check. Send back to factory for reprogramming."),
                         notSwitched}},
        {"port closed before updater",
         {closes("isappvalid", 1)},
         wrote + QStringList{warning("Error transitioning to loader updater."), notSwitched}},
        {"updater not started", {starts("goapp", 1, inLoader)}, notStarted},
        {"application started instead of updater", {starts("goapp", 1, inApplication)}, notStarted},
    };
}

std::vector<DispatchTest::Row> DispatchTest::programmingLoader()
{
    const int secondLine = updaterLines() + 2;
    const Plan canceledThere = cancels(secondLine);
    const Plan refusedThere = answers("wf:", secondLine, "refused");
    const Plan damaged = answers("isloadervalid", 2, "No");
    const Plan notStarted = starts("goloader", 2, inUpdater);
    const QStringList begun = enter() + updater() + QStringList{loaderProgress};
    const QStringList asked = begun + QStringList{wroteLoader, isLoaderValid};
    const QStringList twoLines = begun + QStringList{QStringLiteral("wrote 2 lines of loader")};
    const QStringList backInIt = twoLines + QStringList{isLoaderValid, goLoader};
    const QStringList leftDamaged = twoLines + QStringList{isLoaderValid, loaderBroken, notSwitched};
    return {
        {"new loader damaged", {damaged}, asked + QStringList{loaderBroken, notSwitched}},
        {"port closed before new loader",
         {closes("isloadervalid", 2)},
         asked + QStringList{noTransition, notSwitched}},
        {"new loader not started", {notStarted}, asked + QStringList{goLoader, noJump, notSwitched}},
        {"loader canceled", {canceledThere}, backInIt + QStringList{canceled}},
        {"loader canceled, and damaged by that", {canceledThere, damaged}, leftDamaged},
        {"loader canceled, and not started",
         {canceledThere, notStarted},
         backInIt + QStringList{noJump, notSwitched}},
        {"loader refused", {refusedThere}, backInIt + QStringList{notWritten}},
        {"loader refused, and damaged by that", {refusedThere, damaged}, leftDamaged},
        {"port closed within loader",
         {closes("wf:", secondLine)},
         twoLines + QStringList{loaderBroken, notSwitched}},
        {"damaged loader canceled in the loader updater",
         {answers("isloadervalid", 1, "No"), damaged, cancels(1)},
         {isLoaderValid, backup, loaderProgress, QStringLiteral("wrote 1 lines of loader"), isLoaderValid,
          loaderBroken, notSwitched},
         inUpdater},
    };
}

std::vector<DispatchTest::Row> DispatchTest::programmingApplication()
{
    const QStringList begun = enter() + QStringList{applicationProgress};
    const QString twoLines = QStringLiteral("wrote 2 lines of application");
    return {
        {"application canceled", {hasSameLoader(), cancels(2)}, begun + QStringList{twoLines, canceled}},
        {"application canceled after a new loader",
         {cancels(updaterLines() + loaderLines() + 2)},
         enter() + updater() + loader() + QStringList{applicationProgress, twoLines, canceled}},
        {"application refused",
         {hasSameLoader(), answers("wf:", 2, "refused")},
         begun + QStringList{twoLines, notWritten}},
        {"port closed within application",
         {hasSameLoader(), closes("wf:", 2)},
         begun + QStringList{twoLines, notSent}},
        {"last line refused",
         {hasSameLoader(), answers("wf:", applicationLines(), "refused")},
         begun + QStringList{wroteApplication, notWritten}},
        {"canceled at the last line, which is too late",
         {hasSameLoader(), cancels(applicationLines())},
         enter() + application()},
    };
}

std::vector<DispatchTest::Row> DispatchTest::restart()
{
    const QStringList restarted =
        enter() + updater() + loader() +
        QStringList{applicationProgress, wroteApplication, restarting, isAppValid, isAppValid};
    const QString broken = warning("Error - Application failed CRC check after programming.");
    const QString notStarted = warning("Error transitioning to application.");
    // The loader updater's is the first question of this kind.
    return {
        {"first answer no, second yes", {answers("isappvalid", 2, "No")}, everything()},
        {"first answer yes, second no", {answers("isappvalid", 3, "No")}, restarted + QStringList{broken}},
        {"an answer that is none", {answers("isappvalid", 3, "Yesterday")}, restarted + QStringList{broken}},
        {"port closed before the restart", {closes("isappvalid", 3)}, restarted + QStringList{notStarted}},
        {"application not started", {starts("goapp", 2, inLoader)}, everything()},
        {"nobody knows what was started", {starts("goapp", 2, "hm")}, everything()},
    };
}

std::vector<DispatchTest::Row> DispatchTest::rows()
{
    std::vector<Row> all;
    for (const auto& part : {entering(), switching(), versions(), changedDuringBackup(), programmingUpdater(),
                             programmingLoader(), programmingApplication(), restart()}) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}
