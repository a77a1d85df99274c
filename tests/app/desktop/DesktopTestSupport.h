// Helpers of the desktop tests: a clean settings store, events until a condition holds.
#pragma once

#include "support/UserDefaults.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>

#include <functional>

namespace orvel::test {

/// Empties the standard settings store (its file is in the test's temporary settings folder).
inline void clearStandardDefaults()
{
    UserDefaults &store = UserDefaults::standard();
    const QStringList keys = store.keys();
    for (const QString &key : keys)
        store.removeObjectForKey(key);
    store.synchronize();
}

/// Runs the event loop until condition holds or timeoutMs pass; answers the condition.
inline bool processEventsUntil(const std::function<bool()> &condition, int timeoutMs = 10000)
{
    QDeadlineTimer deadline(timeoutMs);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(2);
    }
    return true;
}

} // namespace orvel::test
