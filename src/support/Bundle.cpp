// Resource lookup in a bundle's folders.
#include "support/Bundle.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace orvel {

Bundle::Bundle(const QString &identifier, const QString &resourcePath)
    : m_identifier(identifier), m_resourcePaths { resourcePath }
{
}

Bundle::Bundle(const QString &identifier, const QStringList &resourcePaths)
    : m_identifier(identifier), m_resourcePaths(resourcePaths)
{
}

const Bundle &Bundle::mainBundle()
{
    static const Bundle bundle = [] {
        QStringList folders { QStringLiteral(":/orvel") };
        const QString dataName = QStringLiteral("orvel-thumbs");
        folders += QStandardPaths::locateAll(QStandardPaths::GenericDataLocation, dataName,
                                             QStandardPaths::LocateDirectory);
        if (QCoreApplication::instance()) {
            const QString besideExecutable = QDir::cleanPath(QCoreApplication::applicationDirPath()
                                                             + QStringLiteral("/../share/") + dataName);
            if (!folders.contains(besideExecutable))
                folders.append(besideExecutable);
        }
        return Bundle(QStringLiteral("org.orvel.thumbnails"), folders);
    }();
    return bundle;
}

QString Bundle::bundleIdentifier() const
{
    return m_identifier;
}

QString Bundle::resourcePath() const
{
    for (const QString &folder : m_resourcePaths) {
        if (QFileInfo(folder).isDir())
            return folder;
    }
    return m_resourcePaths.value(0);
}

const QStringList &Bundle::imageResourceExtensions()
{
    static const QStringList extensions {
        QStringLiteral("png"), QStringLiteral("svg"),  QStringLiteral("jpg"),
        QStringLiteral("jpeg"), QStringLiteral("gif"), QStringLiteral("tiff"),
        QStringLiteral("tif"), QStringLiteral("bmp"),  QStringLiteral("webp"),
    };
    return extensions;
}

QString Bundle::pathForImageResource(const QString &name) const
{
    if (name.isEmpty())
        return QString();
    const bool hasExtension = !QFileInfo(name).suffix().isEmpty();
    for (const QString &folder : m_resourcePaths) {
        if (folder.isEmpty() || !QFileInfo(folder).isDir())
            continue;
        const QString stem = folder + u'/' + name;
        if (hasExtension && QFileInfo(stem).isFile())
            return stem;
        for (const QString &extension : imageResourceExtensions()) {
            for (const QString &candidate : { stem + u'.' + extension, stem + u'.' + extension.toUpper() }) {
                if (QFileInfo(candidate).isFile())
                    return candidate;
            }
        }
    }
    return QString();
}

} // namespace orvel
