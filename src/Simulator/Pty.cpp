#include "Simulator/Pty.h"

#include <QFile>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace Simulator {
namespace {
// Closed on exec: a child process that kept the master open would hide an unplugged cable.
constexpr int kOpenFlags = O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC;
constexpr int kReadLimit = 64 * 1024;

QString systemError(const char* what)
{
    return QString::fromLatin1(what) + QStringLiteral(": ") + qt_error_string(errno);
}

/// Without this the terminal would echo our answers back to us and rewrite line ends until somebody opens
/// the port and sets it up.
bool makeRaw(int fd)
{
    termios settings{};
    if (::tcgetattr(fd, &settings) != 0) {
        return false;
    }
    ::cfmakeraw(&settings);
    ::cfsetispeed(&settings, B19200);
    ::cfsetospeed(&settings, B19200);
    return ::tcsetattr(fd, TCSANOW, &settings) == 0;
}

bool slaveName(int master, QString* path)
{
    std::array<char, 128> name{};
    if (::grantpt(master) != 0 || ::unlockpt(master) != 0 ||
        ::ptsname_r(master, name.data(), name.size()) != 0) {
        return false;
    }
    *path = QFile::decodeName(name.data());
    return true;
}
} // namespace

std::unique_ptr<Pty> Pty::open(QString* error)
{
    const int master = ::posix_openpt(kOpenFlags);
    if (master < 0) {
        *error = systemError("cannot create a pseudo-terminal");
        return nullptr;
    }
    QString path;
    int slave = -1;
    if (slaveName(master, &path)) {
        slave = ::open(QFile::encodeName(path).constData(), kOpenFlags);
    }
    if (slave < 0 || !makeRaw(slave)) {
        *error = systemError("cannot set up a pseudo-terminal");
        if (slave >= 0) {
            ::close(slave);
        }
        ::close(master);
        return nullptr;
    }
    return std::unique_ptr<Pty>(new Pty(master, slave, path));
}

Pty::Pty(int master, int slave, QString slavePath)
    : m_master(master), m_slave(slave), m_slavePath(std::move(slavePath))
{
}

Pty::~Pty()
{
    ::close(m_slave);
    ::close(m_master);
}

QByteArray Pty::read() const
{
    QByteArray bytes;
    std::array<char, 4096> chunk{};
    while (bytes.size() < kReadLimit) {
        const ssize_t count = ::read(m_master, chunk.data(), chunk.size());
        if (count > 0) {
            bytes.append(chunk.data(), static_cast<int>(count));
        } else if (count == 0 || errno != EINTR) {
            break;
        }
    }
    return bytes;
}

qint64 Pty::write(const QByteArray& bytes) const
{
    qint64 written = 0;
    while (written < bytes.size()) {
        const ssize_t count =
            ::write(m_master, bytes.constData() + written, static_cast<size_t>(bytes.size() - written));
        if (count >= 0) {
            written += count;
        } else if (errno == EAGAIN) {
            break;
        } else if (errno != EINTR) {
            return -1;
        }
    }
    return written;
}

void Pty::setStalled(bool stalled) const
{
    ::tcflow(m_slave, stalled ? TCOOFF : TCOON);
}

} // namespace Simulator
