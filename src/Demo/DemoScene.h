#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>
#include <vector>

class QLabel;
class QWidget;

namespace Simulator {
class SimulatedIlluminator;
}

/// A short tour that plays itself: it uses the window with the mouse as an operator does, from connecting to
/// clearing a fault, and leaves a numbered screenshot of every station. Belongs to the window; the
/// illuminator must outlive it.
class DemoScene : public QObject
{
    Q_OBJECT

public:
    /// `folder` receives the screenshots.
    DemoScene(QWidget& window, Simulator::SimulatedIlluminator& illuminator, QString folder);

    void start();

signals:
    /// The tour ended: true when every station was reached in time.
    void finished(bool complete);

private:
    struct Station
    {
        QString name;
        std::function<void()> act;
        std::function<bool()> reached;
    };

    void addStations();
    void beginStation();
    void check();
    bool takeScreenshot(const QString& name) const;
    void click(const QString& objectName) const;
    void dragSlider(const QString& objectName, int value) const;
    bool labelShows(const QString& objectName, const QString& text) const;
    bool buttonShows(const QString& objectName, const QString& text) const;

    QWidget& m_window;
    Simulator::SimulatedIlluminator& m_illuminator;
    QString m_folder;
    std::vector<Station> m_stations;
    std::size_t m_current = 0;
    QTimer m_timer;
    QElapsedTimer m_waiting;
    QElapsedTimer m_settled;
};
