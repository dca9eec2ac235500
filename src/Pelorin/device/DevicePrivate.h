#pragma once

#include "device/Device.h"
#include "device/SerialLine.h"
#include "device/SerialPorts.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QList>
#include <QTimer>

#include <chrono>

/// What the link keeps between calls, and the steps that its files share.
struct Device::Private
{
    static constexpr std::chrono::milliseconds connectionInterval{1000};
    static constexpr std::chrono::milliseconds responseTimeout{1500};
    static constexpr std::chrono::milliseconds switchTimeout{45000};
    static constexpr std::chrono::milliseconds busyTimeout{1500};
    static constexpr std::chrono::milliseconds pollInterval{250};

    /// How an exchange of command and reply ended.
    enum class End { Answered, ShortWrite, TimedOut, Closed };

    /// One wait for a reply. Waits may nest; whatever ends them ends them all, and each keeps the chunk that
    /// ended it, as later ones may arrive before its turn to go on comes.
    struct ReplyWait
    {
        bool pending = true;
        End end = End::Closed;
        QByteArray reply;
        bool heldUp = false; ///< it is over, but another event loop runs on top of it
    };

    /// The device's identity as its identification told it; empty until then.
    struct Identity
    {
        ImageVersion running;
        ImageVersion application;
        ImageVersion loader;
        bool applicationValid = false;
        bool loaderValid = false;
        NecselControllerInfo necsel;
    };

    /// The states told last.
    struct PollState
    {
        FunctionalMode_t functionalMode = FunctionalModeWarmup;
        bool fault = false;
        bool warning = false;
        ShutterStates shutters{};
        IntensityLevels intensities{};
        bool forceEmit = false;       ///< the next poll tells every state
        bool warningReported = false; ///< since the connection
        bool enabled = false;
        int generation = 0;       ///< of the tick that runs
        bool sourceKnown = false; ///< this tick's "int_mode?" succeeded
    };
    explicit Private(Device& device); // DeviceTransport.cpp
    /// Something that wakes the event loop must be running.
    template<typename Pending>
    static void sleepWhile(Pending pending)
    {
        while (pending())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    bool isLineBusy() const { return inTransaction || switchPending; }
    bool isHeldUp() const { return !waits.isEmpty() && waits.last()->heldUp; }
    bool isQueueDue() const;
    bool isBusy() const { return isQueueDue() || isLineBusy(); }
    int startResponseTimer(std::chrono::milliseconds timeout);
    void stopResponseTimer(int turn);
    static void trace(const char* arrow, const QByteArray& bytes);
    End writeAndWait(const QByteArray& command, int timerTurn, QByteArray* reply);
    bool awaitReplyOfOthers() const;
    void awaitSignOfLife();
    void endWaits(End end, const QByteArray& reply = {});
    void onReceived(const QByteArray& chunk);
    void onResponseTimeout();
    void onBusyTimeout();
    void onAboutToClose();
    void onAboutToSleep();
    void stopTimers();
    // DeviceQueue.cpp, DeviceCommands.cpp, DeviceRecords.cpp
    void enqueue(const QByteArray& command);
    int sendDirectly(const QByteArray& command);
    int sendQueued(const QByteArray& command);
    template<typename Parser, typename Result>
    int ask(const char* command, Parser parser, Result& result);
    int set(const QByteArray& command) const;
    int askNecselController(const char* key, QString& text);
    int awaitIdleLine() const;
    int recordStep(const QByteArray& command, QString& reply, int connection) const;
    int checkRecord(const char* question, int connection) const;
    int writeRecord(quint32 address, const quint8* bytes, int size, const char* markValid) const;
    int readMemory(quint32 address, quint8* bytes, int size, int connection) const;
    // DeviceConnection.cpp, DeviceSwitch.cpp
    void setMode(DeviceMode mode);
    bool mayPoll() const;
    void watchOpenPort(const QList<SerialPortEntry>& ports);
    void openFirstIlluminator(const QList<SerialPortEntry>& ports);
    void countDevice(const SerialPortEntry& port);
    void runConnectionSequence();
    void identify();
    void identifyStoredImages();
    void tellRunningImage();
    int switchImage(const char* command);
    int awaitReconnection(const QDeadlineTimer& deadline, int deviceNumberBefore);
    // DevicePolling.cpp
    void runPollTick();
    bool isTold(int code) const;
    void pollShutters();
    void pollFault();
    void pollFunctionalMode();
    void pollIntensities();
    void pollWarning();

    Device* const q;
    SerialLine line;
    QString portName;
    QString usbSerialNumber; ///< of the device that was opened last
    QString stayedPort;      ///< closed by the link itself, and listed ever since
    QList<QByteArray> commandQueue;
    QList<ReplyWait*> waits; ///< the running ones, outermost first
    QTimer connectionTimer;
    QTimer transactionTimer;
    QTimer busyTimer;
    QTimer pollTimer;
    QDeadlineTimer busyDeadline; ///< of the running busy waits; later with everything that the device says
    int timerTurn = 0;       ///< counts the starts of transactionTimer, so that only the last one stops it
    int busyWaits = 0;       ///< that run, one inside the other
    int closeCount = 0;      ///< tells a wait that its connection is over
    int generation = 0;      ///< changes whenever a poll tick or a drain has lost its ground
    int identifying = 0;     ///< connection sequences that run, one inside the other
    int reopenAllowedAt = 0; ///< how many of them may run when the scan opens a port
    int deviceNumber = 0;
    DeviceMode deviceMode = DeviceMode::NotIdentified;
    bool inTransaction = false;
    bool shutDown = false;
    bool busyTimedOut = false;
    bool switching = false;     ///< goLoader() or goApp() runs
    bool switchPending = false; ///< and its command is not answered yet
    std::optional<SystemConfigBytes> systemConfig;
    std::optional<ChannelConfigBytes> channelConfig;
    Identity identity;
    PollState poll;
};
