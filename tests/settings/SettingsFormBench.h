#pragma once

#include "ui_SettingsDialog.h"

#include <QDialog>
#include <QFont>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTest>

/// The settings dialog's form alone, as setupUi makes it, in the usual size of type or a larger one.
class SettingsFormBench
{
public:
    static constexpr int usualPoints = 9;

    explicit SettingsFormBench(int points = usualPoints) : m_font(QApplication::font())
    {
        QFont font(m_font);
        font.setPointSize(points);
        QApplication::setFont(font);
        m_ui.setupUi(&m_dialog);
    }
    ~SettingsFormBench() { QApplication::setFont(m_font); }

    SettingsFormBench(const SettingsFormBench&) = delete;
    SettingsFormBench& operator=(const SettingsFormBench&) = delete;

    QDialog& dialog() { return m_dialog; }
    Ui::SettingsDialog& ui() { return m_ui; }

    bool show()
    {
        m_dialog.show();
        return QTest::qWaitForWindowExposed(&m_dialog);
    }

    template<typename Widget>
    Widget* find(const QString& name) const
    {
        return m_dialog.findChild<Widget*>(name);
    }

    static QStringList wavelengths()
    {
        return QStringLiteral("405 445 470 520 528 555 640 730").split(QLatin1Char(' '));
    }

    /// What people work with, without the parts that the framework builds into it.
    QList<QWidget*> controls() const
    {
        QList<QWidget*> found;
        const QList<QWidget*> all = m_dialog.findChildren<QWidget*>();
        for (QWidget* widget : all) {
            const bool isControl = widget->inherits("QAbstractButton") || widget->inherits("QComboBox") ||
                                   widget->inherits("QAbstractSpinBox") || widget->inherits("QLineEdit") ||
                                   widget->inherits("QTableWidget") || widget->inherits("QPlainTextEdit");
            const bool isOurs = !widget->objectName().isEmpty() &&
                                !widget->objectName().startsWith(QLatin1String("qt_")) &&
                                !widget->inherits("QToolButton");
            if (isControl && isOurs) {
                found.append(widget);
            }
        }
        return found;
    }

private:
    QFont m_font;
    QDialog m_dialog;
    Ui::SettingsDialog m_ui{};
};
