#pragma once

#include "device/DeviceTypes.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <chrono>

class QStatusBar;
class Update;

/// Tells in the status bar why the device cannot be opened and what to do about it: once when that begins or
/// changes, and again when another text has stood there for a while and the cause still holds. It leaves the
/// bar to a firmware update, and tells what holds after that.
class OpenFailureNotice : public QObject
{
    Q_OBJECT

public:
    static constexpr std::chrono::seconds othersStay{5}; ///< so long another text is left in the bar

    /// Bar and update stay the caller's; both must be there for as long as events are handled.
    OpenFailureNotice(QStatusBar* bar, const Update* update, QObject* parent);

    /// None ends the notice, and leaves the bar as it is to whoever has something to say.
    void tell(const QString& portName, OpenFailure cause);
    bool isStanding() const { return !m_text.isEmpty(); } ///< even where another text covers it

    /// What the bar says; empty for None.
    static QString text(const QString& portName, OpenFailure cause);

private:
    void show();
    void onMessageChanged(const QString& message);

    QStatusBar* const m_bar;
    const Update* const m_update;
    QString m_text;
    QTimer m_returnTimer;
};
