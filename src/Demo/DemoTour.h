#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>
#include <vector>

class QWidget;

/// Something that is done, what shows that it has taken place, and the picture of it.
struct DemoStation
{
    QString name; ///< in words, for whoever reads that it was not reached
    std::function<void()> act;
    std::function<bool()> reached;
    QString file{};                      ///< the picture's, without the ending; no picture when empty
    std::function<QWidget*()> subject{}; ///< what the picture shows; the window where there is none
};

/// A tour that plays itself through a row of stations, and leaves the pictures in a folder. A modal dialog
/// that stands before the subject is in its picture. Belongs to the window.
class DemoTour : public QObject
{
    Q_OBJECT

public:
    DemoTour(QWidget& window, std::vector<DemoStation> stations, QString folder);

    void start();

signals:
    /// The tour ended: true when every station was reached in time and every picture written.
    void finished(bool complete);

private:
    void beginStation();
    void check();
    void giveUp();
    bool takePicture(const DemoStation& station) const;

    QWidget& m_window;
    QString m_folder;
    std::vector<DemoStation> m_stations;
    std::size_t m_current = 0;
    bool m_begun = false;
    QTimer m_timer;
    QElapsedTimer m_waiting;
    QElapsedTimer m_settled;
};
