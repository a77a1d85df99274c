// WorkerOptions: what a worker process of orvel-thumbs is started with, as arguments and back.
#include "app/shared/WorkerOptions.h"

#include "support/Failure.h"

#include <QLocale>
#include <QRegularExpression>

#include <cmath>

using namespace Qt::StringLiterals;

namespace orvel {

QVariant typedSettingValue(const QString &text)
{
    static const QRegularExpression whole(u"^[+-]?\\d+$"_s);
    static const QRegularExpression decimal(u"^[+-]?(\\d+\\.?\\d*|\\.\\d+)([eE][+-]?\\d+)?$"_s);
    if (whole.match(text).hasMatch()) {
        bool ok = false;
        const qint64 n = text.toLongLong(&ok);
        if (ok)
            return n;
        // Too large for an integer: kept as the number it is.
    }
    if (decimal.match(text).hasMatch()) {
        bool ok = false;
        const double n = text.toDouble(&ok);
        if (ok && std::isfinite(n))
            return n;
    }
    if (text == u"true")
        return true;
    if (text == u"false")
        return false;
    return text;
}

QStringList WorkerOptions::toArguments() const
{
    QStringList arguments { QString::fromUtf16(WorkerArgument) };
    for (auto it = settings.cbegin(); it != settings.cend(); ++it) {
        const QVariant &value = it.value();
        QString text;
        switch (value.typeId()) {
        case QMetaType::Bool:
            text = value.toBool() ? u"true"_s : u"false"_s;
            break;
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::LongLong:
            text = QString::number(value.toLongLong());
            break;
        case QMetaType::Double:
        case QMetaType::Float:
            text = QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
            // Make sure it reads back as a decimal, not a whole number.
            if (!text.contains(u'.') && !text.contains(u'e'))
                text += u".0"_s;
            break;
        default:
            arguments << u"--set-string"_s << it.key() + u'=' + value.toString();
            continue;
        }
        arguments << u"--set"_s << it.key() + u'=' + text;
    }
    arguments << u"--worker-threads"_s << QString::number(threads);
    arguments << u"--memory-limit"_s << QString::number(memoryLimitMiB);
    arguments << u"--parent"_s << QString::number(parentPid);
    arguments << u"--timeout"_s << QString::number(timeoutSeconds);
    if (verbose)
        arguments << u"--verbose"_s;
    if (dryRun)
        arguments << u"--dry-run"_s;
    return arguments;
}

std::optional<WorkerOptions> WorkerOptions::fromArguments(const QStringList &arguments, QString *error)
{
    auto fail = [error](const QString &why) { return failure<std::optional<WorkerOptions>>(error, why); };
    if (arguments.isEmpty() || arguments.first() != QStringView(WorkerArgument))
        return fail(u"not a worker command line"_s);

    WorkerOptions options;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString &name = arguments.at(i);
        if (name == u"--verbose" || name == u"--dry-run") {
            (name == u"--verbose" ? options.verbose : options.dryRun) = true;
            continue;
        }
        if (i + 1 >= arguments.size())
            return fail(u"%1 needs a value"_s.arg(name));
        const QString &value = arguments.at(++i);
        bool ok = false;
        if (name == u"--set" || name == u"--set-string") {
            const qsizetype eq = value.indexOf(u'=');
            if (eq <= 0)
                return fail(u"%1 needs KEY=VALUE, not '%2'"_s.arg(name, value));
            const QString text = value.mid(eq + 1);
            options.settings.insert(
                value.left(eq), name == u"--set" ? typedSettingValue(text) : QVariant(text));
            ok = true;
        } else if (name == u"--worker-threads") {
            options.threads = value.toInt(&ok);
            ok = ok && options.threads >= 0;
        } else if (name == u"--parent") {
            options.parentPid = value.toLongLong(&ok);
            ok = ok && options.parentPid >= 0;
        } else if (name == u"--timeout") {
            options.timeoutSeconds = value.toInt(&ok);
            ok = ok && options.timeoutSeconds >= 0;
        } else if (name == u"--memory-limit") {
            options.memoryLimitMiB = value.toLongLong(&ok);
            ok = ok && options.memoryLimitMiB >= -1;
        } else {
            return fail(u"unknown worker option %1"_s.arg(name));
        }
        if (!ok)
            return fail(u"invalid value '%1' for %2"_s.arg(value, name));
    }
    return options;
}

} // namespace orvel
