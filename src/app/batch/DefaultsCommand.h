// DefaultsCommand: "orvel-thumbs defaults": reads, writes and deletes keys of the settings store.
#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

namespace orvel {

class UserDefaults;

/// The defaults subcommand:
///     defaults read [KEY]
///     defaults write KEY [-int|-float|-bool|-string] VALUE
///     defaults delete KEY
class DefaultsCommand
{
public:
    /// Runs the subcommand with the arguments after "defaults" on store. What it prints goes to
    /// output (standard output) and errors (standard error), each line ended by "\n". Answers the
    /// exit status: 0 done, 1 a missing key or a store that could not be written, 2 a usage error.
    static int run(const QStringList &arguments, UserDefaults &store, QString *output, QString *errors);

    /// A stored value as the subcommand prints it: true/false, a number, a string as it is, lists
    /// and maps in JSON.
    [[nodiscard]] static QString formatValue(const QVariant &value);

    /// The value of "defaults write" for a type option ("-int", "-float", "-bool", "-string", or
    /// empty for a string); an invalid QVariant when text is not of that type.
    [[nodiscard]] static QVariant parseValue(const QString &type, const QString &text);

    /// The usage lines of the subcommand.
    [[nodiscard]] static QString usageText();
};

} // namespace orvel
