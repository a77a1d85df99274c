// Movie: the movie type list (extensions and quoted HFS type codes) and classification by it.
#include "movie/FFmpeg_p.h"
#include "movie/Movie.h"

#include "files/FinderInfo.h"
#include "strings/FastCompare.h"

#include <QSet>

#include <algorithm>
#include <array>
#include <cstring>

namespace orvel {

using namespace movie_detail;

namespace {

// Demuxers for text files (subtitles, text art) and raw dumps: they list common suffixes such as
// ".txt", ".sub", ".dat" or ".v" whose files have no picture and mostly are something else.
constexpr std::array kLeftOutDemuxers { "tty", "mpl2", "vplayer", "subviewer", "subviewer1", "mpsub",
    "webvtt", "realtext", "pjs", "aqtitle", "scc", "stl", "vobsub", "sup", "luodat", "nc", "jacosub", "lrc",
    "microdvd", "sami", "srt", "ass" };

struct SniffingDemuxer
{
    const char *name;
    const char *extensions;
};

// Demuxers that recognise their files by content and list no suffixes of their own; their usual
// suffixes count as soon as the demuxer is there.
constexpr std::array<SniffingDemuxer, 7> kSniffingDemuxers { {
    { "asf", "asf,wmv,wma" },
    { "mpegts", "ts,mts,m2ts" },
    { "mpeg", "mpg,mpeg,vob" },
    { "ogg", "ogv,oga,opus" },
    { "wav", "wav" },
    { "rm", "rm,rmvb" },
    { "mxf", "mxf" },
} };

// The classic movie extensions and HFS type codes, appended in this order to the list of the
// installed demuxers. "MQV" and "mqv" both stand in it, and the type codes differ by case.
constexpr std::array<const char *, 113> kClassicTypes { "'MPG '", "mpg", "mpeg", "m4a", "mp4", "mp3", "m3u",
    "m4p", "avi", "swf", "flv", "f4v", "qt", "mid", "midi", "au", "wav", "aif", "aiff", "3gp", "3g2", "3gpp",
    "flc", "'VfW '", "m1s", "MQV", "'MPGA'", "'.WAV'", "'amr '", "m75", "'cdda'", "'qhtm'", "'mpg4'",
    "'rtsp'", "mqv", "'hmov'", "'grip'", "m1v", "m2v", "'DIVX'", "bwf", "'SMIL'", "'mxfd'", "pls", "qtpf",
    "cel", "'sdp '", "gsm", "dvd", "'sdv '", "mpa", "qht", "'PLAY'", "'SWFL'", "'3gp2'", "'attr'", "m15",
    "'MPG3'", "'M1V '", "amr", "adts", "aac", "sdp", "'MPGa'", "'FLI '", "atr", "skin", "'MPGx'", "dif",
    "smil", "'adts'", "m4b", "rtsp", "'3gpp'", "'SwaT'", "'amc '", "3gp2", "sdv", "'embd'", "m1a", "'caff'",
    "swa", "mpm", "sd2", "'dvc!'", "'MPG2'", "cdda", "'MP3 '", "'.SMI'", "'MPGV'", "smf", "'M1A '", "'GSM '",
    "vfw", "fli", "smi", "mpv", "dv", "caf", "m2a", "kar", "'Sd2f'", "mp2", "amc", "sml", "'MPEG'", "'DAVI'",
    "'AIFC'", "qtz", "qhtm", "'Midi'", "'MPGv'", "m4v" };

bool isLeftOut(const char *demuxer)
{
    return std::any_of(kLeftOutDemuxers.begin(), kLeftOutDemuxers.end(),
        [&](const char *name) { return std::strcmp(name, demuxer) == 0; });
}

void appendExtensions(QStringList *types, QSet<QString> *seen, const char *list)
{
    const QStringList parts = QString::fromLatin1(list).split(u',', Qt::SkipEmptyParts);
    for (const QString &part : parts) {
        const QString extension = part.trimmed();
        if (!extension.isEmpty() && !seen->contains(extension)) {
            seen->insert(extension);
            types->append(extension);
        }
    }
}

// Appends each string not already in the list (exact comparison), keeping the order.
void unionWithObjects(QStringList *types, QStringList strings)
{
    QSet<QString> present(types->begin(), types->end());
    for (QString &s : strings) {
        if (!present.contains(s)) {
            present.insert(s);
            types->append(std::move(s));
        }
    }
}

// The extension of the last path component; none for a name that starts with its only dot.
QString extensionOfPath(const QString &path)
{
    const QStringView name = QStringView(path).mid(path.lastIndexOf(u'/') + 1);
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot > 0 ? name.mid(dot + 1).toString() : QString();
}

} // namespace

QStringList Movie::movieFileTypes()
{
    QStringList types;
    if (!loadFFmpeg())
        return types;
    QSet<QString> seen;
    void *state = nullptr;
    while (const AVInputFormat *demuxer = ffmpeg().av_demuxer_iterate(&state)) {
        if (demuxer->extensions && !isLeftOut(demuxer->name))
            appendExtensions(&types, &seen, demuxer->extensions);
    }
    for (const SniffingDemuxer &sniffing : kSniffingDemuxers) {
        if (ffmpeg().av_find_input_format(sniffing.name))
            appendExtensions(&types, &seen, sniffing.extensions);
    }
    return types;
}

const QStringList &Movie::QuickTimeFileTypes()
{
    static const QStringList types = [] {
        QStringList list = movieFileTypes();
        QStringList classic;
        classic.reserve(qsizetype(kClassicTypes.size()));
        for (const char *type : kClassicTypes)
            classic.append(QString::fromLatin1(type));
        unionWithObjects(&list, classic);
        return list;
    }();
    return types;
}

bool Movie::isQuickTimeExtension(const QString &extension, const QString &type)
{
    // The classic strings are all in the list, and looking them up needs no FFmpeg: a batch of
    // them (or of files with neither extension nor type) answers without loading it.
    if (extension.isEmpty() && type.isEmpty())
        return false;
    if (std::any_of(kClassicTypes.begin(), kClassicTypes.end(), [&](const char *classic) {
            const QLatin1StringView string(classic);
            return (!extension.isEmpty() && isEqualToStringNoCase(QString(string), extension))
                || type == string;
        }))
        return true;
    const QStringList &types = QuickTimeFileTypes();
    if (types.isEmpty())
        return false;
    if (!extension.isEmpty() && std::any_of(types.cbegin(), types.cend(), [&](const QString &t) {
            return isEqualToStringNoCase(t, extension);
        }))
        return true;
    return !type.isEmpty() && types.contains(type, Qt::CaseSensitive);
}

bool Movie::isQuickTimeFile(const QString &path)
{
    if (path.isEmpty())
        return false;
    return isQuickTimeExtension(extensionOfPath(path), HFSTypeOfFile(path));
}

} // namespace orvel
