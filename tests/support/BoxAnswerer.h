#pragma once

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QList>
#include <QMessageBox>
#include <QPushButton>
#include <QString>
#include <QTimer>

/// Answers every message box that opens while it lives, so that a test never hangs in one, and remembers what
/// each looked like: a test compares boxes() with what it expects.
class BoxAnswerer
{
public:
    struct Box
    {
        QString title;
        QString text;
        QMessageBox::Icon icon = QMessageBox::NoIcon;
        QMessageBox::StandardButtons buttons = QMessageBox::NoButton;
        QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
        Qt::TextFormat textFormat = Qt::AutoText;
        const QWidget* parent = nullptr;
        QString spokenName; ///< what a screen reader says of it first
    };

    /// Every box is left by @p answer where it has that button, else by Escape.
    explicit BoxAnswerer(QMessageBox::StandardButton answer = QMessageBox::Ok) : m_answer(answer)
    {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { look(); });
        m_timer.start(lookEveryMs);
    }

    const QList<Box>& boxes() const { return m_boxes; }
    void clear() { m_boxes.clear(); }

    /// True when exactly one box came: a warning without a title, with this text, one OK button and plain
    /// text, which is called one to those who do not see it.
    bool sawOneWarning(const QString& text) const
    {
        return sawOne(QMessageBox::Warning, QLatin1String("Warning"), text);
    }
    /// The same of a box that tells of a success.
    bool sawOneInformation(const QString& text) const
    {
        return sawOne(QMessageBox::Information, QLatin1String("Information"), text);
    }

private:
    static constexpr int lookEveryMs = 5;

    bool sawOne(QMessageBox::Icon icon, const QString& spokenName, const QString& text) const
    {
        if (m_boxes.size() != 1) {
            return false;
        }
        const Box& box = m_boxes.first();
        return box.title.isEmpty() && box.text == text && box.icon == icon &&
               box.buttons == QMessageBox::Ok && box.textFormat == Qt::PlainText &&
               box.spokenName == spokenName;
    }

    void look()
    {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr) {
            return;
        }
        const auto* defaultButton = box->defaultButton();
        m_boxes.append(
            {box->windowTitle(), box->text(), box->icon(), box->standardButtons(),
             defaultButton == nullptr ? QMessageBox::NoButton : box->standardButton(box->defaultButton()),
             box->textFormat(), box->parentWidget(),
             QAccessible::queryAccessibleInterface(box)->text(QAccessible::Name)});
        if (QAbstractButton* button = box->button(m_answer)) {
            button->click();
        } else {
            box->reject();
        }
    }

    QMessageBox::StandardButton m_answer;
    QTimer m_timer;
    QList<Box> m_boxes;
};
