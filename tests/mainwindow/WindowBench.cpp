#include "mainwindow/WindowBench.h"

#include "device/Device.h"
#include "device/SerialPorts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPixmap>
#include <QSettings>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTest>
#include <QTimer>

namespace {
const std::array<const char*, 8> wavelengths{"405", "445", "470", "520", "528", "555", "640", "730"};

bool changesSomething(const QByteArray& line)
{
    static const QList<QByteArray> starts{"set:",     "shutter:", "ttl_invert:", "int_mode=", "sh_mode=",
                                          "speckle=", "sleep=",   "idle!",       "run!",      "clear",
                                          "reset",    "defaults", "go"};
    if (line == "reset_cause") {
        return false;
    }
    return std::any_of(starts.begin(), starts.end(),
                       [&line](const QByteArray& start) { return line.startsWith(start); });
}

template<typename Widget>
Widget* find(const QWidget& window, const char* objectName, int number)
{
    return window.findChild<Widget*>(QString::fromLatin1(objectName) + QString::number(number));
}
} // namespace

WindowBench::WindowBench()
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_home.path());
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_home.path()));
    SerialPorts::setLister([] { return QList<SerialPortEntry>(); });
}

WindowBench::~WindowBench()
{
    const QStringList warnings = WarningWatch::messages();
    if (!warnings.isEmpty()) {
        QTest::qFail(
            qPrintable(QStringLiteral("Unexpected warnings: ") + warnings.join(QStringLiteral(" | "))),
            __FILE__, __LINE__);
    }
    SerialPorts::setLister({});
}

QString WindowBench::settingsFileName() const
{
    return m_home.filePath(QStringLiteral("Tarnwick/VYR.conf"));
}

bool WindowBench::writeSettingsFile(const QByteArray& content) const
{
    QDir().mkpath(QFileInfo(settingsFileName()).path());
    QFile file(settingsFileName());
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

QByteArray WindowBench::settingsFileContent() const
{
    QFile file(settingsFileName());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QVariant WindowBench::stored(const QString& key) const
{
    return QSettings(settingsFileName(), QSettings::IniFormat).value(key);
}

void WindowBench::store(const QString& key, const QVariant& value) const
{
    QSettings settings(QSettings::UserScope, QStringLiteral("Tarnwick"), QStringLiteral("VYR"));
    settings.setValue(key, value);
    settings.sync();
}

std::unique_ptr<PelorinMainWindow> WindowBench::start(const QString& arguments) const
{
    auto window = std::make_unique<PelorinMainWindow>();
    window->loadSettings();
    window->processCommandLine(arguments);
    window->show();
    if (!QTest::qWaitForWindowExposed(window.get())) {
        qWarning("The window did not appear");
    }
    return window;
}

FakeIlluminator::FakeIlluminator()
{
    m_bench.setResponder([this](const QByteArray& line) { return answer(line); });
}

std::optional<Simulator::Answer> FakeIlluminator::answer(const QByteArray& line)
{
    if (line.isEmpty()) {
        return std::nullopt;
    }
    return answerTo(line);
}

QByteArray FakeIlluminator::reply(const QByteArray& line)
{
    if (obeysShutters && line.startsWith("shutter:")) {
        for (std::size_t i = 0; i < wavelengths.size(); ++i) {
            if (line.mid(8, 3) == wavelengths.at(i)) {
                shutters.at(i) = line.endsWith("=1");
            }
        }
    }
    const QHash<QByteArray, QByteArray> replies{{"v", image},
                                                {"v?a", "VYRApp V2.7.0"},
                                                {"v?l", "Loader V1.5.0"},
                                                {"isloadervalid", "Yes"},
                                                {"isappvalid", "Yes"},
                                                {"reset_cause", "power on"},
                                                {"necsel_controller_ver", "necsel_controller_ver=3.4.1"},
                                                {"necsel_controller_sn", "necsel_controller_sn=77"},
                                                {"prod_config", "prod_config:" + product},
                                                {"f_mode?", "f_mode=" + mode},
                                                {"fault?", fault},
                                                {"warn?", warning},
                                                {"int_mode?", "int_mode=" + intensitySource},
                                                {"shutter?", "shutter:" + shutterList()},
                                                {"set?", "set:" + levelList()}};
    return replies.value(line, "ok");
}

QByteArray FakeIlluminator::shutterList() const
{
    QByteArrayList items;
    for (std::size_t i = 0; i < wavelengths.size(); ++i) {
        items.append(QByteArray(wavelengths.at(i)) + (shutters.at(i) ? "=open" : "=closed"));
    }
    return items.join(',');
}

QByteArray FakeIlluminator::levelList() const
{
    QByteArrayList items;
    for (std::size_t i = 0; i < wavelengths.size(); ++i) {
        items.append(QByteArray(wavelengths.at(i)) + '=' + levels.at(i));
    }
    return items.join(',');
}

bool FakeIlluminator::connectTo(PelorinMainWindow& window)
{
    const QSignalSpy connected(window.device(), &Device::deviceConnected);
    window.device()->checkConnectionStatus();
    return QTest::qWaitFor([&connected] { return !connected.isEmpty(); }) && settle(window);
}

void FakeIlluminator::pollEverything(PelorinMainWindow& window)
{
    constexpr int pollsBetweenWarnings = 4;
    for (int i = 0; i < pollsBetweenWarnings; ++i) {
        window.device()->pollDevice();
    }
}

bool FakeIlluminator::settle(PelorinMainWindow& window)
{
    if (!window.device()->isApplicationConnected()) {
        return window.device()->waitWhileBusy() == DeviceResult::Ok;
    }
    // What waits in the queue goes out with a poll; the line is idle again when the second one is over.
    const int polls = m_bench.count("f_mode?");
    return QTest::qWaitFor([this, &window, polls] {
        window.device()->pollDevice();
        return m_bench.count("f_mode?") >= polls + 2;
    });
}

bool FakeIlluminator::leaveOneQueued(PelorinMainWindow& window)
{
    window.device()->setPolling(false);
    if (window.device()->waitWhileBusy() != DeviceResult::Ok) {
        return false;
    }
    bool answered = false;
    const auto connection = QObject::connect(window.device(), &Device::receivedDataFromDevice, &window,
                                             [&answered] { answered = true; });
    window.device()->setSpeckle(true);
    window.device()->setSpeckle(true);
    const bool inTime = QTest::qWaitFor([&answered] { return answered; });
    QObject::disconnect(connection);
    return inTime;
}

QList<QByteArray> FakeIlluminator::commands() const
{
    QList<QByteArray> changes;
    for (const ScriptedBench::Received& received : m_bench.received()) {
        if (changesSomething(received.line)) {
            changes.append(received.line);
        }
    }
    return changes;
}

bool FakeIlluminator::waitForCommand(const QByteArray& line) const
{
    return m_bench.waitForLine(line);
}

void WindowTest::buildWindow()
{
    m_bench = std::make_unique<WindowBench>();
    m_illuminator = std::make_unique<FakeIlluminator>();
    m_window = m_bench->start();
}

void WindowTest::removeWindow()
{
    m_window.reset();
    m_illuminator.reset();
    m_bench.reset();
}

QString WindowTest::picture(const char* labelName) const
{
    return pictureOn(label(*m_window, labelName));
}

bool ConnectedWindowTest::buildConnectedWindow()
{
    buildWindow();
    if (!m_illuminator->connectTo(*m_window)) {
        return false;
    }
    // The link tells an unchanged "ok" once per process only.
    m_window->onWarningStateChanged(false, QStringLiteral("ok"));
    return true;
}

void ConnectedWindowTest::quiet()
{
    QVERIFY(m_illuminator->settle(*m_window));
    m_illuminator->clearCommands();
    m_bench->log().clear();
    m_window->statusBar()->clearMessage();
}

bool ConnectedWindowTest::waitForMode(const QByteArray& mode, const QString& word)
{
    m_illuminator->mode = mode;
    return QTest::qWaitFor(
        [this, &word] { return label(*m_window, "labelLaserStatusText")->text() == word; });
}

Column::Column(const QWidget& window, int number)
    : frame(find<QWidget>(window, "frameChannel", number)),
      lowerPart(find<QWidget>(window, "frameChannelBottom", number)),
      name(find<QLineEdit>(window, "lineEditSliderName", number)),
      percentage(find<QLineEdit>(window, "lineEditSliderPercentage", number)),
      arrows(find<QLabel>(window, "labelSliderUpDownButtons", number)),
      slider(find<QSlider>(window, "verticalSliderChannel", number)),
      shutter(find<QPushButton>(window, "pushButtonChannelShutter", number))
{
}

void runLater(QObject* context, std::chrono::milliseconds delay, const std::function<void()>& what)
{
    auto* timer = new QTimer(context);
    timer->setSingleShot(true);
    QObject::connect(timer, &QTimer::timeout, timer, what);
    QObject::connect(timer, &QTimer::timeout, timer, &QObject::deleteLater);
    timer->start(delay);
}

void clickHalf(QWidget* widget, bool left)
{
    const int x = left ? widget->width() / 4 : widget->width() * 3 / 4;
    QTest::mouseClick(widget, Qt::LeftButton, Qt::NoModifier, QPoint(x, widget->height() / 2));
}

QString statusText(const QWidget& window)
{
    return window.findChild<QStatusBar*>(QStringLiteral("statusBar"))->currentMessage();
}

QLabel* label(const QWidget& window, const char* objectName)
{
    return window.findChild<QLabel*>(QLatin1String(objectName));
}

QString pictureOn(const QLabel* label)
{
    const QDir pictures(QStringLiteral(":/Resources/laser_output_area"));
    const QImage shown = label->pixmap(Qt::ReturnByValue).toImage();
    const QStringList names = pictures.entryList({QStringLiteral("*.png")});
    for (const QString& name : names) {
        if (!name.contains(QLatin1Char('@')) &&
            QImage(pictures.filePath(name)).convertToFormat(shown.format()) == shown) {
            return name;
        }
    }
    return {};
}
