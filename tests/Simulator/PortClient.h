#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>

/// The computer's end of a simulated port, as plain system calls: what a program sees without the helpfulness
/// of a serial-port class. Opening sets nothing, so that the terminal's own settings are under test too.
class PortClient
{
public:
    explicit PortClient(const QString& path);
    ~PortClient();

    PortClient(const PortClient&) = delete;
    PortClient& operator=(const PortClient&) = delete;
    PortClient(PortClient&&) = delete;
    PortClient& operator=(PortClient&&) = delete;

    bool isOpen() const { return m_fd >= 0; }
    /// One non-blocking write: the bytes taken, or -1 with errno set.
    qint64 write(const QByteArray& bytes) const;
    /// What has arrived; never waits.
    QByteArray readNow() const;
    /// Runs the event loop until `count` bytes or more are there, or the time is over; returns what came.
    QByteArray read(qsizetype count, std::chrono::milliseconds timeout = std::chrono::seconds(5)) const;
    /// Runs the event loop until a line end has come, or the time is over; returns what came.
    QByteArray readLine(std::chrono::milliseconds timeout = std::chrono::seconds(5)) const;
    /// Writes the line with its line feed and returns the answer with its own.
    QByteArray ask(const QByteArray& line) const;
    /// True once the other end has hung up.
    bool isHungUp() const;

private:
    int m_fd;
};
