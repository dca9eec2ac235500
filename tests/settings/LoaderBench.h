#pragma once

#include "device/Device.h"
#include "settings/DialogBench.h"

#include <QAbstractButton>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <functional>

/// "Loader Mode" at a whole simulated illuminator: the device restarts into its other image, and window and
/// dialog wait for it.
class LoaderDialogTest : public SimulatedDialogTest
{
protected:
    static constexpr int reconnectionMs = 10000;

    /// The ways in which a device comes back: columns "restartMs", "reenumerates" and "name" of its port.
    static void restarts()
    {
        QTest::addColumn<int>("restartMs");
        QTest::addColumn<bool>("reenumerates");
        QTest::addColumn<QString>("name");
        QTest::newRow("same port, at once") << 40 << false << QString();
        QTest::newRow("same port, in a while") << 700 << false << QString();
        QTest::newRow("port anew") << 300 << true << QString();
        QTest::newRow("port anew, by another name") << 300 << true << QStringLiteral("ttyVYR7");
    }
    void setRestart(std::chrono::milliseconds time, bool reenumerates, const QString& name = {})
    {
        illuminator().setRestartTime(time);
        illuminator().setReenumerates(reenumerates, name);
    }
    /// Does this once the device is gone to restart and the dialog waits for it.
    void whileItWaits(const std::function<void()>& what)
    {
        auto* const look = new QTimer(m_window.get());
        connect(look, &QTimer::timeout, look, [this, look, what] {
            if (isWaiting() && !m_device->model().runningImage()) {
                look->stop();
                look->deleteLater();
                what();
            }
        });
        look->start(lookEvery);
    }
    bool isWaiting() const { return running() == QStringLiteral("Waiting for the device to restart..."); }
    QString running() const { return m_hand->text("labelRunningImage"); }
    bool isLoaderShown() const
    {
        return isShown(QStringLiteral("loader 1.5.0"), QStringLiteral("Loader")) &&
               systemId().endsWith(QStringLiteral("Loader V1.5.0"));
    }
    bool isApplicationShown() const
    {
        return isShown(QStringLiteral("application 2.7.0"), QStringLiteral("Idle")) &&
               systemId() == QStringLiteral("SN VYR-00042  V2.7.0");
    }
    bool serviceButtonsAre(bool enabled) const
    {
        const QList<const char*> names{"pushButtonSystemReset", "pushButtonSystemReset2",
                                       "pushButtonLoaderMode", "pushButtonLoaderMode2",
                                       "pushButtonRestoreDefaults"};
        return std::all_of(names.begin(), names.end(), [&](const char* name) {
            return m_hand->part<QAbstractButton>(name)->isEnabled() == enabled;
        });
    }

private:
    static constexpr std::chrono::milliseconds lookEvery{5};

    bool isShown(const QString& image, const QString& mode) const
    {
        const QString text = QStringLiteral("Running: ") + image;
        return running() == text && m_hand->text("labelRunningImage2") == text && modeWord() == mode;
    }
    QString systemId() const { return label(*m_window, "labelSystemId")->text(); }
};
