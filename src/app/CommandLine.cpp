// CommandLine: the arguments of orvel-thumbs, their parsing into options, and the batch run.
#include "app/CommandLine.h"

#include "app/DefaultsCommand.h"
#include "app/FolderWalk.h"
#include "app/Progress.h"
#include "app/ThumbnailSettings.h"
#include "app/WorkerEngine.h"
#include "app/WorkerPool.h"
#include "support/Log.h"
#include "support/UserDefaults.h"

#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QRegularExpression>
#include <QThread>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <deque>
#include <optional>
#include <sys/stat.h>

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
    return names.join(QStringLiteral(", "));
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
    return QStringLiteral("invalid value '%1' for %2 (expected %3)").arg(value, option, expected);
}

enum class Takes { Nothing, Value };

struct KnownOption
{
    const char16_t *longName;
    char16_t shortName;
    Takes takes;
    bool workerOnly;
};

constexpr KnownOption Options[] = {
    { u"help", u'h', Takes::Nothing, false },
    { u"version", 0, Takes::Nothing, false },
    { u"quiet", 0, Takes::Nothing, false },
    { u"verbose", 0, Takes::Nothing, false },
    { u"set", 0, Takes::Value, false },
    { u"set-string", 0, Takes::Value, false },
    { u"format", u'f', Takes::Value, false },
    { u"size", u's', Takes::Value, false },
    { u"scale", 0, Takes::Value, false },
    { u"quality", u'q', Takes::Value, false },
    { u"interpolation", 0, Takes::Value, false },
    { u"suffix", 0, Takes::Value, false },
    { u"prefix", 0, Takes::Value, false },
    { u"folder", 0, Takes::Value, false },
    { u"create", 0, Takes::Value, false },
    { u"sharpen", 0, Takes::Value, false },
    { u"jobs", u'j', Takes::Value, false },
    { u"timeout", 0, Takes::Value, false },
    { u"memory-limit", 0, Takes::Value, false },
    { u"worker-threads", 0, Takes::Value, true },
};

const KnownOption *findOption(QStringView name, bool isShort, bool worker)
{
    for (const KnownOption &known : Options) {
        if (known.workerOnly && !worker)
            continue;
        if (isShort ? (known.shortName != 0 && name.size() == 1 && name.at(0) == QChar(known.shortName))
                    : name == QStringView(known.longName))
            return &known;
    }
    return nullptr;
}

/// Applies one option with its value; answers a usage error or an empty string.
QString applyOption(const QString &name, const QString &value, CommandLineOptions &o)
{
    const QString option = QStringLiteral("--") + name;
    QVariantMap &s = o.settings;
    if (name == u"quiet") {
        o.quiet = true;
    } else if (name == u"verbose") {
        o.verbose = true;
    } else if (name == u"set" || name == u"set-string") {
        const qsizetype eq = value.indexOf(u'=');
        if (eq <= 0)
            return QStringLiteral("%1 needs KEY=VALUE, not '%2'").arg(option, value);
        const QString key = value.left(eq);
        if (!knownSettingKeys().contains(key)) {
            return QStringLiteral("unknown setting '%1' (the settings are %2)")
                .arg(key, knownSettingKeys().join(QStringLiteral(", ")));
        }
        const QString text = value.mid(eq + 1);
        s.insert(key, name == u"set" ? typedSettingValue(text) : QVariant(text));
    } else if (name == u"format") {
        const auto code = choose(FormatChoices, value);
        if (!code)
            return invalidValue(option, value, choiceList(FormatChoices));
        s.insert(QStringLiteral("filetype"), *code);
    } else if (name == u"size") {
        static const QRegularExpression box(QStringLiteral("^(\\d+)(?:[xX](\\d+))?$"));
        const QRegularExpressionMatch m = box.match(value);
        const auto w = m.hasMatch() ? wholeNumber(m.captured(1), 1, 1000000) : std::nullopt;
        const auto h = m.hasMatch()
            ? wholeNumber(m.hasCaptured(2) ? m.captured(2) : m.captured(1), 1, 1000000)
            : std::nullopt;
        if (!w || !h)
            return invalidValue(option, value, QStringLiteral("WIDTHxHEIGHT or SIZE in pixels"));
        s.insert(QStringLiteral("width"), *w);
        s.insert(QStringLiteral("height"), *h);
        s.insert(QStringLiteral("sizing"), qint64(0));
    } else if (name == u"scale") {
        const auto percent = decimalNumber(value, 0, 100);
        if (!percent || *percent <= 0)
            return invalidValue(option, value, QStringLiteral("a percentage above 0, at most 100"));
        s.insert(QStringLiteral("sizing"), qint64(1));
        s.insert(QStringLiteral("scale"), *percent / 100.0);
    } else if (name == u"quality") {
        const auto percent = decimalNumber(value, 0, 100);
        if (!percent)
            return invalidValue(option, value, QStringLiteral("0 to 100"));
        s.insert(QStringLiteral("quality"), *percent / 100.0);
    } else if (name == u"interpolation") {
        const auto code = choose(InterpolationChoices, value);
        if (!code)
            return invalidValue(option, value, choiceList(InterpolationChoices));
        s.insert(QStringLiteral("Antialiasing"), *code);
    } else if (name == u"suffix" || name == u"prefix" || name == u"folder") {
        s.insert(QStringLiteral("extensionFormat"),
            qint64(name == u"suffix"    ? 1
                    : name == u"prefix" ? 0
                                        : 2));
        s.insert(QStringLiteral("extension"), value);
    } else if (name == u"create") {
        const auto code = choose(CreateChoices, value);
        if (!code)
            return invalidValue(option, value, choiceList(CreateChoices));
        s.insert(QStringLiteral("create"), *code);
    } else if (name == u"sharpen") {
        const auto code = choose(SharpenChoices, value);
        if (!code)
            return invalidValue(option, value, choiceList(SharpenChoices));
        s.insert(QStringLiteral("sharpen"), *code);
    } else if (name == u"jobs") {
        const auto jobs = wholeNumber(value, 1, MaxJobs);
        if (!jobs)
            return invalidValue(option, value, QStringLiteral("1 to %1").arg(MaxJobs));
        o.jobs = int(*jobs);
    } else if (name == u"timeout") {
        const auto seconds = wholeNumber(value, 0, 1000000);
        if (!seconds)
            return invalidValue(option, value, QStringLiteral("whole seconds, 0 for no limit"));
        o.timeoutSeconds = int(*seconds);
    } else if (name == u"memory-limit") {
        const auto mebibytes = wholeNumber(value, 0, qint64(1) << 40);
        if (!mebibytes)
            return invalidValue(option, value, QStringLiteral("whole MiB, 0 for no limit"));
        o.memoryLimitMiB = *mebibytes;
    } else if (name == u"worker-threads") {
        const auto threads = wholeNumber(value, 1, 4096);
        if (!threads)
            return invalidValue(option, value, QStringLiteral("1 or more"));
        o.workerThreads = int(*threads);
    }
    return {};
}

void writeText(FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}

/// One batch: walks the paths, hands the files to the pool, reports in walk order.
class Batch : public FolderWalk::Visitor
{
public:
    Batch(const CommandLineOptions &options, const QString &executable, UserDefaults &defaults);

    int run();

    bool processFile(const QString &path) override;
    void failed(const QString &path, const QString &reason) override;
    bool unreadableFolder(const QString &path, const QString &reason) override;
    void willExamine(const QString &path) override { m_pool.waitForChangesAt(path); }
    void willListFolder(const QString &path) override { m_pool.waitForOutputsInside(path); }

private:
    struct Entry
    {
        QString path;
        QString output;
        bool done = false;
        bool ok = false;
        QString reason;
        bool started = false;
    };

    qint64 add(const QString &path, const QString &output, bool started);
    void complete(qint64 tag, bool ok, const QString &reason);
    void report(const Entry &entry);

    const CommandLineOptions &m_options;
    UserDefaults &m_defaults;
    Progress m_progress;
    // Results wait here until every earlier one is in, so they are reported in walk order
    // whatever order the workers finish in.
    std::deque<Entry> m_entries;
    qint64 m_firstTag = 0;
    qint64 m_thumbnails = 0;
    qint64 m_icons = 0;
    qint64 m_failed = 0;
    WorkerPool m_pool;
};

WorkerPool::Options poolOptions(const CommandLineOptions &options, const QString &executable)
{
    WorkerPool::Options pool;
    pool.executable = executable;
    pool.workers = options.jobs > 0 ? options.jobs : defaultJobCount();
    pool.timeoutSeconds = options.timeoutSeconds;
    const qint64 memory = options.memoryLimitMiB >= 0 ? options.memoryLimitMiB
                                                      : WorkerPool::defaultMemoryLimitMiB(pool.workers);
    pool.workerArguments = settingArguments(options.settings);
    pool.workerArguments << QStringLiteral("--worker-threads")
                         << QString::number(std::max(1, defaultJobCount() / pool.workers));
    pool.workerArguments << QStringLiteral("--memory-limit") << QString::number(memory);
    if (options.verbose)
        pool.workerArguments << QStringLiteral("--verbose");
    return pool;
}

Batch::Batch(const CommandLineOptions &options, const QString &executable, UserDefaults &defaults)
    : m_options(options)
    , m_defaults(defaults)
    , m_progress(!options.quiet)
    , m_pool(poolOptions(options, executable),
          [this](const WorkerPool::Result &result) { complete(result.tag, result.ok, result.reason); })
{
}

int Batch::run()
{
    bool ok = true;
    for (const QString &argument : m_options.paths) {
        const QString path = argument.isEmpty() ? argument : QFileInfo(argument).absoluteFilePath();
        ok = FolderWalk::processPath(path, *this) && ok;
    }
    m_pool.waitForAll();
    m_progress.finish();
    if (!m_options.quiet)
        writeText(stderr,
            Progress::formatSummary(m_thumbnails, m_icons, m_failed, m_progress.elapsedSeconds()) + u'\n');
    return ok && m_failed == 0 ? 0 : 1;
}

bool Batch::processFile(const QString &path)
{
    // A pipe or a device would block the decoder reading it until the time limit.
    struct stat st;
    if (::stat(QFile::encodeName(path).constData(), &st) == 0 && !S_ISREG(st.st_mode)) {
        failed(path, QStringLiteral("not a regular file"));
        return false;
    }
    const QString output = ThumbnailSettings::read(m_defaults).thumbnailPathFor(path);
    const qint64 tag = add(path, output, true);
    m_progress.fileStarted(path);
    m_pool.submit(tag, path, output);
    // The answer arrives later; run() counts it.
    return true;
}

void Batch::failed(const QString &path, const QString &reason)
{
    complete(add(path, {}, false), false, reason);
}

bool Batch::unreadableFolder(const QString &path, const QString &reason)
{
    // Whatever is in a folder we cannot read gets no thumbnail; the user should know.
    failed(path, reason);
    return false;
}

qint64 Batch::add(const QString &path, const QString &output, bool started)
{
    m_entries.push_back({ path, output, false, false, QString(), started });
    return m_firstTag + qint64(m_entries.size()) - 1;
}

void Batch::complete(qint64 tag, bool ok, const QString &reason)
{
    Entry &entry = m_entries.at(size_t(tag - m_firstTag));
    entry.done = true;
    entry.ok = ok;
    entry.reason = reason;
    while (!m_entries.empty() && m_entries.front().done) {
        report(m_entries.front());
        m_entries.pop_front();
        ++m_firstTag;
    }
}

void Batch::report(const Entry &entry)
{
    if (!entry.ok) {
        ++m_failed;
        m_progress.printLine(stderr, QStringLiteral("%1: %2").arg(entry.path, entry.reason));
    } else if (entry.output.isEmpty()) {
        ++m_icons;
    } else {
        ++m_thumbnails;
        if (m_options.verbose)
            m_progress.printLine(stdout, entry.output);
    }
    if (entry.started)
        m_progress.fileFinished();
}

} // namespace

const QStringList &knownSettingKeys()
{
    static const QStringList keys
        = { QStringLiteral("filetype"), QStringLiteral("width"), QStringLiteral("height"),
              QStringLiteral("Antialiasing"), QStringLiteral("create"), QStringLiteral("sharpen"),
              QStringLiteral("extension"), QStringLiteral("sizing"), QStringLiteral("scale"),
              QStringLiteral("extensionFormat"), QStringLiteral("quality"), QStringLiteral("QuitWhenDone") };
    return keys;
}

QVariant typedSettingValue(const QString &text)
{
    static const QRegularExpression whole(QStringLiteral("^[+-]?\\d+$"));
    static const QRegularExpression decimal(QStringLiteral("^[+-]?(\\d+\\.?\\d*|\\.\\d+)([eE][+-]?\\d+)?$"));
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

QStringList settingArguments(const QVariantMap &settings)
{
    QStringList arguments;
    for (auto it = settings.cbegin(); it != settings.cend(); ++it) {
        const QVariant &value = it.value();
        QString text;
        switch (value.typeId()) {
        case QMetaType::Bool:
            text = value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
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
                text += QStringLiteral(".0");
            break;
        default:
            arguments << QStringLiteral("--set-string") << it.key() + u'=' + value.toString();
            continue;
        }
        arguments << QStringLiteral("--set") << it.key() + u'=' + text;
    }
    return arguments;
}

CommandLineOptions parseCommandLine(const QStringList &arguments)
{
    CommandLineOptions o;
    qsizetype i = 0;
    bool worker = false;
    if (!arguments.isEmpty() && arguments.first() == u"defaults") {
        o.mode = CommandLineOptions::Mode::Defaults;
        o.defaultsArguments = arguments.mid(1);
        return o;
    }
    if (!arguments.isEmpty() && arguments.first() == u"--worker") {
        worker = true;
        i = 1;
    }

    auto fail = [&o](const QString &error) {
        o.mode = CommandLineOptions::Mode::Run;
        o.error = error;
        return o;
    };

    bool optionsEnded = false;
    for (; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (optionsEnded || argument == u"-" || !argument.startsWith(u'-')) {
            o.paths << argument;
            continue;
        }
        if (argument == u"--") {
            optionsEnded = true;
            continue;
        }

        const bool isLong = argument.startsWith(QStringLiteral("--"));
        QString name;
        QString value;
        bool hasValue = false;
        const KnownOption *known = nullptr;
        if (isLong) {
            const qsizetype eq = argument.indexOf(u'=');
            name = argument.mid(2, eq < 0 ? -1 : eq - 2);
            if (eq >= 0) {
                value = argument.mid(eq + 1);
                hasValue = true;
            }
            known = findOption(name, false, worker);
        } else {
            known = findOption(QStringView(argument).mid(1, 1), true, worker);
            if (known && argument.size() > 2) {
                value = argument.mid(2);
                hasValue = true;
            }
        }
        if (!known)
            return fail(
                QStringLiteral("unknown option %1").arg(isLong ? QStringLiteral("--") + name : argument));
        name = QString::fromUtf16(known->longName);
        if (known->takes == Takes::Nothing && hasValue)
            return fail(QStringLiteral("%1 takes no value").arg(argument));
        if (known->takes == Takes::Value && !hasValue) {
            if (i + 1 >= arguments.size())
                return fail(QStringLiteral("%1 needs a value").arg(argument));
            value = arguments.at(++i);
        }

        if (name == u"help") {
            o.mode = CommandLineOptions::Mode::Help;
            return o;
        }
        if (name == u"version") {
            o.mode = CommandLineOptions::Mode::Version;
            return o;
        }
        const QString error = applyOption(name, value, o);
        if (!error.isEmpty())
            return fail(error);
    }

    if (worker) {
        if (!o.paths.isEmpty())
            return fail(QStringLiteral("a worker takes no paths"));
        o.mode = CommandLineOptions::Mode::Worker;
    } else if (o.paths.isEmpty()) {
        return fail(QStringLiteral("no PATH given"));
    }
    return o;
}

int defaultJobCount() { return std::clamp(QThread::idealThreadCount(), 1, MaxJobs); }

QString usageText()
{
    return QStringLiteral(
        "Usage: orvel-thumbs [OPTION]... PATH...\n"
        "       orvel-thumbs defaults read [KEY]\n"
        "       orvel-thumbs defaults write KEY [-int|-float|-bool|-string] VALUE\n"
        "       orvel-thumbs defaults delete KEY\n"
        "\n"
        "Makes a thumbnail of every image, PDF or PostScript document and movie in PATH (files, and\n"
        "folders searched through), with the stored settings; a movie gives the frame at half its\n"
        "length, at most 15 seconds in. Exits with 0 when every PATH was\n"
        "handled, 1 when something gave no thumbnail, 2 on a usage error.\n"
        "\n"
        "Settings for this run only (the stored settings are left as they are):\n"
        "  --set KEY=VALUE          set a setting: a whole number is stored as an integer, a\n"
        "                           decimal as a real, true/false as a boolean, else as text\n"
        "  --set-string KEY=VALUE   set a setting to a text, whatever it looks like\n"
        "  -f, --format FORMAT      tiff, bmp, gif, jpeg, png or jp2 (filetype)\n"
        "  -s, --size WxH | N       fit into a box of W by H (or N by N) pixels (width, height)\n"
        "      --scale PERCENT      scale to PERCENT of the original size (scale)\n"
        "  -q, --quality 0-100      compression quality (quality)\n"
        "      --interpolation MODE default, none, low or high (Antialiasing)\n"
        "      --suffix TEXT        name thumbnails NAME + TEXT (extension, extensionFormat)\n"
        "      --prefix TEXT        name thumbnails TEXT + NAME\n"
        "      --folder NAME        put thumbnails into a sub-folder NAME\n"
        "      --create WHAT        thumbnail, thumbnail+icon or icon (create)\n"
        "      --sharpen AMOUNT     none, light, medium or strong (sharpen)\n"
        "\n"
        "Running:\n"
        "  -j, --jobs N             files processed at once (default: one per processor core)\n"
        "      --timeout SECONDS    time limit per file (default 120, 0 for none)\n"
        "      --memory-limit MIB   memory limit of each worker process (default: three quarters\n"
        "                           of the machine's memory shared among the workers; 0 for none)\n"
        "      --quiet              no progress bar and no summary\n"
        "      --verbose            print every thumbnail written, and log messages (FFmpeg's too)\n"
        "  -h, --help               print this help\n"
        "      --version            print the version\n"
        "\n"
        "Settings keys: filetype, width, height, Antialiasing, create, sharpen, extension, sizing,\n"
        "scale, extensionFormat, quality, QuitWhenDone. They are stored in\n"
        "$XDG_CONFIG_HOME/orvel/thumbnails.conf; see 'orvel-thumbs defaults'. A file named\n"
        "'defaults' is given as ./defaults.\n");
}

int runCommandLine(const QStringList &arguments, const QString &executable, const QString &version)
{
    const CommandLineOptions options = parseCommandLine(arguments);
    if (!options.error.isEmpty()) {
        writeText(stderr,
            QStringLiteral("orvel-thumbs: %1\nTry 'orvel-thumbs --help' for more.\n").arg(options.error));
        return 2;
    }
    switch (options.mode) {
    case CommandLineOptions::Mode::Help:
        writeText(stdout, usageText());
        return 0;
    case CommandLineOptions::Mode::Version:
        writeText(stdout, QStringLiteral("orvel-thumbs %1\n").arg(version));
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
    case CommandLineOptions::Mode::Run:
        break;
    }

    // Without the engine no worker can make a thumbnail: one line says so, not one per file.
    if (WorkerEngine::locate(QFileInfo(executable).absolutePath()).isEmpty()) {
        writeText(stderr,
            QStringLiteral("orvel-thumbs: the thumbnail engine %1 is missing beside %2\n")
                .arg(QLatin1StringView(WorkerEngine::FileName), QFileInfo(executable).absolutePath()));
        return 1;
    }
    setLogToStandardError(options.verbose);
    routeToolkitQtMessages();
    UserDefaults &defaults = UserDefaults::standard();
    defaults.setArgumentDomain(options.settings);
    Batch batch(options, executable, defaults);
    return batch.run();
}

} // namespace orvel
