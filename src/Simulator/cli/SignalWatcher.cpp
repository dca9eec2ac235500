#include "SignalWatcher.h"

#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>

namespace Simulator {

SignalWatcher::SignalWatcher(QObject* parent) : QObject(parent)
{
    sigset_t signalSet;
    sigemptyset(&signalSet);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&signalSet, number);
    }
    ::sigprocmask(SIG_BLOCK, &signalSet, nullptr);
    // Whoever read our output may be gone; that shall not end us half-way.
    struct sigaction ignore = {};
    ignore.sa_handler = SIG_IGN;
    ::sigaction(SIGPIPE, &ignore, nullptr);
    m_fd = ::signalfd(-1, &signalSet, SFD_CLOEXEC | SFD_NONBLOCK);
    m_notifier = std::make_unique<QSocketNotifier>(m_fd, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] {
        m_notifier->setEnabled(false);
        emit endRequested();
    });
}

SignalWatcher::~SignalWatcher()
{
    m_notifier.reset();
    if (m_fd >= 0) {
        ::close(m_fd);
    }
}

} // namespace Simulator
