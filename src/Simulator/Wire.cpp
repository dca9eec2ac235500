#include "Simulator/Wire.h"

#include "Simulator/Pty.h"

#include <QDir>
#include <QFile>
#include <QPointer>
#include <QSocketNotifier>

#include <algorithm>
#include <thread>
#include <utility>

namespace Simulator {
namespace {
constexpr int kBaudRate = 19200;
constexpr int kBitsPerByte = 10;               // start bit, eight data bits, stop bit
constexpr int kMaxOutgoingBytes = 1024 * 1024; // nobody may be reading the other end

bool isFileName(const QString& name)
{
    return !name.isEmpty() && !name.contains(QLatin1Char('/')) && name != QLatin1String(".") &&
           name != QLatin1String("..");
}

/// An answer as it goes into the line: one piece, or two with a pause between them.
struct Shape
{
    QByteArray first;
    QByteArray rest;
    std::chrono::milliseconds wait{0};  // before the first piece
    std::chrono::milliseconds pause{0}; // before the rest
};

Shape shapedBy(const WireFault& fault, const QByteArray& text)
{
    const auto position = std::min<QByteArray::size_type>(std::max(fault.splitAt, 0), text.size());
    switch (fault.kind) {
    case WireFault::Kind::NoReply:
        return {};
    case WireFault::Kind::LateReply:
        return {text, {}, fault.delay, {}};
    case WireFault::Kind::SplitReply:
        return {text.left(position), text.mid(position), {}, fault.delay};
    case WireFault::Kind::Noise:
        return {fault.bytes, {}, {}, {}};
    case WireFault::Kind::ZeroByte:
        return {QByteArray(text).insert(position, '\0'), {}, {}, {}};
    }
    return {};
}
} // namespace

Wire::Wire(QObject* parent) : QObject(parent)
{
    m_deliveryTimer.setSingleShot(true);
    m_deliveryTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_deliveryTimer, &QTimer::timeout, this, &Wire::pump);
}

Wire::~Wire()
{
    // Nobody is left to be told.
    const QSignalBlocker silence(this);
    unplug();
}

void Wire::setHandler(Handler handler)
{
    m_handler = std::move(handler);
}

void Wire::setPaced(bool paced)
{
    m_paced = paced;
}

bool Wire::plug(const QString& name)
{
    unplug();
    m_error.clear();
    if (!isFileName(name)) {
        m_error = QStringLiteral("not a port name: ") + name;
        return false;
    }
    m_pty = Pty::open(&m_error);
    if (!m_pty) {
        return false;
    }
    if (!link(name)) {
        m_pty.reset();
        return false;
    }
    m_pty->setStalled(m_stalled);
    m_readable = std::make_unique<QSocketNotifier>(m_pty->masterFd(), QSocketNotifier::Read);
    connect(m_readable.get(), &QSocketNotifier::activated, this, &Wire::readLines);
    m_writable = std::make_unique<QSocketNotifier>(m_pty->masterFd(), QSocketNotifier::Write);
    m_writable->setEnabled(false);
    connect(m_writable.get(), &QSocketNotifier::activated, this, &Wire::writeOutgoing);
    emit pluggedChanged(true);
    return true;
}

bool Wire::link(const QString& name)
{
    if (!m_folder) {
        m_folder = std::make_unique<QTemporaryDir>(QDir::tempPath() + QStringLiteral("/vyr-XXXXXX"));
    }
    const QString path = m_folder->filePath(name);
    if (!m_folder->isValid() || !QFile::link(m_pty->slavePath(), path)) {
        m_error = QStringLiteral("cannot create the port's name ") + path;
        return false;
    }
    m_portName = path;
    return true;
}

void Wire::unplug()
{
    if (!m_pty) {
        return;
    }
    ++m_plugCount;
    // The name goes first: whoever lists ports after the hang-up must not find it any more.
    QFile::remove(m_portName);
    m_portName.clear();
    m_deliveryTimer.stop();
    m_deliveries.clear();
    m_arrivals.clear();
    m_lineFreeAt = {};
    m_outgoing.clear();
    m_assembler.reset();
    // A notifier may be the one that is calling us.
    for (auto* notifier : {&m_readable, &m_writable}) {
        (*notifier)->setEnabled(false);
        notifier->release()->deleteLater();
    }
    m_pty.reset();
    emit pluggedChanged(false);
}

void Wire::addFault(const WireFault& fault)
{
    if (fault.count != 0) {
        m_faults.append(fault);
    }
}

void Wire::clearFaults()
{
    m_faults.clear();
}

void Wire::setStalled(bool stalled)
{
    m_stalled = stalled;
    if (m_pty) {
        m_pty->setStalled(stalled);
    }
}

void Wire::sendAnswer(const QByteArray& line, const Answer& answer)
{
    if (!m_pty) {
        return;
    }
    schedule(line, answer, std::max(Clock::now(), m_lineFreeAt));
    pump();
}

void Wire::sendUnsolicited(const QByteArray& bytes)
{
    send(bytes);
}

void Wire::readLines()
{
    const QPointer<Wire> self(this);
    const quint64 plugCount = m_plugCount;
    const auto lines = m_assembler.feed(m_pty->read());
    const auto now = Clock::now();
    for (const QByteArray& line : lines) {
        m_arrivals.enqueue({line, now});
        emit lineReceived(line);
        if (!self || plugCount != m_plugCount) {
            return;
        }
    }
    pump();
}

/// Moves the conversation on as far as it goes without waiting.
void Wire::pump()
{
    const QPointer<Wire> self(this);
    while (self) {
        if (!m_deliveries.isEmpty()) {
            if (!deliverNext()) {
                return;
            }
        } else if (!m_arrivals.isEmpty() && !m_handling) {
            answer(m_arrivals.dequeue());
        } else {
            return;
        }
    }
}

void Wire::answer(const Arrival& arrival)
{
    if (!m_handler) {
        return;
    }
    const QPointer<Wire> self(this);
    const quint64 plugCount = m_plugCount;
    const Handler handler = m_handler; // it may replace itself
    m_handling = true;
    const Answer reply = handler(arrival.line);
    if (!self) {
        return;
    }
    m_handling = false;
    if (plugCount == m_plugCount) {
        schedule(arrival.line, reply,
                 std::max(arrival.time, m_lineFreeAt) + timeOnLine(arrival.line.size() + 1));
    }
}

/// `start`: when the device begins to think about its answer.
void Wire::schedule(const QByteArray& line, const Answer& answer, Clock::time_point start)
{
    Shape shape{answer.text, {}, {}, {}};
    if (!answer.text.isEmpty()) {
        if (const auto fault = takeFault(line)) {
            shape = shapedBy(*fault, answer.text);
        }
    }
    auto due = start + answer.thinkTime + shape.wait + timeOnLine(shape.first.size());
    m_deliveries.enqueue({due, shape.first, line, shape.rest.isEmpty()});
    if (!shape.rest.isEmpty()) {
        due += shape.pause + timeOnLine(shape.rest.size());
        m_deliveries.enqueue({due, shape.rest, line, true});
    }
    m_lineFreeAt = due;
}

std::optional<WireFault> Wire::takeFault(const QByteArray& line)
{
    const auto found = std::find_if(m_faults.begin(), m_faults.end(),
                                    [&line](const WireFault& fault) { return line.startsWith(fault.match); });
    if (found == m_faults.end()) {
        return std::nullopt;
    }
    const WireFault fault = *found;
    if (fault.count != WireFault::kForever && --found->count == 0) {
        m_faults.erase(found);
    }
    return fault;
}

/// True when the next delivery was due and has left; otherwise the timer will call again.
bool Wire::deliverNext()
{
    const auto left = m_deliveries.head().due - Clock::now();
    const auto wholeMilliseconds = std::chrono::floor<std::chrono::milliseconds>(left);
    if (wholeMilliseconds > std::chrono::milliseconds::zero()) {
        m_deliveryTimer.start(wholeMilliseconds);
        return false;
    }
    // A line of firmware is a matter of some thirty milliseconds; a timer's rounding would show in its speed.
    if (left > Clock::duration::zero()) {
        std::this_thread::sleep_for(left);
    }
    const Delivery delivery = m_deliveries.dequeue();
    const QPointer<Wire> self(this);
    send(delivery.bytes);
    if (self && delivery.isLast) {
        emit answerFinished(delivery.line);
    }
    return true;
}

void Wire::send(const QByteArray& bytes)
{
    if (!m_pty || bytes.isEmpty() || m_outgoing.size() + bytes.size() > kMaxOutgoingBytes) {
        return;
    }
    m_outgoing.append(bytes);
    writeOutgoing();
    emit bytesSent(bytes);
}

void Wire::writeOutgoing()
{
    const qint64 written = m_pty->write(m_outgoing);
    m_outgoing.remove(0, static_cast<QByteArray::size_type>(written < 0 ? m_outgoing.size() : written));
    m_writable->setEnabled(!m_outgoing.isEmpty());
}

std::chrono::microseconds Wire::timeOnLine(qint64 byteCount) const
{
    if (!m_paced) {
        return std::chrono::microseconds::zero();
    }
    return std::chrono::microseconds(byteCount * kBitsPerByte * 1000000 / kBaudRate);
}

} // namespace Simulator
