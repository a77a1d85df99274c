// Resource lookup in a bundle's folders.
#include "support/Bundle.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QStandardPaths>
#include <QTranslator>

namespace orvel {

Bundle::Bundle(const QString &identifier, const QString &resourcePath)
    : m_identifier(identifier)
    , m_resourcePaths { resourcePath }
{
}

Bundle::Bundle(const QString &identifier, const QStringList &resourcePaths)
    : m_identifier(identifier)
    , m_resourcePaths(resourcePaths)
{
}

// The compiled-in folder first, then the installed data folders called dataName.
static QStringList resourceFolders(const QString &compiledIn, const QString &dataName)
{
    QStringList folders { compiledIn };
    folders += QStandardPaths::locateAll(
        QStandardPaths::GenericDataLocation, dataName, QStandardPaths::LocateDirectory);
    if (QCoreApplication::instance()) {
        const QString besideExecutable = QDir::cleanPath(
            QCoreApplication::applicationDirPath() + QStringLiteral("/../share/") + dataName);
        if (!folders.contains(besideExecutable))
            folders.append(besideExecutable);
    }
    return folders;
}

const Bundle &Bundle::mainBundle()
{
    static const Bundle bundle(QStringLiteral("org.orvel.thumbnails"),
        resourceFolders(QStringLiteral(":/orvel"), QStringLiteral("orvel-thumbs")));
    return bundle;
}

const Bundle &Bundle::toolkitBundle()
{
    static const Bundle bundle(QStringLiteral("org.orvel.kit"),
        resourceFolders(QStringLiteral(":/orvelkit"), QStringLiteral("orvelkit")));
    return bundle;
}

QString Bundle::bundleIdentifier() const { return m_identifier; }

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
        QStringLiteral("png"),
        QStringLiteral("svg"),
        QStringLiteral("jpg"),
        QStringLiteral("jpeg"),
        QStringLiteral("gif"),
        QStringLiteral("tiff"),
        QStringLiteral("tif"),
        QStringLiteral("bmp"),
        QStringLiteral("webp"),
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

QString StringsTable::localizedStringForKey(const QString &key, const QString &value) const
{
    if (m_translator && !key.isEmpty()) {
        // A message without a translation answers the empty string, so it counts as missing.
        QString translation = m_translator->translate(m_context.constData(), key.toUtf8().constData());
        if (!translation.isEmpty())
            return translation;
    }
    return value.isEmpty() ? key : value;
}

QString Bundle::defaultStringsTable() { return QStringLiteral("Localizable"); }

StringsTable Bundle::stringsTable(const QString &table) const { return stringsTable(table, QLocale()); }

StringsTable Bundle::stringsTable(const QString &table, const QLocale &locale) const
{
    const QString name = table.isEmpty() ? defaultStringsTable() : table;
    // A table name is a file name: no folders, no way out of the translations folder.
    if (name.contains(u'/') || name.startsWith(u'.'))
        return StringsTable();
    for (const QString &folder : m_resourcePaths) {
        if (folder.isEmpty())
            continue;
        const QString translations = folder + QStringLiteral("/translations");
        if (!QFileInfo(translations).isDir())
            continue;
        auto translator = std::make_shared<QTranslator>();
        // Tries each of the locale's interface languages, and each without its country ("de_AT", "de").
        if (translator->load(locale, name, QStringLiteral("_"), translations, QStringLiteral(".qm"))) {
            StringsTable result;
            result.m_translator = std::move(translator);
            result.m_context = name.toUtf8();
            return result;
        }
    }
    return StringsTable();
}

QString Bundle::localizedStringForKey(const QString &key, const QString &value, const QString &table) const
{
    return stringsTable(table).localizedStringForKey(key, value);
}

} // namespace orvel
