#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

namespace Simulator {

/// A raw pseudo-terminal pair: the master is ours, the other side opens slavePath(). Everything is
/// non-blocking and is closed when the object goes, which the other side sees as a hang-up.
///
/// One descriptor of the slave is held as long as the pair lives. It keeps the terminal's settings, it is
/// what a stall acts on even while somebody has the port open exclusively, and it keeps a closed port from
/// being reported as an endless stream of hang-ups to us. The price: what is sent while nobody has the port
/// open waits in the system's buffer for the next one who opens it, as with a real USB port.
class Pty
{
public:
    /// A new pair, or null with the cause in *error.
    static std::unique_ptr<Pty> open(QString* error);
    ~Pty();

    Pty(const Pty&) = delete;
    Pty& operator=(const Pty&) = delete;
    Pty(Pty&&) = delete;
    Pty& operator=(Pty&&) = delete;

    int masterFd() const { return m_master; }
    QString slavePath() const { return m_slavePath; }

    /// What has come from the other side so far; at most 64 KiB at a time.
    QByteArray read() const;
    /// Takes as many bytes as the terminal has room for and returns their number, -1 when it is gone.
    qint64 write(const QByteArray& bytes) const;
    /// While stalled a non-blocking write of the other side takes nothing (EAGAIN).
    void setStalled(bool stalled) const;

private:
    Pty(int master, int slave, QString slavePath);

    int m_master;
    int m_slave;
    QString m_slavePath;
};

} // namespace Simulator
