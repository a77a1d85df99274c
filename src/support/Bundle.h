// A bundle: an identifier and the folders its resources are looked up in.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>

QT_BEGIN_NAMESPACE
class QLocale;
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
    Bundle(const QString &identifier, const QString &resourcePath);

    /// The application's bundle: identifier "org.orvel.thumbnails"; resources in ":/orvel" (compiled
    /// in), then in the installed data folder "orvel-thumbs" (under the XDG data folders, or
    /// share/orvel-thumbs beside the executable's folder). Its compiled-in strings tables come with
    /// the orvel_localization library; the toolkit's with orvel_support.
    static const Bundle &mainBundle();

    /// The toolkit's own bundle: identifier "org.orvel.kit"; resources in ":/orvelkit" (compiled in),
    /// then in the installed data folder "orvelkit" (as for the main bundle).
    static const Bundle &toolkitBundle();

    [[nodiscard]] QString bundleIdentifier() const;
    /// The first resource folder that exists (the given one when none does).
    [[nodiscard]] QString resourcePath() const;

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

    /// The image file extensions tried by pathForImageResource(), in order.
    static const QStringList &imageResourceExtensions();

private:
    Bundle(const QString &identifier, const QStringList &resourcePaths);

    QString m_identifier;
    QStringList m_resourcePaths;
};

} // namespace orvel
