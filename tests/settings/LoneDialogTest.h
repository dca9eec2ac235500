#pragma once

#include "device/Device.h"
#include "mainwindow/WindowBench.h"
#include "settings/SettingsDialog.h"
#include "update/Update.h"

#include <QSettings>
#include <QSignalSpy>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>

#include <memory>

/// The settings dialog without the main window: nobody listens to what it tells, and nobody uses the line
/// beside it.
class LoneDialogTest : public QObject
{
protected:
    void buildRoom()
    {
        m_bench = std::make_unique<WindowBench>();
        m_illuminator = std::make_unique<FakeIlluminator>();
        m_parent = std::make_unique<QWidget>();
        m_store = std::make_unique<QSettings>(QSettings::UserScope, QStringLiteral("Tarnwick"),
                                              QStringLiteral("VYR"));
        m_device = std::make_unique<Device>();
        m_update = new Update(m_parent.get(), m_store.get());
    }
    void removeRoom()
    {
        m_dialog.reset();
        m_device.reset();
        m_parent.reset();
        m_store.reset();
        m_illuminator.reset();
        m_bench.reset();
    }
    void make(bool diagnostic)
    {
        m_dialog = std::make_unique<SettingsDialog>(m_parent.get(), m_device.get(), m_update, m_store.get(),
                                                    diagnostic, QStringLiteral(" 02.07.00"));
        m_dialog->setServiceLevel(diagnostic);
        m_dialog->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_dialog.get()));
    }
    void connectDevice()
    {
        const QSignalSpy connected(m_device.get(), &Device::deviceConnected);
        m_device->checkConnectionStatus();
        QTRY_COMPARE(connected.size(), 1);
    }
    template<typename Widget>
    Widget* part(const char* name) const
    {
        return m_dialog->findChild<Widget*>(QLatin1String(name));
    }
    QTabWidget* tabWidget() const { return part<QTabWidget>("tabWidget"); }
    void clickTab(const QString& caption) const
    {
        QTabBar* const bar = tabWidget()->tabBar();
        for (int i = 0; i < bar->count(); ++i) {
            if (bar->tabText(i) == caption) {
                QTest::mouseClick(bar, Qt::LeftButton, Qt::NoModifier, bar->tabRect(i).center());
                return;
            }
        }
        QFAIL("No such tab");
    }

    std::unique_ptr<WindowBench> m_bench;
    std::unique_ptr<FakeIlluminator> m_illuminator;
    std::unique_ptr<QWidget> m_parent;
    std::unique_ptr<QSettings> m_store;
    std::unique_ptr<Device> m_device;
    std::unique_ptr<SettingsDialog> m_dialog;
    Update* m_update = nullptr; ///< child of m_parent
};
