#pragma once

#include "support/WarningWatch.h"

#include <QObject>
#include <QTest>

#include <memory>

/// A test whose functions fail when the framework warns of something while they run. Watching begins anew
/// with each of them: the test framework puts its own handler in front of whatever watched before its start.
class WatchedTest : public QObject
{
protected:
    void beginWatch()
    {
        m_watch.reset(); // where a cleanup ended early
        m_watch = std::make_unique<WarningWatch>();
    }
    /// The last thing that a test's cleanup does, as whatever is destroyed there may warn, too.
    void endWatch()
    {
        const QStringList warnings = WarningWatch::messages();
        m_watch.reset(); // in any case: a second watch would pass everything on to itself
        QCOMPARE(warnings, QStringList());
    }

private:
    std::unique_ptr<WarningWatch> m_watch;
};
