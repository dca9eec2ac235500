#pragma once

#include "Simulator/LineAssembler.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QQueue>
#include <QString>
#include <QTemporaryDir>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

class QSocketNotifier;

namespace Simulator {

class Pty;

/// What the device says to one line, and how long it thinks before it says it.
struct Answer
{
    QByteArray text;                        ///< with its line feed; empty = the device says nothing
    std::chrono::milliseconds thinkTime{0}; ///< before the first byte of the answer
};

/// Something that goes wrong with answers on their way. It strikes the next `count` answers to lines that
/// begin with `match` (every line when empty), then is gone; kForever lasts until clearFaults(). Of several
/// faults that match, the one added first strikes alone, so faults can be lined up. A line that the device
/// does not answer uses no fault up.
struct WireFault
{
    enum class Kind {
        NoReply,    ///< the answer is lost
        LateReply,  ///< the answer comes `delay` later
        SplitReply, ///< the answer comes as `splitAt` bytes and, `delay` later, the rest
        Noise,      ///< `bytes` come instead of the answer
        ZeroByte,   ///< a NUL byte is inserted at position `splitAt` of the answer
    };
    static constexpr int kForever = -1;

    Kind kind = Kind::NoReply;
    int count = 1;
    QByteArray match;
    std::chrono::milliseconds delay{0};
    int splitAt = 0; ///< bounded to the answer's length
    QByteArray bytes;
};

/// The cable: a pseudo-terminal behind a stable name, paced like a 19200-baud line or not, that can be
/// unplugged, replugged and disturbed. Lines that arrive go to the handler; its answers travel back in one
/// write each. The device is half-duplex: a line that comes while an answer is on its way is handled after
/// it. Needs an event loop; must be used on the thread that made it. The handler may do anything to the
/// wire, unplugging and deleting it included.
class Wire : public QObject
{
    Q_OBJECT

public:
    using Handler = std::function<Answer(const QByteArray& line)>; ///< the line comes without line feed

    explicit Wire(QObject* parent = nullptr);
    ~Wire() override;

    /// Empty lines reach the handler too. Without a handler nothing is answered.
    void setHandler(Handler handler);
    /// Paced: an answer arrives when its command's and its own bytes have had their time on the line.
    void setPaced(bool paced);
    bool isPaced() const { return m_paced; }

    /// Makes a new pseudo-terminal reachable under `name` (a file name) in the wire's own folder; a port
    /// that was plugged is unplugged first. False, with the cause in errorString(), when that fails.
    bool plug(const QString& name = QStringLiteral("ttyVYR0"));
    void unplug(); ///< the other side sees a hang-up; what was on its way is lost
    bool isPlugged() const { return m_pty != nullptr; }
    /// Absolute path of the port while plugged; empty otherwise.
    QString portName() const { return m_portName; }
    QString errorString() const { return m_error; }

    void addFault(const WireFault& fault);
    void clearFaults();
    /// Number of faults that still wait for an answer to strike.
    auto pendingFaults() const { return m_faults.size(); }
    /// While stalled the line takes no bytes from the computer, so that its writes come up short. Stays in
    /// force over unplugging.
    void setStalled(bool stalled);
    /// An answer that comes long after its line was handled; faults for that line strike it too. It waits
    /// its turn behind what is on its way.
    void sendAnswer(const QByteArray& line, const Answer& answer);
    /// Bytes that nobody asked for, at once and unpaced. Nothing happens while unplugged.
    void sendUnsolicited(const QByteArray& bytes);

signals:
    void lineReceived(const QByteArray& line); ///< on arrival, before it is handled
    void bytesSent(const QByteArray& bytes);   ///< when they go into the line, unsolicited ones too
    /// The answer to this line has left, or was lost or empty and its time is over.
    void answerFinished(const QByteArray& line);
    void pluggedChanged(bool plugged);

private:
    using Clock = std::chrono::steady_clock;
    struct Arrival
    {
        QByteArray line;
        Clock::time_point time;
    };
    struct Delivery
    {
        Clock::time_point due;
        QByteArray bytes;
        QByteArray line;
        bool isLast = true;
    };

    void readLines();
    void pump();
    void answer(const Arrival& arrival);
    void schedule(const QByteArray& line, const Answer& answer, Clock::time_point start);
    std::optional<WireFault> takeFault(const QByteArray& line);
    bool deliverNext();
    void send(const QByteArray& bytes);
    void writeOutgoing();
    std::chrono::microseconds timeOnLine(qint64 byteCount) const;
    bool link(const QString& name);

    Handler m_handler;
    bool m_paced = false;
    bool m_stalled = false;
    bool m_handling = false;
    quint64 m_plugCount = 0; // tells an answer made for an earlier cable from one for this cable
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<Pty> m_pty;
    std::unique_ptr<QSocketNotifier> m_readable;
    std::unique_ptr<QSocketNotifier> m_writable;
    QString m_portName;
    QString m_error;
    QList<WireFault> m_faults;
    LineAssembler m_assembler;
    QQueue<Arrival> m_arrivals;
    QQueue<Delivery> m_deliveries;
    Clock::time_point m_lineFreeAt;
    QTimer m_deliveryTimer;
    QByteArray m_outgoing;
};

} // namespace Simulator
