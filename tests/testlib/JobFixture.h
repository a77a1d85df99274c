// The thumbnail job's fixture: a folder of sources, a settings store and a thumbnail cache of the
// test's own, the job run in this process.
#pragma once

#include "app/engine/ThumbnailJob.h"
#include "support/UserDefaults.h"
#include "testlib/TestSupport.h"

#include <QDir>
#include <QVariantMap>

#include <gtest/gtest.h>
#include <memory>

namespace orvel::test {

class JobFixture
{
public:
    JobFixture()
        : m_defaults(std::make_unique<UserDefaults>(m_settings.file(QStringLiteral("thumbnails.conf"))))
    {
        qputenv("XDG_CACHE_HOME", QFile::encodeName(m_cache.path()));
    }

    UserDefaults &defaults() { return *m_defaults; }
    void set(const QString &key, const QVariant &value) { m_defaults->setObject(value, key); }
    void set(const QVariantMap &settings)
    {
        for (auto it = settings.cbegin(); it != settings.cend(); ++it)
            set(it.key(), it.value());
    }
    /// The job on path (a name in the folder, or a path); answers YES or NO, why receives the reason.
    bool run(const QString &path, QString *why = nullptr)
    {
        return ThumbnailJob::processFile(QDir(m_dir.path()).absoluteFilePath(path), m_defaults.get(), why);
    }
    QString file(const QString &name) const { return m_dir.file(name); }
    const TempDir &dir() const { return m_dir; }
    /// Every entry of the folder, hidden ones included, sorted.
    QStringList entries() const
    {
        return QDir(m_dir.path())
            .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name);
    }

private:
    TempDir m_dir, m_settings, m_cache;
    std::unique_ptr<UserDefaults> m_defaults;
};

} // namespace orvel::test
