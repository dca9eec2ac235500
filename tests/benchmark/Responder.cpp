#include "Responder.h"

#include "Simulator/Pty.h"

#include <QFile>
#include <QHash>

#include <array>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace {
constexpr int lookForTheEndMs = 100;
constexpr int replyLimitMs = 1500;

const QHash<QByteArray, QByteArray>& answers()
{
    static const QHash<QByteArray, QByteArray> texts{
        {"v\n", "VYRApp V2.7.0\n"},      {"v?a\n", "VYRApp V2.7.0\n"}, {"v?l\n", "Loader V1.5.0\n"},
        {"isloadervalid\n", "Yes\n"},    {"isappvalid\n", "Yes\n"},    {"f_mode?\n", "f_mode=idle\n"},
        {"reset_cause\n", "power on\n"},
    };
    return texts;
}

/// False when nothing came in time.
bool waitForInput(int file, int limitMs)
{
    pollfd request{file, POLLIN, 0};
    return ::poll(&request, 1, limitMs) == 1;
}
} // namespace

Bench::Responder::Responder(int terminals)
{
    for (int i = 0; i < terminals; ++i) {
        QString ignored;
        if (auto terminal = Simulator::Pty::open(&ignored)) {
            m_terminals.push_back(std::move(terminal));
        }
    }
    m_thread = std::thread([this] { run(); });
}

Bench::Responder::~Responder()
{
    m_end = true;
    m_thread.join();
}

QString Bench::Responder::portName(int index) const
{
    const auto place = static_cast<std::size_t>(index);
    return place < m_terminals.size() ? m_terminals.at(place)->slavePath() : QString();
}

/// A command comes in one piece, as it is written in one.
void Bench::Responder::run()
{
    std::vector<pollfd> requests;
    for (const auto& terminal : m_terminals) {
        requests.push_back({terminal->masterFd(), POLLIN, 0});
    }
    while (!m_end) {
        if (::poll(requests.data(), requests.size(), lookForTheEndMs) <= 0) {
            continue;
        }
        for (std::size_t i = 0; i < requests.size(); ++i) {
            const QByteArray command = requests.at(i).revents != 0 ? m_terminals.at(i)->read() : QByteArray();
            if (command.endsWith('\n')) {
                m_terminals.at(i)->write(answers().value(command, QByteArrayLiteral("ok\n")));
            }
        }
    }
}

Bench::PlainLine::PlainLine(const QString& portName)
    : m_file(::open(QFile::encodeName(portName).constData(), O_RDWR | O_NOCTTY | O_CLOEXEC))
{
    termios settings{};
    if (::tcgetattr(m_file, &settings) == 0) {
        ::cfmakeraw(&settings);
        ::tcsetattr(m_file, TCSANOW, &settings);
    }
}

Bench::PlainLine::~PlainLine()
{
    if (m_file >= 0) {
        ::close(m_file);
    }
}

QByteArray Bench::PlainLine::ask(const QByteArray& command) const
{
    QByteArray reply;
    if (::write(m_file, command.constData(), static_cast<std::size_t>(command.size())) != command.size()) {
        return reply;
    }
    std::array<char, 256> chunk{};
    while (!reply.endsWith('\n') && waitForInput(m_file, replyLimitMs)) {
        const ssize_t count = ::read(m_file, chunk.data(), chunk.size());
        if (count <= 0) {
            return {};
        }
        reply.append(chunk.data(), static_cast<int>(count));
    }
    return reply;
}
