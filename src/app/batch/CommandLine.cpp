// CommandLine: the arguments of orvel-thumbs and their parsing into options.
#include "app/batch/CommandLine.h"

#include "app/batch/BatchRun.h"
#include "app/batch/DefaultsCommand.h"
#include "app/batch/Progress.h"
#include "app/batch/WorkerEngine.h"
#include "app/batch/WorkerPool.h"
#include "app/shared/LocalizedText.h"
#include "app/shared/ThumbnailSettings.h"
#include "app/shared/WorkerOptions.h"
#include "support/Log.h"
#include "support/UserDefaults.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QThread>
#include <QUrl>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

constexpr int MaxJobs = 256;

struct Choice
{
    const char16_t *name;
    qint64 value;
};

constexpr Choice FormatChoices[] = { { u"tiff", 0 }, { u"tif", 0 }, { u"bmp", 1 }, { u"gif", 2 },
    { u"jpeg", 3 }, { u"jpg", 3 }, { u"png", 4 }, { u"jp2", 5 }, { u"jpeg2000", 5 } };
constexpr Choice InterpolationChoices[]
    = { { u"default", 0 }, { u"none", 1 }, { u"low", 2 }, { u"high", 3 } };
constexpr Choice CreateChoices[] = { { u"thumbnail", 0 }, { u"thumbnail+icon", 1 }, { u"icon", 2 } };
constexpr Choice SharpenChoices[] = { { u"none", 0 }, { u"light", 1 }, { u"medium", 2 }, { u"strong", 3 } };

template <size_t N> std::optional<qint64> choose(const Choice (&choices)[N], const QString &text)
{
    const QString word = text.toLower();
    for (const Choice &choice : choices) {
        if (word == QStringView(choice.name))
            return choice.value;
    }
    return std::nullopt;
}

template <size_t N> QString choiceList(const Choice (&choices)[N])
{
    QStringList names;
    for (const Choice &choice : choices)
        names << QString::fromUtf16(choice.name);
    return names.join(u", "_s);
}

std::optional<qint64> wholeNumber(const QString &text, qint64 low, qint64 high)
{
    bool ok = false;
    const qint64 n = text.toLongLong(&ok);
    if (!ok || n < low || n > high)
        return std::nullopt;
    return n;
}

std::optional<double> decimalNumber(const QString &text, double low, double high)
{
    bool ok = false;
    const double n = text.toDouble(&ok);
    if (!ok || !std::isfinite(n) || n < low || n > high)
        return std::nullopt;
    return n;
}

QString invalidValue(const QString &option, const QString &value, const QString &expected)
{
    return localizedText(QStringLiteral("invalid value '%1' for %2 (expected %3)"))
        .arg(value, option, expected);
}

/// Applies an option with its value (as the user wrote it) to the options; answers a usage error
/// or an empty string.
using Apply = QString (*)(const QString &option, const QString &value, CommandLineOptions &o);

template <size_t N>
QString setChoice(const Choice (&choices)[N], const SettingKey &key, const QString &option,
    const QString &value, CommandLineOptions &o)
{
    const auto code = choose(choices, value);
    if (!code)
        return invalidValue(option, value, choiceList(choices));
    o.settings.insert(key.key(), *code);
    return {};
}

QString setNaming(qint64 rule, const QString &value, CommandLineOptions &o)
{
    o.settings.insert(Setting::ExtensionFormat.key(), rule);
    o.settings.insert(Setting::Extension.key(), value);
    return {};
}

QString unknownSetting(const QString &key)
{
    QStringList keys;
    for (const SettingKey &known : settingKeys())
        keys << known.key();
    return localizedText(QStringLiteral("unknown setting '%1' (the settings are %2)"))
        .arg(key, keys.join(u", "_s));
}

QString setSetting(const QString &option, const QString &value, CommandLineOptions &o)
{
    const qsizetype eq = value.indexOf(u'=');
    if (eq <= 0)
        return localizedText(QStringLiteral("%1 needs KEY=VALUE, not '%2'")).arg(option, value);
    const QString key = value.left(eq);
    const SettingKey *known = findSettingKey(key);
    if (!known)
        return unknownSetting(key);
    // The text is read by the key's type: a text key takes it as it is, whatever it looks like.
    QString error;
    const std::optional<QVariant> checked = known->checkedValue(value.mid(eq + 1), &error);
    if (!checked)
        return error;
    o.settings.insert(key, *checked);
    return {};
}

/// Applies an option that takes no value by switching its flag on.
template <bool CommandLineOptions::*Flag>
QString setFlag(const QString &, const QString &, CommandLineOptions &o)
{
    o.*Flag = true;
    return {};
}

/// An option of the command line, with its help.
struct Option
{
    enum class Section { Settings, Running };

    Section section;
    const char16_t *longName;
    char16_t shortName;
    /// The value's name in the help; null for an option that takes none.
    const char16_t *valueName;
    /// The help, "\n" between its lines.
    const char16_t *help;
    /// The settings keys the option sets, named in the help.
    const char16_t *keys;
    Apply apply;
};

const Option Options[] = {
    { Option::Section::Settings, u"set", 0, u"KEY=VALUE",
        QT_TR_NOOP(u"set a setting; the value must be of the key's type and range (see the settings below)"),
        nullptr, setSetting },
    { Option::Section::Settings, u"set-string", 0, u"KEY=VALUE", QT_TR_NOOP(u"the same as --set"), nullptr,
        setSetting },
    { Option::Section::Settings, u"format", u'f', u"FORMAT", QT_TR_NOOP(u"tiff, bmp, gif, jpeg, png or jp2"),
        Setting::FileType.name,
        [](const QString &option, const QString &value, CommandLineOptions &o) {
            return setChoice(FormatChoices, Setting::FileType, option, value, o);
        } },
    { Option::Section::Settings, u"size", u's', u"WxH | N",
        QT_TR_NOOP(u"fit into a box of W by H (or N by N) pixels"), u"width, height",
        [](const QString &option, const QString &value, CommandLineOptions &o) {
            static const QRegularExpression box(u"^(\\d+)(?:[xX](\\d+))?$"_s);
            const QRegularExpressionMatch m = box.match(value);
            const auto w = m.hasMatch() ? wholeNumber(m.captured(1), 1, 1000000) : std::nullopt;
            const auto h = m.hasMatch()
                ? wholeNumber(m.hasCaptured(2) ? m.captured(2) : m.captured(1), 1, 1000000)
                : std::nullopt;
            if (!w || !h)
                return invalidValue(
                    option, value, localizedText(QStringLiteral("WIDTHxHEIGHT or SIZE in pixels")));
            o.settings.insert(Setting::Width.key(), *w);
            o.settings.insert(Setting::Height.key(), *h);
            o.settings.insert(Setting::Sizing.key(), qint64(0));
            return QString();
        } },
    { Option::Section::Settings, u"scale", 0, u"PERCENT",
        QT_TR_NOOP(u"scale to PERCENT of the original size"), Setting::Scale.name,
        [](const QString &option, const QString &value, CommandLineOptions &o) {
            const auto percent = decimalNumber(value, 0, 100);
            if (!percent || *percent <= 0)
                return invalidValue(
                    option, value, localizedText(QStringLiteral("a percentage above 0, at most 100")));
            o.settings.insert(Setting::Sizing.key(), qint64(1));
            o.settings.insert(Setting::Scale.key(), *percent / 100.0);
            return QString();
        } },
    { Option::Section::Settings, u"quality", u'Q', u"0-100", QT_TR_NOOP(u"compression quality"),
        Setting::Quality.name,
        [](const QString &option, const QString &value, CommandLineOptions &o) {
            const auto percent = decimalNumber(value, 0, 100);
            if (!percent)
                return invalidValue(option, value, localizedText(QStringLiteral("0 to 100")));
            o.settings.insert(Setting::Quality.key(), *percent / 100.0);
            return QString();
        } },
    { Option::Section::Settings, u"interpolation", 0, u"MODE", QT_TR_NOOP(u"default, none, low or high"),
        Setting::Interpolation.name,
        [](const QString &option, const QString &value, CommandLineOptions &o) {
            return setChoice(InterpolationChoices, Setting::Interpolation, option, value, o);
        } },
    { Option::Section::Settings, u"suffix", 0, u"TEXT", QT_TR_NOOP(u"name thumbnails NAME + TEXT"),
        u"extension, extensionFormat",
        [](const QString &, const QString &value, CommandLineOptions &o) { return setNaming(1, value, o); } },
    { Option::Section::Settings, u"prefix", 0, u"TEXT", QT_TR_NOOP(u"name thumbnails TEXT + NAME"), nullptr,
        [](const QString &, const QString &value, CommandLineOptions &o) { return setNaming(0, value, o); } },
    { Option::Section::Settings, u"folder", 0, u"NAME", QT_TR_NOOP(u"put thumbnails into a sub-folder NAME"),
        nullptr,
        [](const QString &, const QString &value, CommandLineOptions &o) { return setNaming(2, value, o); } },
    { Option::Section::Settings, u"output-dir", 0, u"DIR",
        QT_TR_NOOP(
            u"write the thumbnails under DIR instead of beside their sources, a folder PATH as DIR/NAME "
            u"with its sub-folders (NAME: the last part of PATH); --create icon ignores it"),
        nullptr,
        [](const QString &option, const QString &value, CommandLineOptions &o) {
            if (value.isEmpty())
                return invalidValue(option, value, localizedText(QStringLiteral("a folder")));
            o.outputDir = value;
            return QString();
        } },
    { Option::Section::Settings, u"create", 0, u"WHAT", QT_TR_NOOP(u"thumbnail, thumbnail+icon or icon"),
        Setting::Create.name,
        [](const QString &option, const QString &value, CommandLineOptions &o) {
            return setChoice(CreateChoices, Setting::Create, option, value, o);
        } },
    { Option::Section::Settings, u"sharpen", 0, u"AMOUNT", QT_TR_NOOP(u"none, light, medium or strong"),
        Setting::Sharpen.name,
        [](const QString &option, const QString &value, CommandLineOptions &o) {
            return setChoice(SharpenChoices, Setting::Sharpen, option, value, o);
        } },
    { Option::Section::Running, u"jobs", u'j', u"N",
        QT_TR_NOOP(u"files processed at once (default: one per processor core)"), nullptr,
        [](const QString &option, const QString &value, CommandLineOptions &o) {
            const auto jobs = wholeNumber(value, 1, MaxJobs);
            if (!jobs)
                return invalidValue(option, value, localizedText(QStringLiteral("1 to %1")).arg(MaxJobs));
            o.jobs = int(*jobs);
            return QString();
        } },
    { Option::Section::Running, u"files-from", 0, u"FILE",
        QT_TR_NOOP(u"also make thumbnails of the paths listed in FILE, one a line ('-': standard input)"),
        nullptr,
        [](const QString &, const QString &value, CommandLineOptions &o) {
            o.filesFrom = value;
            return QString();
        } },
    { Option::Section::Running, u"null", u'0', nullptr,
        QT_TR_NOOP(u"the paths of --files-from end with NUL characters, not line breaks (find -print0)"),
        nullptr, setFlag<&CommandLineOptions::nullSeparated> },
    { Option::Section::Running, u"skip-up-to-date", 0, nullptr,
        QT_TR_NOOP(u"leave alone a file whose thumbnail exists and is newer than it (to take up an "
                   u"interrupted run)"),
        nullptr, setFlag<&CommandLineOptions::skipUpToDate> },
    { Option::Section::Running, u"max-depth", 0, u"N",
        QT_TR_NOOP(u"walk folders N levels deep (1: a folder's own files, 0: no folder entered; default: all "
                   u"the way)"),
        nullptr,
        [](const QString &option, const QString &value, CommandLineOptions &o) {
            const auto depth = wholeNumber(value, 0, 1000000);
            if (!depth)
                return invalidValue(
                    option, value, localizedText(QStringLiteral("a whole number of levels, 0 or more")));
            o.maxDepth = int(*depth);
            return QString();
        } },
    { Option::Section::Running, u"timeout", 0, u"SECONDS",
        QT_TR_NOOP(u"time limit per file (default 120, 0 for none)"), nullptr,
        [](const QString &option, const QString &value, CommandLineOptions &o) {
            const auto seconds = wholeNumber(value, 0, 1000000);
            if (!seconds)
                return invalidValue(
                    option, value, localizedText(QStringLiteral("whole seconds, 0 for no limit")));
            o.timeoutSeconds = int(*seconds);
            return QString();
        } },
    { Option::Section::Running, u"memory-limit", 0, u"MIB",
        QT_TR_NOOP(u"memory limit of each worker process (default: three quarters "
                   u"of the machine's memory shared among the workers; 0 for none)"),
        nullptr,
        [](const QString &option, const QString &value, CommandLineOptions &o) {
            const auto mebibytes = wholeNumber(value, 0, qint64(1) << 40);
            if (!mebibytes)
                return invalidValue(
                    option, value, localizedText(QStringLiteral("whole MiB, 0 for no limit")));
            o.memoryLimitMiB = *mebibytes;
            return QString();
        } },
    { Option::Section::Running, u"dry-run", u'n', nullptr,
        QT_TR_NOOP(u"decode and render every file as for real, list the thumbnails that would be written and "
                   u"what would be skipped or fail, and write nothing"),
        nullptr, setFlag<&CommandLineOptions::dryRun> },
    { Option::Section::Running, u"quiet", u'q', nullptr, QT_TR_NOOP(u"no progress bar and no summary"),
        nullptr, setFlag<&CommandLineOptions::quiet> },
    { Option::Section::Running, u"verbose", u'v', nullptr,
        QT_TR_NOOP(u"print every thumbnail written, and log messages (FFmpeg's too)"), nullptr,
        setFlag<&CommandLineOptions::verbose> },
    { Option::Section::Running, u"thumbnailer", 0, nullptr,
        QT_TR_NOOP(
            u"a file manager's thumbnailer: with PATH being SOURCE OUTPUT, write one PNG of at most -s "
            u"pixels (default 128) on its longer side, and nothing else; no settings are read"),
        nullptr,
        [](const QString &, const QString &, CommandLineOptions &o) {
            o.mode = CommandLineOptions::Mode::Thumbnailer;
            return QString();
        } },
    { Option::Section::Running, u"help", u'h', nullptr, QT_TR_NOOP(u"print this help"), nullptr,
        [](const QString &, const QString &, CommandLineOptions &o) {
            o.mode = CommandLineOptions::Mode::Help;
            return QString();
        } },
    { Option::Section::Running, u"version", u'V', nullptr, QT_TR_NOOP(u"print the version"), nullptr,
        [](const QString &, const QString &, CommandLineOptions &o) {
            o.mode = CommandLineOptions::Mode::Version;
            return QString();
        } },
};

const Option *findOption(QStringView name, bool isShort)
{
    for (const Option &known : Options) {
        if (isShort ? (known.shortName != 0 && name.size() == 1 && name.at(0) == QChar(known.shortName))
                    : name == QStringView(known.longName))
            return &known;
    }
    return nullptr;
}

/// Width of the help text: a terminal's 80 columns.
constexpr qsizetype HelpWidth = 80;

/// text (its own line breaks kept) as lines of at most HelpWidth columns, each after indent
/// columns; the first line follows head, which is padded to indent (or takes a line of its own
/// when it is too long).
QString helpLines(const QString &head, qsizetype indent, const QString &text)
{
    QStringList lines;
    for (const QString &paragraph : text.split(u'\n')) {
        QString line;
        for (const QString &word : paragraph.split(u' ', Qt::SkipEmptyParts)) {
            if (!line.isEmpty() && indent + line.size() + 1 + word.size() > HelpWidth) {
                lines << line;
                line.clear();
            }
            line += (line.isEmpty() ? QString() : u" "_s) + word;
        }
        lines << line;
    }
    QString out = head.isEmpty() ? QString(indent, u' ')
        : head.size() < indent   ? head.leftJustified(indent)
                                 : head + u'\n' + QString(indent, u' ');
    out += lines.join(u'\n' + QString(indent, u' ')) + u'\n';
    return out;
}

/// The help lines of the options of one section, their texts in a column.
QString optionHelp(Option::Section section)
{
    QString text;
    for (const Option &option : Options) {
        if (option.section != section)
            continue;
        QString name = option.shortName ? u"  -%1, --"_s.arg(QChar(option.shortName)) : u"      --"_s;
        name += QString::fromUtf16(option.longName);
        if (option.valueName)
            name += u' ' + QString::fromUtf16(option.valueName);
        QString help = localizedText(QString::fromUtf16(option.help));
        if (option.keys)
            help += u" (%1)"_s.arg(QString::fromUtf16(option.keys));
        text += helpLines(name, 27, help);
    }
    return text;
}

/// The settings keys with their types, defaults and meanings.
QString settingsHelp()
{
    QString text;
    for (const SettingKey &key : settingKeys()) {
        const QString head
            = u"  %1 %2 %3"_s.arg(key.key(), -16).arg(key.typeName(), -8).arg(key.defaultText());
        text += helpLines(head, 36, localizedText(QString::fromUtf16(key.meaning)));
    }
    return text;
}

/// Completes the options of the thumbnailer mode from the paths and the size; answers a usage
/// error or an empty string.
QString finishThumbnailer(CommandLineOptions &o)
{
    if (o.paths.size() != 2 || !o.filesFrom.isEmpty() || !o.outputDir.isEmpty())
        return localizedText(QStringLiteral("--thumbnailer takes two paths, SOURCE and OUTPUT"));
    for (auto it = o.settings.cbegin(); it != o.settings.cend(); ++it) {
        if (it.key() != Setting::Width.key() && it.key() != Setting::Height.key()
            && it.key() != Setting::Sizing.key())
            return localizedText(QStringLiteral("--thumbnailer reads no settings; only -s sets its size"));
    }
    if (o.settings.contains(Setting::Width.key()))
        o.thumbnailerSize = int(std::max(o.settings.value(Setting::Width.key()).toLongLong(),
            o.settings.value(Setting::Height.key()).toLongLong()));
    o.settings.clear();
    // File managers hand over a path (%i) or a URI (%u); only a local file can be read.
    QString source = o.paths.at(0);
    if (source.startsWith(u"file:"_s, Qt::CaseInsensitive)) {
        const QUrl uri(source);
        source = uri.isValid() && uri.host().isEmpty() ? uri.toLocalFile() : QString();
    } else if (source.contains(u"://"_s)) {
        source.clear();
    }
    if (source.isEmpty())
        return localizedText(QStringLiteral("--thumbnailer reads local files only, not %1"))
            .arg(o.paths.at(0));
    o.thumbnailerSource = source;
    o.thumbnailerOutput = o.paths.at(1);
    o.paths.clear();
    return {};
}

} // namespace

CommandLineOptions parseCommandLine(const QStringList &arguments)
{
    CommandLineOptions o;
    if (!arguments.isEmpty() && arguments.first() == u"defaults") {
        o.mode = CommandLineOptions::Mode::Defaults;
        o.defaultsArguments = arguments.mid(1);
        return o;
    }
    if (!arguments.isEmpty() && arguments.first() == QStringView(WorkerArgument)) {
        o.mode = CommandLineOptions::Mode::Worker;
        return o;
    }

    auto fail = [&o](const QString &error) {
        o.mode = CommandLineOptions::Mode::Run;
        o.error = error;
        return o;
    };

    bool optionsEnded = false;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (optionsEnded || argument == u"-" || !argument.startsWith(u'-')) {
            o.paths << argument;
            continue;
        }
        if (argument == u"--") {
            optionsEnded = true;
            continue;
        }

        const bool isLong = argument.startsWith(u"--"_s);
        QString name;
        QString value;
        bool hasValue = false;
        const Option *known = nullptr;
        if (isLong) {
            const qsizetype eq = argument.indexOf(u'=');
            name = argument.mid(2, eq < 0 ? -1 : eq - 2);
            if (eq >= 0) {
                value = argument.mid(eq + 1);
                hasValue = true;
            }
            known = findOption(name, false);
        } else {
            known = findOption(QStringView(argument).mid(1, 1), true);
            if (known && argument.size() > 2) {
                value = argument.mid(2);
                hasValue = true;
            }
        }
        if (!known)
            return fail(
                localizedText(QStringLiteral("unknown option %1")).arg(isLong ? u"--"_s + name : argument));
        if (!known->valueName && hasValue)
            return fail(localizedText(QStringLiteral("%1 takes no value")).arg(argument));
        if (known->valueName && !hasValue) {
            if (i + 1 >= arguments.size())
                return fail(localizedText(QStringLiteral("%1 needs a value")).arg(argument));
            value = arguments.at(++i);
        }
        const QString error = known->apply(u"--"_s + QString::fromUtf16(known->longName), value, o);
        if (!error.isEmpty())
            return fail(error);
        if (o.mode != CommandLineOptions::Mode::Run && o.mode != CommandLineOptions::Mode::Thumbnailer)
            return o; // --help or --version: the rest does not matter
    }

    if (o.mode == CommandLineOptions::Mode::Thumbnailer) {
        const QString error = finishThumbnailer(o);
        return error.isEmpty() ? o : fail(error);
    }

    if (o.paths.isEmpty() && o.filesFrom.isEmpty())
        return fail(localizedText(QStringLiteral("no PATH given")));
    return o;
}

int defaultJobCount() { return std::clamp(QThread::idealThreadCount(), 1, MaxJobs); }

QString usageText()
{
    const auto paragraph = [](const QString &text) { return helpLines(QString(), 0, text); };
    const auto example = [](const char16_t *command, const QString &meaning) {
        return u"  orvel-thumbs "_s + QString::fromUtf16(command) + u'\n' + helpLines(QString(), 6, meaning);
    };
    const QString usage = localizedText(QStringLiteral("Usage:"));
    const QString indent(usage.size(), u' ');
    return usage + u" orvel-thumbs [OPTION]... PATH...\n"_s + indent
        + u" orvel-thumbs --thumbnailer [-s SIZE] SOURCE OUTPUT\n"_s + indent
        + u" orvel-thumbs defaults read [KEY]\n"_s + indent
        + u" orvel-thumbs defaults write [--force] KEY [-int|-float|-bool|-string]\n"_s + indent
        + u"                             VALUE\n"_s + indent + u" orvel-thumbs defaults delete KEY\n\n"_s
        + paragraph(localizedText(QStringLiteral(
            "Makes a thumbnail of every image, PDF or PostScript document and movie in PATH (files, and "
            "folders searched through), with the stored settings; a movie gives the frame at half its "
            "length, at most 15 seconds in. Inside folders, files that are none of these and thumbnails "
            "the naming rule could have written are skipped.")))
        + paragraph(localizedText(QStringLiteral(
            "Exits with 0 when every PATH was handled, 1 when something gave no thumbnail, 2 on a usage "
            "error.")))
        + u'\n'
        + paragraph(localizedText(
            QStringLiteral("Settings for this run only (the stored settings are left as they are):")))
        + optionHelp(Option::Section::Settings) + u'\n' + paragraph(localizedText(QStringLiteral("Running:")))
        + optionHelp(Option::Section::Running) + u'\n'
        + paragraph(localizedText(QStringLiteral(
            "Settings (KEY, type, default, meaning), stored in $XDG_CONFIG_HOME/orvel/thumbnails.conf; "
            "see 'orvel-thumbs defaults'. A file named 'defaults' is given as ./defaults.")))
        + settingsHelp() + u'\n' + paragraph(localizedText(QStringLiteral("Examples:")))
        + example(u"~/Pictures",
            localizedText(
                QStringLiteral("thumbnails of every picture below ~/Pictures, with the stored settings")))
        + example(u"-s 256 -f png --folder small photos",
            localizedText(QStringLiteral("256-pixel PNGs, each in a folder 'small' beside its source")))
        + example(u"--output-dir /tmp/thumbs /media/card/DCIM",
            localizedText(QStringLiteral(
                "thumbnails of a read-only memory card in /tmp/thumbs/DCIM, in the card's folders")))
        + example(u"--create icon --max-depth 1 ~/Downloads",
            localizedText(
                QStringLiteral("file-manager icons for the files of ~/Downloads, not of its sub-folders")))
        + example(u"defaults write width 200",
            localizedText(QStringLiteral("store a setting for the runs to come")));
}

namespace {

/// The thumbnailer mode: one file in this process, no worker pool (whose start would cost more
/// than the file), limited as a worker of one would be. Answers the exit status.
int runThumbnailer(const CommandLineOptions &options)
{
    const qint64 memoryLimitMiB
        = options.memoryLimitMiB < 0 ? WorkerPool::defaultMemoryLimitMiB(1) : options.memoryLimitMiB;
    const int status = WorkerEngine::runThumbnailer(options.thumbnailerSource, options.thumbnailerOutput,
        options.thumbnailerSize, options.timeoutSeconds, memoryLimitMiB, options.verbose);
    return status == 0 ? 0 : 1;
}

} // namespace

int runCommandLine(const QStringList &arguments, const QString &executable, const QString &version)
{
    // Messages in the language the environment asks for, whatever the locale for numbers. A worker
    // says nothing to the user and starts faster without the table.
    if (arguments.value(0) != QStringView(WorkerArgument))
        useTextLanguageOf(messageLocaleFromEnvironment());
    const CommandLineOptions options = parseCommandLine(arguments);
    if (!options.error.isEmpty()) {
        writeText(stderr,
            u"orvel-thumbs: %1\n%2\n"_s.arg(
                options.error, localizedText(QStringLiteral("Try 'orvel-thumbs --help' for more."))));
        return 2;
    }
    switch (options.mode) {
    case CommandLineOptions::Mode::Help:
        writeText(stdout, usageText());
        return 0;
    case CommandLineOptions::Mode::Version:
        writeText(stdout, u"orvel-thumbs %1\n"_s.arg(version));
        return 0;
    case CommandLineOptions::Mode::Defaults: {
        QString output;
        QString errors;
        const int status
            = DefaultsCommand::run(options.defaultsArguments, UserDefaults::standard(), &output, &errors);
        writeText(stdout, output);
        writeText(stderr, errors);
        return status;
    }
    case CommandLineOptions::Mode::Worker:
        return WorkerEngine::runWorker(arguments);
    case CommandLineOptions::Mode::Thumbnailer:
        return runThumbnailer(options);
    case CommandLineOptions::Mode::Run:
        break;
    }

    // Without the engine no worker can make a thumbnail: one line says so, not one per file.
    const QString folder = QFileInfo(executable).absolutePath();
    if (WorkerEngine::locate(folder).isEmpty()) {
        writeText(stderr,
            u"orvel-thumbs: "_s
                + localizedText(QStringLiteral("the thumbnail engine %1 is missing beside %2"))
                      .arg(QLatin1StringView(WorkerEngine::FileName), folder)
                + u'\n');
        return 1;
    }
    // A file in the output folder's place would fail every thumbnail alike: one line says so.
    if (const QFileInfo output(options.outputDir);
        !options.outputDir.isEmpty() && output.exists() && !output.isDir()) {
        writeText(stderr,
            u"orvel-thumbs: "_s
                + localizedText(QStringLiteral("the output folder %1 is a file")).arg(options.outputDir)
                + u'\n');
        return 2;
    }
    CommandLineOptions run = options;
    if (!run.filesFrom.isEmpty()) {
        QFile list(run.filesFrom);
        const bool opened
            = run.filesFrom == u"-" ? list.open(stdin, QIODevice::ReadOnly) : list.open(QIODevice::ReadOnly);
        if (!opened) {
            writeText(stderr,
                u"orvel-thumbs: %1\n"_s.arg(localizedText(QStringLiteral("cannot read %1: %2"))
                                                .arg(run.filesFrom, list.errorString())));
            return 2;
        }
        const QList<QByteArray> names = list.readAll().split(run.nullSeparated ? '\0' : '\n');
        for (const QByteArray &name : names) {
            if (!name.isEmpty())
                run.paths << QFile::decodeName(name);
        }
    }
    setLogToStandardError(options.verbose);
    routeToolkitQtMessages();
    UserDefaults &defaults = UserDefaults::standard();
    defaults.setArgumentDomain(options.settings);
    BatchRun batch(run, executable, defaults);
    return batch.run();
}

} // namespace orvel
