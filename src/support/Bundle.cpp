// Resource lookup in a bundle's folders.
#include "support/Bundle.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonObject>
#include <QLibrary>
#include <QLibraryInfo>
#include <QLocale>
#include <QMutex>
#include <QPluginLoader>
#include <QStandardPaths>
#include <QTranslator>

#include "support/Log.h"

#include <algorithm>
#include <deque>

namespace orvel {

namespace {

constexpr auto ToolkitIdentifier = "org.orvel.kit";
constexpr auto WebKitIdentifier = "org.orvel.kit.web";

/// The bundles that plug-ins brought. Loaded code is never unloaded, so neither are they; a deque
/// keeps the addresses handed out stable.
struct LoadedBundles
{
    QMutex mutex;
    std::deque<Bundle> bundles;
};

LoadedBundles &loadedBundles()
{
    static LoadedBundles loaded;
    return loaded;
}

} // namespace

Bundle::Bundle(const QString &identifier, const QString &resourcePath, const QVariantMap &infoDictionary)
    : m_identifier(identifier)
    , m_resourcePaths { resourcePath }
    , m_info(infoDictionary)
{
}

Bundle::Bundle(const QString &identifier, const QStringList &resourcePaths, const QVariantMap &infoDictionary)
    : m_identifier(identifier)
    , m_resourcePaths(resourcePaths)
    , m_info(infoDictionary)
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
    static const Bundle bundle(QStringLiteral(ORVEL_BUNDLE_IDENTIFIER),
        resourceFolders(QStringLiteral(":/orvel"), QStringLiteral("orvel-thumbs")),
        QVariantMap {
            { QStringLiteral("CFBundleIdentifier"), QStringLiteral(ORVEL_BUNDLE_IDENTIFIER) },
            { QStringLiteral("CFBundleName"), QStringLiteral(ORVEL_BUNDLE_NAME) },
            { QStringLiteral("CFBundleVersion"), QStringLiteral(ORVEL_BUNDLE_VERSION) },
            { QStringLiteral("CFBundleShortVersionString"), QStringLiteral(ORVEL_BUNDLE_VERSION) },
            { QStringLiteral("CFBundleGetInfoString"),
                QStringLiteral(ORVEL_BUNDLE_NAME " " ORVEL_BUNDLE_VERSION) },
            { QStringLiteral("CFBundleHelpBookName"), QStringLiteral("help") },
            { QStringLiteral("CFBundleSignature"), QStringLiteral("OrTh") },
            { QStringLiteral("NSMainNibFile"), QStringLiteral("PreferencesPanel") },
        });
    return bundle;
}

const Bundle &Bundle::toolkitBundle()
{
    static const Bundle bundle(QLatin1StringView(ToolkitIdentifier),
        resourceFolders(QStringLiteral(":/orvelkit"), QStringLiteral("orvelkit")),
        QVariantMap {
            { QStringLiteral("CFBundleIdentifier"), QLatin1StringView(ToolkitIdentifier) },
            { QStringLiteral("CFBundleName"), QStringLiteral("OrvelKit") },
            { QStringLiteral("CFBundleVersion"), QStringLiteral(ORVEL_BUNDLE_VERSION) },
            { QStringLiteral("CFBundleShortVersionString"), QStringLiteral(ORVEL_BUNDLE_VERSION) },
        });
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

QString Bundle::pathForFileResource(const QString &relativePath) const
{
    if (relativePath.isEmpty() || relativePath.startsWith(u'/') || relativePath.split(u'/').contains(u".."))
        return QString();
    for (const QString &folder : m_resourcePaths) {
        if (folder.isEmpty() || folder.startsWith(u':'))
            continue;
        const QString candidate = folder + u'/' + relativePath;
        if (QFileInfo::exists(candidate))
            return candidate;
    }
    return QString();
}

QVariant Bundle::objectForInfoDictionaryKey(const QString &key) const
{
    const QVariant value = m_info.value(key);
    if (value.typeId() != QMetaType::QString)
        return value;
    return stringsTable(QStringLiteral("InfoPlist")).localizedStringForKey(key, value.toString());
}

QString Bundle::bundleName() const { return m_info.value(QStringLiteral("CFBundleName")).toString(); }

QString Bundle::localizedBundleName() const
{
    return objectForInfoDictionaryKey(QStringLiteral("CFBundleName")).toString();
}

quint32 Bundle::bundleSignature() const
{
    const QString code = m_info.value(QStringLiteral("CFBundleSignature")).toString();
    if (code.size() != 4)
        return 0;
    quint32 result = 0;
    for (QChar c : code) {
        if (c.unicode() > 0xff)
            return 0;
        result = (result << 8) | c.unicode();
    }
    return result;
}

QString Bundle::mainNibFile() const { return m_info.value(QStringLiteral("NSMainNibFile")).toString(); }

QString Bundle::getInfoString() const
{
    return m_info.value(QStringLiteral("CFBundleGetInfoString")).toString();
}

QString Bundle::getShortVersionString() const
{
    return m_info.value(QStringLiteral("CFBundleShortVersionString")).toString();
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

QString Bundle::builtInPlugInsPath()
{
    const QString base
        = QCoreApplication::instance() ? QCoreApplication::applicationDirPath() : QDir::currentPath();
    return QDir::cleanPath(base + QStringLiteral("/../" ORVEL_LIBDIR "/orvel-thumbs/plugins"));
}

Bundle::PluginList Bundle::loadPluginsAtPath(const QString &path)
{
    PluginList plugins;
    if (path.isEmpty())
        return plugins;
    const QDir folder(path);
    const QStringList entries = folder.entryList(QDir::Files | QDir::Readable, QDir::Name);
    for (const QString &entry : entries) {
        auto loader = std::make_shared<QPluginLoader>(folder.filePath(entry));
        if (!loader->metaData().isEmpty())
            plugins.append(std::move(loader));
    }
    return plugins;
}

Bundle::PluginList Bundle::loadPluginsOfClass(const QString &className, const QString &path)
{
    PluginList plugins = loadPluginsAtPath(path);
    plugins.removeIf([&className](const std::shared_ptr<QPluginLoader> &loader) {
        return loader->metaData().value(QStringLiteral("className")).toString() != className;
    });
    return plugins;
}

Bundle::PluginList Bundle::loadPluginsOfClassName(const QString &className, const QString &path)
{
    PluginList plugins = loadPluginsAtPath(path);
    const QByteArray name = className.toUtf8();
    plugins.removeIf([&name](const std::shared_ptr<QPluginLoader> &loader) {
        const QObject *instance = name.isEmpty() ? nullptr : loader->instance();
        return !instance || !instance->inherits(name.constData());
    });
    return plugins;
}

bool Bundle::loadBundleIfAvailable(const QString &path)
{
    if (path.isEmpty() || !QFileInfo::exists(path)) {
        logMessage(QStringLiteral("Bundle not found: %1").arg(path));
        return false;
    }
    QPluginLoader plugin(path);
    const QJsonObject metaData = plugin.metaData();
    if (metaData.isEmpty()) {
        // Not a Qt plug-in: a plain shared library is loaded as one. The library stays loaded for
        // the program's life, as the loader's destructor leaves it.
        QLibrary library(path);
        return library.load();
    }
    if (!plugin.load())
        return false;
    const QVariantMap info = metaData.value(QStringLiteral("MetaData")).toObject().toVariantMap();
    const QString identifier = info.value(QStringLiteral("CFBundleIdentifier")).toString();
    if (identifier.isEmpty())
        return true;
    LoadedBundles &loaded = loadedBundles();
    const QMutexLocker lock(&loaded.mutex);
    const bool known = std::any_of(loaded.bundles.begin(), loaded.bundles.end(),
        [&identifier](const Bundle &bundle) { return bundle.m_identifier == identifier; });
    if (!known)
        loaded.bundles.push_back(Bundle(identifier, QFileInfo(path).absolutePath(), info));
    return true;
}

QString Bundle::systemFrameworksPath() { return QLibraryInfo::path(QLibraryInfo::LibrariesPath); }

QString Bundle::privateSystemFrameworksPath() { return systemFrameworksPath() + QStringLiteral("/orvelkit"); }

bool Bundle::loadSystemFrameworkIfAvailable(const QString &name)
{
    return loadBundleIfAvailable(systemFrameworksPath() + u'/' + name);
}

bool Bundle::loadPrivateSystemFrameworkIfAvailable(const QString &name)
{
    return loadBundleIfAvailable(privateSystemFrameworksPath() + u'/' + name);
}

const Bundle *Bundle::bundleWithIdentifier(const QString &identifier)
{
    if (identifier.isEmpty())
        return nullptr;
    for (const Bundle *bundle : { &mainBundle(), &toolkitBundle() }) {
        if (bundle->m_identifier == identifier)
            return bundle;
    }
    LoadedBundles &loaded = loadedBundles();
    const QMutexLocker lock(&loaded.mutex);
    for (const Bundle &bundle : loaded.bundles) {
        if (bundle.m_identifier == identifier)
            return &bundle;
    }
    return nullptr;
}

const Bundle *Bundle::OrvelFoundationBundle()
{
    return bundleWithIdentifier(QLatin1StringView(ToolkitIdentifier));
}

const Bundle *Bundle::OrvelAppKitBundle() { return OrvelFoundationBundle(); }

const Bundle *Bundle::OrvelPDFKitBundle() { return OrvelFoundationBundle(); }

const Bundle *Bundle::OrvelWebKitBundle()
{
    return bundleWithIdentifier(QLatin1StringView(WebKitIdentifier));
}

} // namespace orvel
