// The application's own texts in the user's language, for both programs.
#include "app/shared/LocalizedText.h"

#include "support/Bundle.h"

#include <QStringList>

#include <optional>

namespace orvel {

namespace {

std::optional<StringsTable> &chosenTable()
{
    static std::optional<StringsTable> table;
    return table;
}

/// The language part of a locale name such as "de_DE.UTF-8@euro": "de".
QString languageOf(const QString &name)
{
    qsizetype end = 0;
    while (end < name.size() && name.at(end).isLetter())
        ++end;
    return name.left(end).toLower();
}

/// Whether the application has a strings table for the language, English being its own.
bool hasTable(const QString &language)
{
    return language == u"en" || !Bundle::mainBundle().stringsTable(QString(), QLocale(language)).isEmpty();
}

} // namespace

QString localizedText(const QString &english)
{
    if (const std::optional<StringsTable> &table = chosenTable())
        return table->localizedStringForKey(english);
    return Bundle::mainBundle().localizedStringForKey(english, QString(), QString());
}

void useTextLanguageOf(const QLocale &locale)
{
    chosenTable() = Bundle::mainBundle().stringsTable(QString(), locale);
}

QLocale messageLocaleFromEnvironment()
{
    QString name;
    for (const char *variable : { "LC_ALL", "LC_MESSAGES", "LANG" }) {
        name = qEnvironmentVariable(variable);
        if (!name.isEmpty())
            break;
    }
    const QString language = languageOf(name);
    if (language.isEmpty() || name == u"C" || name.startsWith(u"C.") || name == u"POSIX")
        return QLocale::c();
    for (const QString &preferred : qEnvironmentVariable("LANGUAGE").split(u':', Qt::SkipEmptyParts)) {
        if (hasTable(languageOf(preferred)))
            return QLocale(languageOf(preferred));
    }
    return hasTable(language) ? QLocale(language) : QLocale::c();
}

} // namespace orvel
