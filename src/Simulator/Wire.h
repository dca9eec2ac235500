#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>

namespace Simulator {

/// What the device says to one line, and how long it thinks before it says it.
struct Answer
{
    QByteArray text;                          ///< with its line feed; empty = the device says nothing
    std::chrono::milliseconds thinkTime{0};   ///< before the first byte of the answer
};

/// Something that goes wrong with answers on their way. It strikes the next `count` answers to lines that
/// begin with `match` (every line when empty), then is gone; count -1 lasts until clearFaults().
struct WireFault
{
    enum class Kind {
        NoReply,    ///< the answer is lost
        LateReply,  ///< the answer comes `delay` later
        SplitReply, ///< the answer comes as `splitAt` bytes and, `delay` later, the rest
        Noise,      ///< `bytes` come instead of the answer
        ZeroByte,   ///< a NUL byte comes at position `splitAt` of the answer
    };
    Kind kind = Kind::NoReply;
    int count = 1;
    QByteArray match;
    std::chrono::milliseconds delay{0};
    int splitAt = 0;
    QByteArray bytes;
};

/// The cable: a pseudo-terminal behind a stable name, paced like a 19200-baud line or not, that can be
/// unplugged, replugged and disturbed. Lines that arrive go to the handler; its answers travel back in one
/// piece. Needs an event loop; must be used on the thread that made it.
class Wire : public QObject
{
    Q_OBJECT

public:
    using Handler = std::function<Answer(const QByteArray& line)>; ///< the line comes without line feed

    explicit Wire(QObject* parent = nullptr);
    ~Wire() override;

    void setHandler(Handler handler);
    /// Paced: an answer arrives when its command's and its own bytes have had their time on the line.
    void setPaced(bool paced);

    /// Makes a new pseudo-terminal reachable under `name` in the wire's own folder. False, with the cause
    /// in errorString(), when the system gives none.
    bool plug(const QString& name = QStringLiteral("ttyVYR0"));
    void unplug(); ///< what was on its way is lost
    bool isPlugged() const;
    /// Absolute path of the port while plugged; empty otherwise.
    QString portName() const;
    QString errorString() const;

    void addFault(const WireFault& fault);
    void clearFaults();
    /// While stalled the line takes no bytes from the computer, so that its writes come up short.
    void setStalled(bool stalled);
    /// Bytes that nobody asked for, at once and unpaced.
    void sendUnsolicited(const QByteArray& bytes);

signals:
    void lineReceived(const QByteArray& line);
    void pluggedChanged(bool plugged);
};

} // namespace Simulator
