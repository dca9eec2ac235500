#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

namespace Simulator {

/// Standard input as lines, without holding up the event loop.
class InputLines : public QObject
{
    Q_OBJECT

public:
    explicit InputLines(QObject* parent = nullptr);

signals:
    void lineRead(const QString& line); ///< without its end; a last line without one counts too
    void ended();                       ///< once; no line follows

private:
    void read();

    QSocketNotifier m_notifier;
    QByteArray m_rest;
};

} // namespace Simulator
