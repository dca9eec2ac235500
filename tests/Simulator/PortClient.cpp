#include "PortClient.h"

#include <QFile>
#include <QTest>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

PortClient::PortClient(const QString& path)
    : m_fd(::open(QFile::encodeName(path).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
{
}

PortClient::~PortClient()
{
    if (m_fd >= 0) {
        ::close(m_fd);
    }
}

qint64 PortClient::write(const QByteArray& bytes) const
{
    return ::write(m_fd, bytes.constData(), static_cast<size_t>(bytes.size()));
}

QByteArray PortClient::readNow() const
{
    QByteArray bytes;
    std::array<char, 4096> chunk{};
    ssize_t count = 0;
    while ((count = ::read(m_fd, chunk.data(), chunk.size())) > 0) {
        bytes.append(chunk.data(), static_cast<int>(count));
    }
    return bytes;
}

QByteArray PortClient::read(qsizetype count, std::chrono::milliseconds timeout) const
{
    QByteArray bytes;
    const bool complete = QTest::qWaitFor(
        [&] {
            bytes.append(readNow());
            return bytes.size() >= count;
        },
        static_cast<int>(timeout.count()));
    Q_UNUSED(complete) // the caller sees it in the bytes
    return bytes;
}

QByteArray PortClient::readLine(std::chrono::milliseconds timeout) const
{
    QByteArray bytes;
    const bool complete = QTest::qWaitFor(
        [&] {
            bytes.append(readNow());
            return bytes.contains('\n');
        },
        static_cast<int>(timeout.count()));
    Q_UNUSED(complete) // the caller sees it in the bytes
    return bytes;
}

QByteArray PortClient::ask(const QByteArray& line) const
{
    const QByteArray command = line + '\n';
    if (write(command) != command.size()) {
        return {};
    }
    return readLine();
}

bool PortClient::isHungUp() const
{
    pollfd state{m_fd, POLLIN, 0};
    return ::poll(&state, 1, 0) > 0 && (state.revents & POLLHUP) != 0;
}
