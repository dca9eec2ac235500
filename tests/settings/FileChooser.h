#pragma once

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QList>
#include <QStringList>
#include <QTimer>

#include <utility>

/// Answers every file dialog that opens while it lives with the next of its names, or cancels it where that
/// one is empty or there is none left, and remembers what each looked like.
class FileChooser
{
public:
    struct Chooser
    {
        QString caption;
        QStringList filters;
        QString folder;
        QFileDialog::AcceptMode mode = QFileDialog::AcceptOpen;
        const QWidget* parent = nullptr;
        QString name; ///< that it proposes
    };

    explicit FileChooser(QStringList pathNames = {}) : m_pathNames(std::move(pathNames))
    {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { look(); });
        m_timer.start(lookEveryMs);
    }
    const QList<Chooser>& choosers() const { return m_choosers; }
    QStringList captions() const
    {
        QStringList captions;
        for (const Chooser& chooser : m_choosers) {
            captions.append(chooser.caption);
        }
        return captions;
    }

private:
    static constexpr int lookEveryMs = 5;

    void look()
    {
        auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr) {
            return;
        }
        auto* const nameEdit = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        m_choosers.append({dialog->windowTitle(), dialog->nameFilters(), dialog->directory().absolutePath(),
                           dialog->acceptMode(), dialog->parentWidget(), nameEdit->text()});
        const QString pathName = m_pathNames.isEmpty() ? QString() : m_pathNames.takeFirst();
        if (pathName.isEmpty()) {
            dialog->reject();
            return;
        }
        // As somebody types it: the file need not be in the list, nor its folder exist.
        nameEdit->setText(pathName);
        QMetaObject::invokeMethod(dialog, "accept");
    }

    QStringList m_pathNames;
    QTimer m_timer;
    QList<Chooser> m_choosers;
};
