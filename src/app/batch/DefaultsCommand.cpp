// DefaultsCommand: "orvel-thumbs defaults": reads, writes and deletes keys of the settings store.
#include "app/batch/DefaultsCommand.h"

#include "app/shared/LocalizedText.h"
#include "app/shared/ThumbnailSettings.h"
#include "support/UserDefaults.h"

#include <QJsonDocument>
#include <QLocale>

#include <cmath>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

int usageError(const QString &message, QString *errors)
{
    *errors += QStringLiteral("orvel-thumbs defaults: %1\n").arg(message) + DefaultsCommand::usageText();
    return 2;
}

bool isTypeOption(const QString &text)
{
    return text.startsWith(u'-') && DefaultsCommand::parseValue(text, QStringLiteral("0")).isValid();
}

} // namespace

QString DefaultsCommand::usageText()
{
    const QString usage = localizedText(QStringLiteral("Usage:"));
    const QString indent(usage.size(), u' ');
    return usage + u" orvel-thumbs defaults read [KEY]\n"_s + indent
        + u" orvel-thumbs defaults write [--force] KEY [-int|-float|-bool|-string]\n"_s + indent
        + u"                             VALUE\n"_s + indent + u" orvel-thumbs defaults delete KEY\n"_s;
}

QString DefaultsCommand::formatValue(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case QMetaType::Double:
    case QMetaType::Float:
        return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    case QMetaType::QVariantList:
    case QMetaType::QVariantMap:
        return QString::fromUtf8(QJsonDocument::fromVariant(value).toJson(QJsonDocument::Compact));
    default:
        return value.toString();
    }
}

QVariant DefaultsCommand::parseValue(const QString &type, const QString &text)
{
    if (type.isEmpty() || type == u"-string")
        return text;
    if (type == u"-int" || type == u"-integer") {
        bool ok = false;
        const qint64 number = text.toLongLong(&ok);
        return ok ? QVariant(number) : QVariant();
    }
    if (type == u"-float" || type == u"-double") {
        bool ok = false;
        const double number = text.toDouble(&ok);
        return ok && std::isfinite(number) ? QVariant(number) : QVariant();
    }
    if (type == u"-bool" || type == u"-boolean") {
        const QString word = text.toLower();
        if (word == u"true" || word == u"yes" || word == u"1")
            return true;
        if (word == u"false" || word == u"no" || word == u"0")
            return false;
        return {};
    }
    return {};
}

int DefaultsCommand::run(const QStringList &arguments, UserDefaults &store, QString *output, QString *errors)
{
    if (arguments.isEmpty())
        return usageError(localizedText(QStringLiteral("missing command")), errors);
    if (arguments.first() == u"--help" || arguments.first() == u"-h") {
        *output += usageText();
        return 0;
    }
    const QString &command = arguments.first();
    QStringList rest = arguments.mid(1);

    if (command == u"read") {
        if (rest.size() > 1)
            return usageError(localizedText(QStringLiteral("too many arguments")), errors);
        if (rest.isEmpty()) {
            // Every setting with the value in effect, the defaults marked; then any other key stored.
            QVariantMap all = store.dictionaryRepresentation();
            for (const SettingKey &key : settingKeys()) {
                const QVariant stored = all.take(key.key());
                *output += stored.isValid() ? QStringLiteral("%1 = %2\n").arg(key.key(), formatValue(stored))
                                            : u"%1 = %2 (%3)\n"_s.arg(key.key(), key.defaultText(),
                                                localizedText(QStringLiteral("default")));
            }
            for (auto it = all.cbegin(); it != all.cend(); ++it)
                *output += QStringLiteral("%1 = %2\n").arg(it.key(), formatValue(it.value()));
            return 0;
        }
        const QVariant value = store.objectForKey(rest.first());
        if (!value.isValid()) {
            *errors += (u"orvel-thumbs defaults: "_s
                + localizedText(QStringLiteral("the key %1 is not set (%2)")) + u'\n')
                           .arg(rest.first(), store.filePath());
            return 1;
        }
        *output += formatValue(value) + u'\n';
        return 0;
    }

    if (command == u"write") {
        const bool force = !rest.isEmpty() && rest.first() == u"--force";
        if (force)
            rest.removeFirst();
        QString type;
        QString value;
        if (rest.size() == 2 && !isTypeOption(rest.at(1))) {
            value = rest.at(1);
        } else if (rest.size() == 3 && isTypeOption(rest.at(1))) {
            type = rest.at(1);
            value = rest.at(2);
        } else if (rest.size() == 3) {
            return usageError(localizedText(QStringLiteral("unknown type %1")).arg(rest.at(1)), errors);
        } else {
            return usageError(rest.size() < 2 ? localizedText(QStringLiteral("missing KEY or VALUE"))
                                              : localizedText(QStringLiteral("too many arguments")),
                errors);
        }
        if (rest.first().isEmpty())
            return usageError(localizedText(QStringLiteral("empty KEY")), errors);
        QVariant typed = parseValue(type, value);
        if (!typed.isValid())
            return usageError(
                localizedText(QStringLiteral("%1 is not a valid %2 value")).arg(value, type.mid(1)), errors);
        // The thumbnail settings are checked against their schema; other keys only with --force.
        if (const SettingKey *known = findSettingKey(rest.first()); known && !force) {
            QString error;
            const std::optional<QVariant> checked = known->checkedValue(typed, &error);
            if (!checked)
                return usageError(error, errors);
            typed = *checked;
        } else if (!known && !force) {
            return usageError(
                localizedText(
                    QStringLiteral("unknown setting '%1' (write it anyway with defaults write --force)"))
                    .arg(rest.first()),
                errors);
        }
        store.setObject(typed, rest.first());
    } else if (command == u"delete") {
        if (rest.size() != 1)
            return usageError(rest.isEmpty() ? localizedText(QStringLiteral("missing KEY"))
                                             : localizedText(QStringLiteral("too many arguments")),
                errors);
        if (!store.objectForKey(rest.first()).isValid()) {
            *errors += (u"orvel-thumbs defaults: "_s
                + localizedText(QStringLiteral("the key %1 is not set (%2)")) + u'\n')
                           .arg(rest.first(), store.filePath());
            return 1;
        }
        store.removeObjectForKey(rest.first());
    } else {
        return usageError(localizedText(QStringLiteral("unknown command %1")).arg(command), errors);
    }

    if (!store.synchronize()) {
        *errors += (u"orvel-thumbs defaults: "_s + localizedText(QStringLiteral("cannot write %1")) + u'\n')
                       .arg(store.filePath());
        return 1;
    }
    return 0;
}

} // namespace orvel
