// A bundle: an identifier and the folders its resources are looked up in.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <memory>

QT_BEGIN_NAMESPACE
class QLocale;
class QPluginLoader;
class QTranslator;
QT_END_NAMESPACE

namespace orvel {

/// One strings table of a bundle, loaded for one language: translations keyed by the English text.
/// An empty table (no file for the language) answers every key with the key itself.
class StringsTable
{
public:
    StringsTable() = default;

    bool isEmpty() const { return !m_translator; }
    /// The translation of key; when the table has none, value if it is not empty, else key itself.
    [[nodiscard]] QString localizedStringForKey(const QString &key, const QString &value = QString()) const;

private:
    friend class Bundle;
    std::shared_ptr<const QTranslator> m_translator;
    QByteArray m_context;
};

/// An identifier and a folder of resources (a directory path or a Qt resource prefix such as
/// ":/orvel"). A bundle is a plain value; looking up a resource reads the folder each time.
class Bundle
{
public:
    Bundle(const QString &identifier, const QString &resourcePath, const QVariantMap &infoDictionary = {});

    /// The application's bundle: identifier "org.orvel.Thumbnails"; resources in ":/orvel" (compiled
    /// in), then in the installed data folder "orvel-thumbs" (under the XDG data folders, or
    /// share/orvel-thumbs beside the executable's folder). Its compiled-in strings tables come with
    /// the orvel_localization library; the toolkit's with orvel_support. Its information dictionary
    /// holds the application's name, versions and help book as the build sets them.
    static const Bundle &mainBundle();

    /// The toolkit's own bundle: identifier "org.orvel.kit"; resources in ":/orvelkit" (compiled in),
    /// then in the installed data folder "orvelkit" (as for the main bundle).
    static const Bundle &toolkitBundle();

    [[nodiscard]] QString bundleIdentifier() const;
    /// The first resource folder that exists (the given one when none does).
    [[nodiscard]] QString resourcePath() const;
    /// The path of relativePath in the first resource folder on disk that has it (compiled-in
    /// folders are passed by: other programs cannot open them); empty when none has it.
    [[nodiscard]] QString pathForFileResource(const QString &relativePath) const;

    /// The raw information dictionary: "CFBundleName", "CFBundleVersion", "CFBundleIdentifier",
    /// "CFBundleShortVersionString", "CFBundleGetInfoString", "CFBundleHelpBookName" and the like.
    [[nodiscard]] QVariantMap infoDictionary() const { return m_info; }
    /// The value for key, its text translated through the "InfoPlist" strings table; invalid when
    /// the dictionary has no such key.
    [[nodiscard]] QVariant objectForInfoDictionaryKey(const QString &key) const;
    /// "CFBundleName" of the raw dictionary.
    [[nodiscard]] QString bundleName() const;
    /// "CFBundleName" through objectForInfoDictionaryKey().
    [[nodiscard]] QString localizedBundleName() const;
    /// "CFBundleSignature" as a four-character code; 0 when missing or not four Latin-1 characters.
    [[nodiscard]] quint32 bundleSignature() const;
    [[nodiscard]] QString mainNibFile() const;
    [[nodiscard]] QString getInfoString() const;
    [[nodiscard]] QString getShortVersionString() const;

    /// The path of the image resource called name (with or without an extension; without one, tries png, svg,
    /// jpg, jpeg, gif, tiff, tif, bmp, webp in that order); empty when there is none. A name with an
    /// extension that is not found as it is is also tried with those extensions added ("icon.small" ->
    /// "icon.small.png"). Each extension is tried in lower, then upper case.
    [[nodiscard]] QString pathForImageResource(const QString &name) const;

    /// "Localizable": the table used when none is given.
    [[nodiscard]] static QString defaultStringsTable();
    /// The strings table called table (the default table when table is empty) in the language of
    /// locale (the default QLocale when none is given). A table is the Qt translation file
    /// "translations/<table>_<language>.qm" in the first resource folder that has one for the locale's
    /// interface languages, whose messages have the table name as their context.
    StringsTable stringsTable(const QString &table) const;
    StringsTable stringsTable(const QString &table, const QLocale &locale) const;
    /// The translation of key in the table; when there is none, value if it is not empty, else key.
    [[nodiscard]] QString localizedStringForKey(
        const QString &key, const QString &value, const QString &table) const;

    // Plug-ins are Qt plug-ins: loaders of the libraries whose plug-in data Qt can read. Their code
    // is loaded only when an instance is asked for (loadPluginsOfClassName() does so).
    using PluginList = QList<std::shared_ptr<QPluginLoader>>;
    /// The application's plug-in folder: lib/orvel-thumbs/plugins beside the executable's folder.
    [[nodiscard]] static QString builtInPlugInsPath();
    /// A loader for each entry of path that is a Qt plug-in, in listing order (by name); entries
    /// that are none are passed by. Empty for a missing folder.
    [[nodiscard]] static PluginList loadPluginsAtPath(const QString &path);
    [[nodiscard]] static PluginList loadPlugins() { return loadPluginsAtPath(builtInPlugInsPath()); }
    /// Only the plug-ins whose own (principal) class is exactly className, by their plug-in data.
    [[nodiscard]] static PluginList loadPluginsOfClass(const QString &className, const QString &path);
    [[nodiscard]] static PluginList loadPluginsOfClass(const QString &className)
    {
        return loadPluginsOfClass(className, builtInPlugInsPath());
    }
    /// Only the plug-ins whose instance is of a class called className or inherits one (loads them).
    [[nodiscard]] static PluginList loadPluginsOfClassName(const QString &className, const QString &path);
    [[nodiscard]] static PluginList loadPluginsOfClassName(const QString &className)
    {
        return loadPluginsOfClassName(className, builtInPlugInsPath());
    }
    /// Loads the Qt plug-in or shared library at path and answers whether that succeeded; logs
    /// "Bundle not found: %@" and answers false when nothing is there. A Qt plug-in whose plug-in
    /// data carries a "CFBundleIdentifier" becomes a loaded bundle, found by bundleWithIdentifier():
    /// its resources lie in the plug-in's folder, its information dictionary is its plug-in data.
    static bool loadBundleIfAvailable(const QString &path);
    /// The system's library folder (where the dynamic linker finds the system's shared libraries);
    /// what "system frameworks" are on Linux.
    [[nodiscard]] static QString systemFrameworksPath();
    /// Its "orvelkit" folder, for libraries meant only for the toolkit's own programs.
    [[nodiscard]] static QString privateSystemFrameworksPath();
    /// loadBundleIfAvailable() of name in systemFrameworksPath() ("libz.so.1").
    static bool loadSystemFrameworkIfAvailable(const QString &name);
    /// loadBundleIfAvailable() of name in privateSystemFrameworksPath().
    static bool loadPrivateSystemFrameworkIfAvailable(const QString &name);

    /// The loaded bundle with identifier: the main bundle, the toolkit's, or one loaded by
    /// loadBundleIfAvailable(); null when none is loaded. The bundle lives as long as the program.
    [[nodiscard]] static const Bundle *bundleWithIdentifier(const QString &identifier);
    /// The toolkit's parts as bundles. On Linux the toolkit is one library with one resource folder,
    /// so its foundation, interface, strings and PDF parts all answer toolkitBundle(). It has no web
    /// part: OrvelWebKitBundle() answers a bundle only once a plug-in with the identifier
    /// "org.orvel.kit.web" was loaded.
    [[nodiscard]] static const Bundle *OrvelFoundationBundle();
    [[nodiscard]] static const Bundle *OrvelAppKitBundle();
    [[nodiscard]] static const Bundle *OrvelStringsBundle() { return OrvelAppKitBundle(); }
    [[nodiscard]] static const Bundle *OrvelPDFKitBundle();
    [[nodiscard]] static const Bundle *OrvelWebKitBundle();

    /// The image file extensions tried by pathForImageResource(), in order.
    static const QStringList &imageResourceExtensions();

private:
    Bundle(const QString &identifier, const QStringList &resourcePaths, const QVariantMap &infoDictionary);

    QString m_identifier;
    QStringList m_resourcePaths;
    QVariantMap m_info;
};

} // namespace orvel
