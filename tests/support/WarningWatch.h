#pragma once

#include <QMessageLogContext>
#include <QString>
#include <QStringList>
#include <QtGlobal>

/// Collects the framework's warnings while it lives and passes them on; a test fails on any it did not
/// expect. One at a time.
class WarningWatch
{
public:
    WarningWatch()
    {
        s_messages.clear();
        s_previous = qInstallMessageHandler(&WarningWatch::handle);
    }
    ~WarningWatch() { qInstallMessageHandler(s_previous); }

    WarningWatch(const WarningWatch&) = delete;
    WarningWatch& operator=(const WarningWatch&) = delete;

    /// What was warned of, except for what the screenless platform and the fonts say of their own limits.
    static QStringList messages() { return s_messages; }

private:
    /// The screenless platform's own limits, and scripts that no font of the machine shapes.
    static bool isOfThePlatform(const QString& text)
    {
        return text.startsWith(QLatin1String("This plugin does not support")) ||
               text.trimmed().startsWith(QLatin1String("OpenType support missing for"));
    }

    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& text)
    {
        const bool isWarning = type == QtWarningMsg || type == QtCriticalMsg;
        if (isWarning && !isOfThePlatform(text)) {
            s_messages.append(text);
        }
        if (s_previous != nullptr) {
            s_previous(type, context, text);
        }
    }

    static inline QtMessageHandler s_previous = nullptr;
    static inline QStringList s_messages;
};
