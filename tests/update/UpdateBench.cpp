#include "update/UpdateBench.h"

#include "device/Device.h"
#include "settings/FileChooser.h"
#include "support/BoxAnswerer.h"

#include <QDir>
#include <QTest>

namespace {
using FirmwareImages::Role;

constexpr quint16 newMajor = 3;
constexpr int smallProgram = 64; // bytes, which make four lines

FirmwareImages::Image smallImage(Role role, quint16 major)
{
    FirmwareImages::Image image;
    image.role = role;
    image.major = major;
    image.dataSize = smallProgram;
    image.seed = 1 + quint32(role); // no line of one is a line of another
    return image;
}
} // namespace

UpdateRelease::UpdateRelease()
    : loader(smallImage(Role::Loader, newMajor)), updater(smallImage(Role::LoaderUpdater, 1)),
      application(smallImage(Role::Application, newMajor))
{
}

QMap<QString, QByteArray> UpdateRelease::texts() const
{
    const auto textOf = [this](const FirmwareImages::Image& image) {
        return contents.value(FirmwareImages::fileName(image.role), FirmwareImages::text(image));
    };
    return {{QStringLiteral("loader"), textOf(loader)},
            {QStringLiteral("updater"), textOf(updater)},
            {QStringLiteral("application"), textOf(application)}};
}

QList<ReleaseArchive::Member> UpdateRelease::members() const
{
    QList<ReleaseArchive::Member> members;
    for (const FirmwareImages::Image& image : {loader, updater, application}) {
        const QString name = FirmwareImages::fileName(image.role);
        if (folders.contains(name)) {
            members.append({name + QStringLiteral("/notes.txt"), "nothing to program"});
        } else if (!missing.contains(name)) {
            members.append({name, contents.value(name, FirmwareImages::text(image))});
        }
    }
    members.append({QStringLiteral("notes.txt"), "what is new"});
    return members;
}

bool UpdateTest::buildUpdate(const std::function<void(UpdatableDevice&)>& prepare)
{
    if (!m_home) {
        m_home = std::make_unique<HomeFolder>();
    }
    m_release = {};
    if (!buildDialog(false)) {
        return false;
    }
    m_device = std::make_unique<UpdatableDevice>(*m_illuminator);
    if (prepare) {
        prepare(*m_device);
    }
    m_trace = std::make_unique<UpdateTrace>(*m_window);
    m_device->setListener([this](const QByteArray& line) { m_trace->addLine(line); });
    return plugIn() && m_hand->clickTab(QStringLiteral("Update"));
}

void UpdateTest::removeUpdate()
{
    if (m_device) {
        m_device->setListener({});
    }
    m_trace.reset();
    removeDialog();
    m_device.reset();
    m_home.reset();
}

bool UpdateTest::packRelease()
{
    return ReleaseArchive::write(archivePath(), m_release.members(), m_release.packing);
}

QString UpdateTest::releasePath(const QString& name) const
{
    return m_home->path(QStringLiteral("release/") + name);
}

QStringList UpdateTest::backups() const
{
    return QDir(m_home->dataFolder()).entryList(QDir::Files | QDir::Hidden);
}

QStringList UpdateTest::update()
{
    return packRelease() ? updateWith(archivePath()) : QStringList{QStringLiteral("the packer failed")};
}

QStringList UpdateTest::updateWith(const QString& pathName)
{
    const FileChooser chooser({pathName});
    const BoxAnswerer answerer;
    m_trace->clear();
    clickUpdate();
    return m_trace->summary(m_release.texts());
}

void UpdateTest::reconnectAs(const QByteArray& image)
{
    Device& link = *m_window->device();
    m_device->running = image;
    link.selectPort(link.portName());
    link.checkConnectionStatus();
}

void UpdateTest::closePortAfterAnswer()
{
    auto* const once = new QObject(m_window.get());
    connect(m_window->device(), &Device::receivedDataFromDevice, once, [this, once] {
        once->deleteLater();
        m_window->device()->selectPort(m_window->device()->portName());
    });
}
