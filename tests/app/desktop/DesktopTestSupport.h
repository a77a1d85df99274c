// Helpers of the desktop tests: a clean store, controls by name, a private bus, another language.
#pragma once

#include "support/UserDefaults.h"
#include "testlib/TestSupport.h"

#include <QDBusConnection>
#include <QLineEdit>
#include <QLocale>
#include <QProcess>
#include <QUuid>
#include <QWidget>
#include <gtest/gtest.h>

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

/// The control of window with that object name (a failure when there is none).
template <typename T> T *outlet(const QWidget &window, const char *name)
{
    T *control = window.findChild<T *>(QString::fromLatin1(name));
    EXPECT_NE(control, nullptr) << name;
    return control;
}

/// The line a user types into for that control: a field, or the line inside a spin box.
inline QLineEdit *typingLine(const QWidget &window, const char *name)
{
    QWidget *control = outlet<QWidget>(window, name);
    if (!control)
        return nullptr;
    if (auto *field = qobject_cast<QLineEdit *>(control))
        return field;
    return control->findChild<QLineEdit *>();
}

/// An application id of the test's own, so that no other instance answers for it.
inline QString uniqueApplicationId()
{
    return u"org.orvel.ThumbnailsTest.t"_s + QUuid::createUuid().toString(QUuid::Id128);
}

/// A private session bus, started for the test and ended with it.
class PrivateBus
{
public:
    PrivateBus()
    {
        m_daemon.start(u"dbus-daemon"_s, { u"--session"_s, u"--nofork"_s, u"--print-address=1"_s });
        if (m_daemon.waitForStarted(5000)
            && processEventsUntil([this] { return m_daemon.canReadLine(); }, 5000))
            m_address = QString::fromUtf8(m_daemon.readLine()).trimmed();
    }
    ~PrivateBus()
    {
        for (const QString &name : m_connections)
            QDBusConnection::disconnectFromBus(name);
        m_daemon.kill();
        m_daemon.waitForFinished(5000);
    }
    bool isRunning() const { return !m_address.isEmpty(); }
    QDBusConnection connect()
    {
        m_connections << u"test-%1"_s.arg(m_connections.size());
        return QDBusConnection::connectToBus(m_address, m_connections.last());
    }

private:
    QProcess m_daemon;
    QString m_address;
    QStringList m_connections;
};

/// A test on an empty settings store with a folder of its own, in the language use() picks.
class DesktopTest : public ::testing::Test
{
protected:
    void SetUp() override { clearStandardDefaults(); }
    void TearDown() override { QLocale::setDefault(m_saved); }
    static void use(QLocale::Language language) { QLocale::setDefault(QLocale(language)); }
    /// A 40×30 picture of that name in the test's folder; answers its path.
    QString picture(const QString &name)
    {
        EXPECT_TRUE(writeTestImage(dir.file(name), 40, 30));
        return dir.file(name);
    }

    TempDir dir;

private:
    QLocale m_saved;
};

} // namespace orvel::test
