// Helpers of the desktop tests: a clean settings store, events until a condition holds, the
// panel's controls by name and a test in another language.
#pragma once

#include "support/UserDefaults.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QLocale>
#include <QThread>
#include <QUuid>
#include <QWidget>
#include <gtest/gtest.h>

#include <functional>

namespace orvel::test {

using namespace Qt::StringLiterals;

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

/// The control of window with that object name (a failure when there is none).
template <typename T> T *outlet(const QWidget &window, const char *name)
{
    T *control = window.findChild<T *>(QString::fromLatin1(name));
    EXPECT_NE(control, nullptr) << name;
    return control;
}

/// An application id of the test's own, so that no other instance answers for it.
inline QString uniqueApplicationId()
{
    return u"org.orvel.ThumbnailsTest.t"_s + QUuid::createUuid().toString(QUuid::Id128);
}

/// A test on an empty settings store, in the language use() picks (restored after the test).
class DesktopTest : public ::testing::Test
{
protected:
    void SetUp() override { clearStandardDefaults(); }
    void TearDown() override { QLocale::setDefault(m_saved); }
    static void use(QLocale::Language language) { QLocale::setDefault(QLocale(language)); }

private:
    QLocale m_saved;
};

} // namespace orvel::test
