#include "device/DeviceFixture.h"
#include "device/SerialLine.h"
#include "support/OrdinaryUser.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <fcntl.h>
#include <iterator>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>

using namespace DeviceTest;
using namespace std::chrono_literals;

namespace {
/// Somebody who does not lock the port as Qt's programs do, but asks the system to keep others out.
class ExclusiveHolder
{
public:
    explicit ExclusiveHolder(const QString& portName)
        : m_file(::open(QFile::encodeName(portName).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK))
    {
        ::ioctl(m_file, TIOCEXCL);
    }
    ~ExclusiveHolder() { ::close(m_file); }
    Q_DISABLE_COPY_MOVE(ExclusiveHolder)

private:
    const int m_file;
};

/// A file that exists, is open to everybody, and whose opening finds no device.
bool makeFileWithNobodyBehind(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (name.size() >= static_cast<qsizetype>(sizeof(address.sun_path)))
        return false;
    std::copy(name.begin(), name.end(), std::begin(address.sun_path));
    const int file = ::socket(AF_UNIX, SOCK_STREAM, 0);
    const bool isMade = ::bind(file, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    ::close(file);
    return isMade;
}

/// What the link tells of its failures to open the device, one entry each.
void listenTo(Device& device, QStringList* told)
{
    static const QStringList names{QStringLiteral("none"), QStringLiteral("denied"), QStringLiteral("busy"),
                                   QStringLiteral("gone"), QStringLiteral("other")};
    QObject::connect(&device, &Device::openFailureChanged, &device,
                     [told](const QString& portName, OpenFailure cause) {
                         told->append(names.value(int(cause)) + QLatin1Char(' ') + portName);
                     });
}
} // namespace

/// A device that is listed and cannot be opened: its cause is told when it begins, changes and ends.
class tst_DeviceOpening : public PluggedTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void nothingIsToldOfASuccess();
    void busyIsToldOnceAndTakenBack();
    void busyIsToldOfAHolderWithoutALock();
    void deniedIsTold();
    void goneIsToldOfAFileWithNobodyBehind();
    void causeChanges();
    void otherTroubleIsTold();
    void anotherPortIsToldAnew();
    void unpluggedMeanwhile();
    void endingTheLinkWhenToldOfSuccess();
    void closingThePortWhenToldOfSuccess();

private:
    void check(int times = 1);
    QString port() const { return m_bench->portName(); }

    std::unique_ptr<Device> m_device;
    QStringList m_told;
    bool m_wasOpen = false;
};

void tst_DeviceOpening::init()
{
    begin();
    m_device = std::make_unique<Device>();
    m_told.clear();
    listenTo(*m_device, &m_told);
}

void tst_DeviceOpening::cleanup()
{
    m_device.reset();
    end();
}

void tst_DeviceOpening::check(int times)
{
    for (int i = 0; i < times; ++i)
        m_device->checkConnectionStatus();
}

void tst_DeviceOpening::nothingIsToldOfASuccess()
{
    QVERIFY(connectWithoutPoll(*m_device));
    m_bench->wire().unplug();
    QVERIFY(waitUntil([this] { return !m_device->isOpen(); }));
    check();
    QCOMPARE(m_told, QStringList());
}

void tst_DeviceOpening::busyIsToldOnceAndTakenBack()
{
    SerialLine holder;
    QVERIFY(holder.open(port()));
    const LogCapture log;
    check(3);
    QCOMPARE(m_told, QStringList{QStringLiteral("busy ") + port()});
    QCOMPARE(messages(log.lines(QsLogging::LogLevel::Info)).count(QStringLiteral("Error opening device")), 3);
    holder.close();
    // The device is open by the time its failure is over, and has not told who it is.
    connect(m_device.get(), &Device::openFailureChanged, this,
            [this] { m_wasOpen = m_device->isOpen() && m_bench->received().isEmpty(); });
    QVERIFY(connectWithoutPoll(*m_device));
    QVERIFY(m_wasOpen);
    QCOMPARE(m_told, (QStringList{QStringLiteral("busy ") + port(), QStringLiteral("none ") + port()}));
    // A later failure is news again.
    m_device->selectPort({});
    QVERIFY(holder.open(port()));
    check();
    QCOMPARE(m_told.mid(2), QStringList{QStringLiteral("busy ") + port()});
}

void tst_DeviceOpening::busyIsToldOfAHolderWithoutALock()
{
    {
        const ExclusiveHolder holder(port());
        const OrdinaryUser user(port(), 0666);
        if (!user.isEffective()) {
            QTest::qSkip("The system does not let go of the rights", __FILE__, __LINE__);
            return;
        }
        check(2);
    }
    QCOMPARE(m_told, QStringList{QStringLiteral("busy ") + port()});
    QVERIFY(connectWithoutPoll(*m_device));
}

void tst_DeviceOpening::goneIsToldOfAFileWithNobodyBehind()
{
    const QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("ttyVYR9"));
    QVERIFY(makeFileWithNobodyBehind(name));
    m_bench->ports().addPortInFront({name, 0x2F26, 0x3A98});
    check(2);
    QCOMPARE(m_told, QStringList{QStringLiteral("gone ") + name});
}

void tst_DeviceOpening::deniedIsTold()
{
    {
        const OrdinaryUser user(port(), 0);
        if (!user.isEffective()) {
            QTest::qSkip("The system does not let go of the rights", __FILE__, __LINE__);
            return;
        }
        check(2);
    }
    QCOMPARE(m_told, QStringList{QStringLiteral("denied ") + port()});
    QVERIFY(connectWithoutPoll(*m_device));
    QCOMPARE(m_told.mid(1), QStringList{QStringLiteral("none ") + port()});
}

void tst_DeviceOpening::causeChanges()
{
    SerialLine holder;
    QVERIFY(holder.open(port()));
    const QString name = port();
    m_bench->ports().addPortInFront({name, 0x2F26, 0x3A98}); // stays listed for a while
    check();
    m_bench->wire().unplug();
    check(2);
    QCOMPARE(m_told, (QStringList{QStringLiteral("busy ") + name, QStringLiteral("gone ") + name}));
}

void tst_DeviceOpening::otherTroubleIsTold()
{
    const QString folder = QDir::tempPath();
    m_bench->ports().addPortInFront({folder, 0x2F26, 0x3A98});
    check(2);
    QCOMPARE(m_told, QStringList{QStringLiteral("other ") + folder});
    m_bench->ports().removeAddedPorts();
    QVERIFY(connectWithoutPoll(*m_device));
    QCOMPARE(m_told.size(), 2);
    QVERIFY(m_told.last().startsWith(QLatin1String("none ")));
}

void tst_DeviceOpening::anotherPortIsToldAnew()
{
    for (const char* name : {"/nowhere/tty1", "/nowhere/tty2"}) {
        m_bench->ports().addPortInFront({QString::fromLatin1(name), 0x2F26, 0x3A98});
        check(2);
        m_bench->ports().removeAddedPorts();
    }
    QCOMPARE(m_told,
             (QStringList{QStringLiteral("gone /nowhere/tty1"), QStringLiteral("gone /nowhere/tty2")}));
}

void tst_DeviceOpening::unpluggedMeanwhile()
{
    SerialLine holder;
    QVERIFY(holder.open(port()));
    const QString name = port();
    check();
    m_bench->wire().unplug();
    check(2);
    QCOMPARE(m_told, (QStringList{QStringLiteral("busy ") + name, QStringLiteral("none ") + name}));
    QVERIFY(!m_device->isOpen());
}

void tst_DeviceOpening::endingTheLinkWhenToldOfSuccess()
{
    auto holder = std::make_unique<SerialLine>();
    QVERIFY(holder->open(port()));
    check();
    holder.reset();
    connect(m_device.get(), &Device::openFailureChanged, m_device.get(), &Device::shutDown);
    check();
    QVERIFY(!m_device->isOpen());
    listenFor(100ms);
    QCOMPARE(m_bench->received().size(), 0);
    QCOMPARE(m_told.size(), 2);
}

void tst_DeviceOpening::closingThePortWhenToldOfSuccess()
{
    auto holder = std::make_unique<SerialLine>();
    QVERIFY(holder->open(port()));
    check();
    holder.reset();
    const QString name = port();
    const Announcements heard(*m_device);
    const auto closing = connect(m_device.get(), &Device::openFailureChanged, this,
                                 [this] { m_device->selectPort(QStringLiteral("another")); });
    check();
    QVERIFY(!m_device->isOpen());
    QCOMPARE(heard.count(QStringLiteral("connected")), 0);
    disconnect(closing);
    QVERIFY(connectWithoutPoll(*m_device));
    QCOMPARE(m_told, (QStringList{QStringLiteral("busy ") + name, QStringLiteral("none ") + name}));
}

QTEST_GUILESS_MAIN(tst_DeviceOpening)
#include "tst_DeviceOpening.moc"
