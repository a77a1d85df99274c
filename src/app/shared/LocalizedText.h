// The application's own texts in the user's language, for both programs.
#pragma once

#include <QLocale>
#include <QString>

namespace orvel {

/// english translated by the main bundle's default strings table (data/translations/Localizable_*.ts);
/// english itself when the table has no entry for it. Every text the programs show from their
/// code goes through here, so that the table test finds it: a literal handed to localizedText()
/// as a QStringLiteral, or one kept in a constant table and marked with QT_TR_NOOP. The table is the one of
/// the default locale's languages unless useTextLanguageOf() chose one.
[[nodiscard]] QString localizedText(const QString &english);

/// From now on, localizedText() reads the table of locale's language (English for a language
/// without one). The command line calls it once, before it says anything.
void useTextLanguageOf(const QLocale &locale);

/// The language of messages that the environment asks for, as programs on Linux read it: LC_ALL,
/// else LC_MESSAGES, else LANG names the locale; unless that is "C" or "POSIX" (or unset), LANGUAGE
/// may list preferred languages before it ("fr:de"), the first one with a table winning. The locale
/// need not be installed. English (the C locale) when nothing names a language with a table.
[[nodiscard]] QLocale messageLocaleFromEnvironment();

} // namespace orvel
