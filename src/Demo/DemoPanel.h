#pragma once

#include <QTimer>
#include <QWidget>

class QComboBox;
class QGridLayout;
class QLabel;
class QPushButton;

namespace Simulator {
class SimulatedIlluminator;
}

/// What a person could do to the illuminator itself: pull the cable, cause faults and warnings, feed its
/// external inputs. A small window beside the program's; the illuminator must outlive it.
class DemoPanel : public QWidget
{
    Q_OBJECT

public:
    /// Belongs to `window`, and opens beside it when that is shown.
    DemoPanel(Simulator::SimulatedIlluminator& illuminator, QWidget& window);

    /// Where on `screen` a panel of this size covers nothing of `window`: at its right, at its left or below
    /// it, whichever there is room for first. Where there is room nowhere, at the edge where it covers least.
    static QPoint placeBeside(const QRect& window, const QSize& panel, const QRect& screen);
    /// Where `window` leaves room for such a panel; where it is already when it does, or when nothing helps.
    static QPoint placeWithRoom(const QRect& window, const QSize& panel, const QRect& screen);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    QWidget* createDeviceGroup();
    QWidget* createFaultGroup();
    QWidget* createWarningGroup();
    QWidget* createInputsGroup();
    void addInputRow(QGridLayout& grid, int channel);
    void showBesideWindow();
    void togglePlugged();
    void showState();

    Simulator::SimulatedIlluminator& m_illuminator;
    QTimer m_showSoon;
    QLabel* m_state = nullptr;
    QPushButton* m_plug = nullptr;
    QComboBox* m_faults = nullptr;
};
