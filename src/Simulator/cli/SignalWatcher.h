#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

namespace Simulator {

/// Turns the system's requests to end (interrupt, terminate, hang-up) into a signal of the event loop, so
/// that the port's name and folder are cleared away. Make it before any other thread starts.
class SignalWatcher : public QObject
{
    Q_OBJECT

public:
    explicit SignalWatcher(QObject* parent = nullptr);
    ~SignalWatcher() override;

signals:
    void endRequested();

private:
    int m_fd = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace Simulator
