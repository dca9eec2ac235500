#pragma once

#include <QFile>
#include <QFileInfo>
#include <QString>

#include <sys/stat.h>
#include <unistd.h>

/// While it lives the process runs as an ordinary user, who may do with the port what its file's mode says.
/// The administrator, whom nothing is forbidden, becomes somebody else meanwhile.
class OrdinaryUser
{
public:
    OrdinaryUser(const QString& portName, mode_t mode) : m_path(QFile::encodeName(portName))
    {
        struct stat before = {};
        if (::stat(m_path.constData(), &before) != 0) {
            return;
        }
        m_modeBefore = before.st_mode & allModeBits;
        if (m_isRoot) {
            // The folder of a simulated port is its owner's alone, and the port must stay in sight.
            ::chmod(QFile::encodeName(QFileInfo(portName).path()).constData(), 0755);
        }
        m_isEffective =
            ::chmod(m_path.constData(), mode) == 0 && (!m_isRoot || ::setresuid(nobody, nobody, 0) == 0);
    }
    ~OrdinaryUser()
    {
        if (m_isRoot && ::geteuid() != 0 && ::setresuid(0, 0, 0) != 0) {
            qFatal("The process cannot become the administrator again");
        }
        ::chmod(m_path.constData(), m_modeBefore);
    }
    Q_DISABLE_COPY_MOVE(OrdinaryUser)

    /// False where the system does not let it.
    bool isEffective() const { return m_isEffective; }

private:
    static constexpr uid_t nobody = 65534;
    static constexpr mode_t allModeBits = 07777;

    const QByteArray m_path;
    const bool m_isRoot = ::geteuid() == 0;
    mode_t m_modeBefore = 0;
    bool m_isEffective = false;
};
