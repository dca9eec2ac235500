#pragma once

#include "settings/Console.h"
#include "support/WatchedTest.h"

#include <QKeyEvent>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include <memory>

/// What a test of the terminal begins with: one on the screen, what it announces recorded, warnings watched.
class ConsoleTest : public WatchedTest
{
protected:
    void buildConsole()
    {
        beginWatch();
        m_console = std::make_unique<Console>();
        m_console->resize(400, 200);
        m_keys = std::make_unique<QSignalSpy>(m_console.get(), &Console::getData);
        m_console->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_console.get()));
    }

    void removeConsole()
    {
        m_keys.reset();
        m_console.reset();
        endWatch();
    }

    QByteArray sent() const
    {
        QByteArray all;
        for (const QList<QVariant>& key : *m_keys) {
            all += key.first().toByteArray();
        }
        return all;
    }

    void press(int key, Qt::KeyboardModifiers modifiers, const QString& text) const
    {
        QKeyEvent event(QEvent::KeyPress, key, modifiers, text);
        QCoreApplication::sendEvent(m_console.get(), &event);
    }

    bool isScrolledToTheEnd() const
    {
        return m_console->verticalScrollBar()->value() == m_console->verticalScrollBar()->maximum();
    }

    std::unique_ptr<Console> m_console;
    std::unique_ptr<QSignalSpy> m_keys;
};
