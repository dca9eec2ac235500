#include "update/UpdateTrace.h"

#include "mainwindow/PelorinMainWindow.h"
#include "support/ShownWindow.h"
#include "update/Update.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>

#include <algorithm>

namespace {
const QString lineMark = QStringLiteral("wf:");

bool isOfPoll(const QByteArray& line)
{
    static const QList<QByteArray> lines{"shutter?", "fault?", "f_mode?", "int_mode?", "set?", "warn?"};
    return lines.contains(line);
}

QString iconWord(QMessageBox::Icon icon)
{
    switch (icon) {
    case QMessageBox::Warning:
        return QStringLiteral("warning");
    case QMessageBox::Information:
        return QStringLiteral("information");
    case QMessageBox::Critical:
        return QStringLiteral("critical");
    case QMessageBox::Question:
        return QStringLiteral("question");
    case QMessageBox::NoIcon:
        break;
    }
    return QStringLiteral("no icon");
}

/// "wrote loader", or how much of it; what is none of the images is told line by line.
QStringList told(const QStringList& lines, const QMap<QString, QByteArray>& images)
{
    for (auto image = images.begin(); image != images.end(); ++image) {
        QStringList whole;
        const QList<QByteArray> toSend = UpdateTrace::linesToSend(image.value());
        for (const QByteArray& line : toSend) {
            whole.append(lineMark + QString::fromLatin1(line));
        }
        if (lines == whole) {
            return {QStringLiteral("wrote ") + image.key()};
        }
        if (lines == whole.mid(0, lines.size())) {
            return {QStringLiteral("wrote %1 lines of %2").arg(lines.size()).arg(image.key())};
        }
    }
    return lines;
}
} // namespace

UpdateTrace::UpdateTrace(PelorinMainWindow& window) : m_window(&window)
{
    QCoreApplication::instance()->installEventFilter(this);
    connect(window.update(), &Update::saveSettingsInfo, this,
            [this] { m_entries.append(QStringLiteral("backup")); });
}

UpdateTrace::~UpdateTrace() = default;

bool UpdateTrace::isRunning() const
{
    return m_window && m_window->update()->isInProgress();
}

void UpdateTrace::addLine(const QByteArray& line)
{
    if (isRunning() && !isOfPoll(line)) {
        m_entries.append(QString::fromLatin1(line));
    }
}

bool UpdateTrace::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Show && isRunning()) {
        auto* const widget = qobject_cast<QWidget*>(watched);
        if (widget != nullptr && widget->isWindow()) {
            showed(*widget);
        }
    }
    return QObject::eventFilter(watched, event);
}

void UpdateTrace::showed(QWidget& widget)
{
    if (const auto* const box = qobject_cast<QMessageBox*>(&widget)) {
        m_entries.append(describe(*box, *m_window));
    } else if (const auto* const progress = qobject_cast<QProgressDialog*>(&widget)) {
        m_entries.append(QStringLiteral("progress: ") +
                         progress->labelText().section(QStringLiteral("..."), 0, 0));
    }
    if (const auto what = m_onShow) { // which may ask for something else
        what(widget);
    }
}

QString UpdateTrace::describe(const QMessageBox& box, const QWidget& window)
{
    QString text = iconWord(box.icon());
    const auto note = [&text](bool applies, const QString& what) {
        if (applies) {
            text += QStringLiteral(" [") + what + QLatin1Char(']');
        }
    };
    note(!box.windowTitle().isEmpty(), box.windowTitle());
    note(!box.isModal(), QStringLiteral("not modal"));
    note(box.standardButtons() == QMessageBox::NoButton, QStringLiteral("no buttons"));
    note(box.standardButtons() != QMessageBox::NoButton && box.standardButtons() != QMessageBox::Ok,
         QStringLiteral("other buttons"));
    note(box.isModal() && box.textFormat() != Qt::PlainText, QStringLiteral("rich"));
    note(box.parentWidget() != &window, QStringLiteral("not of the window"));
    note(box.isModal() && (statusBox() != nullptr || progressDialog() != nullptr),
         QStringLiteral("beside another"));
    return text + QStringLiteral(": ") + box.text();
}

QProgressDialog* UpdateTrace::progressDialog()
{
    return shownWindow<QProgressDialog>();
}

QMessageBox* UpdateTrace::statusBox()
{
    return shownWindow<QMessageBox>(false);
}

QFileDialog* UpdateTrace::fileDialog()
{
    return shownWindow<QFileDialog>();
}

QList<QByteArray> UpdateTrace::linesToSend(const QByteArray& imageText)
{
    QList<QByteArray> lines = imageText.split('\n').mid(1);
    if (!lines.isEmpty() && lines.last().isEmpty()) {
        lines.removeLast();
    }
    for (QByteArray& line : lines) {
        if (line.endsWith('\r')) {
            line.chop(1);
        }
    }
    return lines;
}

QStringList UpdateTrace::summary(const QMap<QString, QByteArray>& images) const
{
    QStringList summary;
    for (int i = 0; i < m_entries.size();) {
        const auto end = std::find_if(m_entries.begin() + i, m_entries.end(),
                                      [](const QString& entry) { return !entry.startsWith(lineMark); });
        const int next = int(end - m_entries.begin());
        if (next > i) {
            summary += told(m_entries.mid(i, next - i), images);
            i = next;
        } else {
            summary += m_entries.at(i++);
        }
    }
    return summary;
}
