#include "Demo/DemoTour.h"

#include <QApplication>
#include <QDir>
#include <QPainter>
#include <QPixmap>
#include <QTextStream>
#include <QWidget>

#include <chrono>
#include <utility>

namespace {
constexpr std::chrono::milliseconds checkInterval{50};
constexpr std::chrono::seconds patience{15};
// Long enough for what follows a change, a status line or a second report, to be in the picture too.
constexpr std::chrono::milliseconds settleTime{600};
constexpr qreal dotsPerMetre = 96 / 0.0254;
const QColor frameOfBox(0x8a, 0x8f, 0x98);

/// Grabbed alone a dialog has no border, and would melt into the window behind.
void paintOver(QPixmap& picture, const QWidget& subject, QWidget& box)
{
    QPainter painter(&picture);
    const QRect place(subject.mapFromGlobal(box.mapToGlobal(QPoint(0, 0))), box.size());
    painter.drawPixmap(place.topLeft(), box.grab());
    painter.setPen(frameOfBox);
    painter.drawRect(place.adjusted(-1, -1, 0, 0));
}

QImage pictureOf(QWidget& subject)
{
    QPixmap picture = subject.grab();
    QWidget* box = QApplication::activeModalWidget();
    if (box && box != &subject && !box->isAncestorOf(&subject)) {
        paintOver(picture, subject, *box);
    }
    QImage image = picture.toImage().convertToFormat(QImage::Format_RGB32);
    // A reader can tell from it in which size the window was seen.
    const int resolution = qRound(dotsPerMetre * picture.devicePixelRatio());
    image.setDotsPerMeterX(resolution);
    image.setDotsPerMeterY(resolution);
    return image;
}
} // namespace

DemoTour::DemoTour(QWidget& window, std::vector<DemoStation> stations, QString folder)
    : QObject(&window), m_window(window), m_folder(std::move(folder)), m_stations(std::move(stations))
{
    m_timer.setInterval(checkInterval);
    connect(&m_timer, &QTimer::timeout, this, &DemoTour::check);
}

void DemoTour::start()
{
    // A blinking cursor is in every other picture.
    QApplication::setCursorFlashTime(0);
    beginStation();
    m_timer.start();
}

void DemoTour::beginStation()
{
    m_waiting.start();
    m_settled.invalidate();
    m_begun = false;
    // What is done may open a modal dialog and return only with its end, which comes with a later station.
    QTimer::singleShot(0, this, [this] {
        m_begun = true;
        m_stations.at(m_current).act();
    });
}

void DemoTour::check()
{
    const DemoStation& station = m_stations.at(m_current);
    if (!m_begun || !station.reached()) {
        m_settled.invalidate();
        if (m_waiting.hasExpired(std::chrono::milliseconds(patience).count())) {
            giveUp();
        }
        return;
    }
    if (!m_settled.isValid()) {
        m_settled.start();
        return;
    }
    if (!station.file.isEmpty() && !m_settled.hasExpired(settleTime.count())) {
        return;
    }
    const bool taken = station.file.isEmpty() || takePicture(station);
    if (taken && ++m_current < m_stations.size()) {
        beginStation();
        return;
    }
    m_timer.stop();
    emit finished(taken);
}

void DemoTour::giveUp()
{
    QTextStream(stderr) << "The demo did not get to \"" << m_stations.at(m_current).name << "\".\n";
    m_timer.stop();
    // The tour may have left a dialog open, in which the program would go on waiting.
    while (QWidget* box = QApplication::activeModalWidget()) {
        if (!box->close()) {
            break;
        }
    }
    emit finished(false);
}

bool DemoTour::takePicture(const DemoStation& station) const
{
    const QString path = QDir(m_folder).filePath(station.file + QStringLiteral(".png"));
    QWidget* subject = station.subject ? station.subject() : &m_window;
    if (subject && pictureOf(*subject).save(path)) {
        return true;
    }
    QTextStream(stderr) << "Cannot write " << path << '\n';
    return false;
}
