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

// What the device runs.
constexpr const char* inLoader = "Loader V1.5.0";
constexpr const char* inUpdater = "LoaderUpdater V1.0.0";
constexpr const char* inApplication = "VYRApp V2.7.0";
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

std::vector<DispatchTest::Row> DispatchTest::entering()
{
    using Test = DispatchTest;
    const QStringList noEntry{isLoaderValid, goLoader};
    const QString broken = warning("Loader failed CRC check.");
    return {
        {"application", inApplication, {}, everything()},
        {"loader", inLoader, {}, QStringList{backup} + updater() + loader() + application()},
        {"loader updater", inUpdater, {}, everything()},
        {"another image", "Bootstrap V1.2.3", {}, everything()},
        {"unknown image", "Unknown V1.2.3", {}, everything()},
        {"application that updates its laser controller", inApplication,
         [](Test& t) {
             t.m_illuminator->bench().wire().sendUnsolicited("Firmware Update 10 %\n");
             QVERIFY(QTest::qWaitFor(
                 [&t] { return t.m_window->device()->deviceMode() == DeviceMode::UpdatingLaserController; }));
         },
         everything()},
        {"not identified",
         inApplication,
         [](Test& t) {
             t.m_trace->setOnShow([&t](QWidget& widget) {
                 if (widget.inherits("QFileDialog")) {
                     t.reconnectAs("nobody knows");
                 }
             });
         },
         {warning("Error communicating with device.")}},
        {"unplugged while the user chooses",
         inApplication,
         [](Test& t) {
             t.m_trace->setOnShow([&t](QWidget& widget) {
                 if (widget.inherits("QFileDialog")) {
                     t.m_illuminator->bench().wire().unplug();
                     t.m_window->device()->checkConnectionStatus();
                 }
             });
         },
         {warning("Error communicating with device.")}},
        {"loader damaged",
         inApplication,
         [](Test& t) { t.answer("isloadervalid", 1, "No"); },
         {isLoaderValid, broken, notSwitched}},
        {"loader damaged, another image",
         "Bootstrap V1.2.3",
         [](Test& t) { t.answer("isloadervalid", 1, "No"); },
         {isLoaderValid, broken, notSwitched}},
        {"not asked in the loader", inLoader,
         [](Test& t) {
             t.sameLoader();
             t.reconnectAs("Loader V3.0.0");
             t.answer("isloadervalid", 1, "No");
         },
         QStringList{backup} + application()},
        {"loader not entered", inApplication, [](Test& t) { t.start("goloader", 1, inApplication); },
         noEntry + QStringList{noJump, notSwitched}},
        {"loader not entered, other image", inApplication, [](Test& t) { t.start("goloader", 1, inUpdater); },
         noEntry + QStringList{noJump, notSwitched}},
        {"loader not entered, nobody knows", inApplication, [](Test& t) { t.start("goloader", 1, "hm"); },
         noEntry + QStringList{noJump, notSwitched}},
        {"port closed before the switch",
         inApplication,
         [](Test& t) { t.close("isloadervalid", 1); },
         {isLoaderValid, noTransition, notSwitched}},
        {"loader comes back on a new port", inApplication,
         [](Test& t) {
             t.sameLoader();
             t.answer("goloader", 1, "");
             t.m_device->when("goloader", 1, [&t] { t.replug("Loader V3.0.0"); });
         },
         enter() + application()},
    };
}

std::vector<DispatchTest::Row> DispatchTest::versions()
{
    using Test = DispatchTest;
    const QStringList loaderStays = enter() + application();
    return {
        {"same version", inApplication, &Test::sameLoader, loaderStays},
        {"other patch", inApplication, [](Test& t) { t.m_device->loader = "Loader V3.0.1"; }, everything()},
        {"other minor", inApplication, [](Test& t) { t.m_device->loader = "Loader V3.1.0"; }, everything()},
        {"numbers swapped", inApplication,
         [](Test& t) {
             t.m_device->loader = "Loader V3.1.2";
             t.m_release.loader.minor = 2;
             t.m_release.loader.patch = 1;
         },
         everything()},
        {"higher numbers of a major of two bytes", inApplication,
         [](Test& t) {
             t.sameLoader();
             t.m_release.loader.major = 256 + 3;
         },
         everything()},
        {"all numbers at their ends", inApplication,
         [](Test& t) {
             t.m_device->loader = "Loader V255.255.255";
             t.m_release.loader.major = t.m_release.loader.minor = t.m_release.loader.patch = 255;
         },
         loaderStays},
        {"image without a version", inApplication, [](Test& t) { t.m_release.loader.hasHeader = false; },
         everything()},
        {"image and device without a version", inApplication,
         [](Test& t) {
             t.m_release.loader.hasHeader = false;
             t.m_device->loader = "Unknown V1.2.3";
             t.start("goloader", 1, inLoader);
         },
         loaderStays},
        {"application's version is not asked", inApplication,
         [](Test& t) {
             t.sameLoader();
             t.m_device->application = "VYRApp V3.0.0";
         },
         loaderStays},
        {"damaged loader is written whatever its version", inUpdater,
         [](Test& t) {
             t.sameLoader();
             t.m_device->application = inUpdater;
             t.answer("isloadervalid", 1, "No");
         },
         QStringList{isLoaderValid, backup} + loader() + application()},
    };
}

std::vector<DispatchTest::Row> DispatchTest::changedDuringBackup()
{
    using Test = DispatchTest;
    const auto becomes = [](const QByteArray& image, const std::function<void(Test&)>& more = {}) {
        return [image, more](Test& t) {
            t.duringBackup(image);
            if (more) {
                more(t);
            }
        };
    };
    return {
        {"application again, loader entered anew", inApplication, becomes(inApplication),
         enter() + QStringList{isLoaderValid, goLoader} + updater() + loader() + application()},
        {"application again, loader damaged", inApplication,
         becomes(inApplication, [](Test& t) { t.answer("isloadervalid", 2, "No"); }),
         enter() + QStringList{isLoaderValid, loaderBroken, noTransition, notSwitched}},
        {"application again, loader not entered", inApplication,
         becomes(inApplication, [](Test& t) { t.start("goloader", 2, inApplication); }),
         enter() + QStringList{isLoaderValid, goLoader, noJump, notSwitched}},
        {"application again, port closed", inApplication,
         becomes(inApplication, [](Test& t) { t.close("isloadervalid", 2); }),
         enter() + QStringList{isLoaderValid, noTransition, notSwitched}},
        {"application again, same version", inApplication, becomes(inApplication, &Test::sameLoader),
         enter() + application()},
        {"loader updater", inApplication, becomes(inUpdater), enter() + loader() + application()},
        {"loader updater, same version", inApplication, becomes(inUpdater, &Test::sameLoader),
         enter() + application()},
        {"another image all at once", inApplication, becomes("Bootstrap V1.2.3"),
         enter() + QStringList{noTransition, notSwitched}},
        {"not identified any more", inApplication, becomes("nobody knows"),
         enter() + QStringList{noTransition, notSwitched}},
        {"damaged loader, but in the loader", inUpdater,
         becomes(inLoader,
                 [](Test& t) {
                     t.sameLoader();
                     t.answer("isloadervalid", 1, "No");
                 }),
         QStringList{isLoaderValid, backup} + updater() + loader() + application()},
    };
}

std::vector<DispatchTest::Row> DispatchTest::programmingUpdater()
{
    using Test = DispatchTest;
    const QString name = FirmwareImages::fileName(FirmwareImages::Role::LoaderUpdater);
    const QStringList begun = enter() + QStringList{updaterProgress};
    const QStringList wrote = begun + QStringList{wroteUpdater};
    return {
        {"updater cannot be opened", inApplication,
         [name](Test& t) { t.m_release.folders = QStringList{name}; },
         enter() + QStringList{warning("Unable to open loader updater file."),
                               warning("Error updating firmware.  Error -40000")}},
        {"updater is none", inApplication, [name](Test& t) { t.m_release.contents[name] = "none\n"; },
         enter() + QStringList{warning("Invalid loader updater firmware file."), noTransition, notSwitched}},
        {"updater is not looked at without need", inApplication,
         [name](Test& t) {
             t.sameLoader();
             t.m_release.contents[name] = "none\n";
         },
         enter() + application()},
        {"updater canceled", inApplication, [](Test& t) { t.cancel(3); },
         begun + QStringList{QStringLiteral("wrote 3 lines of updater"), canceled}},
        {"updater refused", inApplication, [](Test& t) { t.answer("wf:", 2, "refused"); },
         begun + QStringList{QStringLiteral("wrote 2 lines of updater"), notWritten}},
        {"port closed within updater", inApplication, [](Test& t) { t.close("wf:", 2); },
         begun + QStringList{QStringLiteral("wrote 2 lines of updater"), notSent}},
        {"updater damaged", inApplication, [](Test& t) { t.answer("isappvalid", 1, "No"); },
         wrote +
             QStringList{isAppValid,
                         warning("Loader Updater failed CRC check. Send back to factory for reprogramming."),
                         notSwitched}},
        {"port closed before updater", inApplication, [](Test& t) { t.close("isappvalid", 1); },
         wrote + QStringList{isAppValid, warning("Error transitioning to loader updater."), notSwitched}},
        {"updater not started", inApplication, [](Test& t) { t.start("goapp", 1, inLoader); },
         wrote + QStringList{isAppValid, goApp, warning("Error - Unable to jump to loader updater."),
                             notSwitched}},
        {"application started instead of updater", inApplication,
         [](Test& t) { t.start("goapp", 1, inApplication); },
         wrote + QStringList{isAppValid, goApp, warning("Error - Unable to jump to loader updater."),
                             notSwitched}},
    };
}

std::vector<DispatchTest::Row> DispatchTest::programmingLoader()
{
    using Test = DispatchTest;
    const QStringList begun = enter() + updater() + QStringList{loaderProgress};
    const QStringList asked = begun + QStringList{wroteLoader, isLoaderValid};
    const QStringList twoLines = begun + QStringList{QStringLiteral("wrote 2 lines of loader")};
    const QStringList back{isLoaderValid, goLoader};
    return {
        {"new loader damaged", inApplication, [](Test& t) { t.answer("isloadervalid", 2, "No"); },
         asked + QStringList{loaderBroken, notSwitched}},
        {"port closed before new loader", inApplication, [](Test& t) { t.close("isloadervalid", 2); },
         asked + QStringList{noTransition, notSwitched}},
        {"new loader not started", inApplication, [](Test& t) { t.start("goloader", 2, inUpdater); },
         asked + QStringList{goLoader, noJump, notSwitched}},
        {"loader canceled", inApplication, [](Test& t) { t.cancel(t.updaterLines() + 2); },
         twoLines + back + QStringList{canceled}},
        {"loader canceled, and damaged by that", inApplication,
         [](Test& t) {
             t.cancel(t.updaterLines() + 2);
             t.answer("isloadervalid", 2, "No");
         },
         twoLines + QStringList{isLoaderValid, loaderBroken, notSwitched}},
        {"loader canceled, and not started", inApplication,
         [](Test& t) {
             t.cancel(t.updaterLines() + 2);
             t.start("goloader", 2, inUpdater);
         },
         twoLines + back + QStringList{noJump, notSwitched}},
        {"loader refused", inApplication, [](Test& t) { t.answer("wf:", t.updaterLines() + 2, "refused"); },
         twoLines + back + QStringList{notWritten}},
        {"loader refused, and damaged by that", inApplication,
         [](Test& t) {
             t.answer("wf:", t.updaterLines() + 2, "refused");
             t.answer("isloadervalid", 2, "No");
         },
         twoLines + QStringList{isLoaderValid, loaderBroken, notSwitched}},
        {"port closed within loader", inApplication, [](Test& t) { t.close("wf:", t.updaterLines() + 2); },
         twoLines + QStringList{loaderBroken, notSwitched}},
        {"damaged loader canceled in the loader updater",
         inUpdater,
         [](Test& t) {
             t.answer("isloadervalid", 1, "No");
             t.answer("isloadervalid", 2, "No");
             t.cancel(1);
         },
         {isLoaderValid, backup, loaderProgress, QStringLiteral("wrote 1 lines of loader"), isLoaderValid,
          loaderBroken, notSwitched}},
    };
}

std::vector<DispatchTest::Row> DispatchTest::programmingApplication()
{
    using Test = DispatchTest;
    const auto same = [](const std::function<void(Test&)>& more) {
        return [more](Test& t) {
            t.sameLoader();
            more(t);
        };
    };
    const QStringList begun = enter() + QStringList{applicationProgress};
    const QString twoLines = QStringLiteral("wrote 2 lines of application");
    return {
        {"application canceled", inApplication, same([](Test& t) { t.cancel(2); }),
         begun + QStringList{twoLines, canceled}},
        {"application canceled after a new loader", inApplication,
         [](Test& t) { t.cancel(t.updaterLines() + t.loaderLines() + 2); },
         enter() + updater() + loader() + QStringList{applicationProgress, twoLines, canceled}},
        {"application refused", inApplication, same([](Test& t) { t.answer("wf:", 2, "refused"); }),
         begun + QStringList{twoLines, notWritten}},
        {"port closed within application", inApplication, same([](Test& t) { t.close("wf:", 2); }),
         begun + QStringList{twoLines, notSent}},
        {"last line refused", inApplication,
         same([](Test& t) { t.answer("wf:", lines(t.m_release.application), "refused"); }),
         begun + QStringList{wroteApplication, notWritten}},
        {"canceled at the last line, which is too late", inApplication,
         same([](Test& t) { t.cancel(lines(t.m_release.application)); }), enter() + application()},
    };
}

std::vector<DispatchTest::Row> DispatchTest::restart()
{
    using Test = DispatchTest;
    const QStringList restarted =
        enter() + updater() + loader() +
        QStringList{applicationProgress, wroteApplication, restarting, isAppValid, isAppValid};
    const QString broken = warning("Error - Application failed CRC check after programming.");
    const QString notStarted = warning("Error transitioning to application.");
    // The loader updater's is the first question of this kind.
    return {
        {"first answer no, second yes", inApplication, [](Test& t) { t.answer("isappvalid", 2, "No"); },
         everything()},
        {"first answer yes, second no", inApplication, [](Test& t) { t.answer("isappvalid", 3, "No"); },
         restarted + QStringList{broken}},
        {"an answer that is none", inApplication, [](Test& t) { t.answer("isappvalid", 3, "Yesterday"); },
         restarted + QStringList{broken}},
        {"port closed before the restart", inApplication, [](Test& t) { t.close("isappvalid", 3); },
         restarted + QStringList{notStarted}},
        {"application not started", inApplication, [](Test& t) { t.start("goapp", 2, inLoader); },
         everything()},
        {"nobody knows what was started", inApplication, [](Test& t) { t.start("goapp", 2, "hm"); },
         everything()},
    };
}

std::vector<DispatchTest::Row> DispatchTest::rows()
{
    std::vector<Row> all;
    for (const auto& part : {entering(), versions(), changedDuringBackup(), programmingUpdater(),
                             programmingLoader(), programmingApplication(), restart()}) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}
