// IconService: writes and removes a file's entries in the freedesktop.org thumbnail cache.
#include "app/engine/IconService.h"

#include "files/FileManager.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageWriter>
#include <QTemporaryFile>

#include <array>
#include <cerrno>
#include <cstdio>
#include <sys/stat.h> // mkdir
#include <unistd.h>

namespace orvel {

namespace {

constexpr std::array<IconService::CacheSize, 4> AllSizes = { IconService::CacheSize::XXLarge,
    IconService::CacheSize::XLarge, IconService::CacheSize::Large, IconService::CacheSize::Normal };

QString folderName(IconService::CacheSize size)
{
    switch (size) {
    case IconService::CacheSize::Normal:
        return QStringLiteral("normal");
    case IconService::CacheSize::Large:
        return QStringLiteral("large");
    case IconService::CacheSize::XLarge:
        return QStringLiteral("x-large");
    case IconService::CacheSize::XXLarge:
        return QStringLiteral("xx-large");
    }
    return {};
}

// The cache lives under $XDG_CACHE_HOME; a relative value is invalid and ignored, as the base
// directory rules say. Read on every call so that a change of the environment takes effect.
QString thumbnailRoot()
{
    QString base = qEnvironmentVariable("XDG_CACHE_HOME");
    if (base.isEmpty() || !QDir::isAbsolutePath(base))
        base = QDir::homePath() + QStringLiteral("/.cache");
    return QDir::cleanPath(base) + QStringLiteral("/thumbnails");
}

QString absolutePath(const QString &path)
{
    if (path.isEmpty())
        return {};
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

// Creates every missing folder on the way to dir, each with mode 0700 (the cache holds previews of
// private files, so its folders are the owner's alone). Existing folders are left as they are.
bool makePrivateFolders(const QString &dir)
{
    bool isDirectory = false;
    if (FileManager::fileExistsAtPath(dir, &isDirectory))
        return isDirectory;
    const qsizetype slash = dir.lastIndexOf(u'/');
    if (slash > 0 && !makePrivateFolders(dir.left(slash)))
        return false;
    if (::mkdir(QFile::encodeName(dir).constData(), 0700) != 0 && errno != EEXIST)
        return false;
    return FileManager::fileExistsAtPath(dir, &isDirectory) && isDirectory;
}

struct EntryTexts
{
    QString uri;
    QString mtime;
    QString size;
};

// Writes one cache entry complete or not at all: the PNG goes to a temporary file (mode 0600) in the
// entry's own folder and is renamed over the entry only once fully written.
bool writeEntry(const QImage &image, const QString &target, const EntryTexts &texts)
{
    const QFileInfo info(target);
    QTemporaryFile tmp(info.absolutePath() + u'/' + info.fileName() + QStringLiteral(".XXXXXX"));
    tmp.setAutoRemove(true);
    if (!tmp.open())
        return false;
    if (!tmp.setPermissions(QFile::ReadOwner | QFile::WriteOwner))
        return false;

    // The texts go on the image, not through QImageWriter::setText, which turns the colons of the
    // standard's keys ("Thumb::URI") into spaces.
    QImage tagged = image;
    tagged.setText(QStringLiteral("Thumb::URI"), texts.uri);
    tagged.setText(QStringLiteral("Thumb::MTime"), texts.mtime);
    tagged.setText(QStringLiteral("Thumb::Size"), texts.size);
    tagged.setText(QStringLiteral("Software"), QStringLiteral("Orvel Thumbnails"));
    QImageWriter writer(&tmp, "png");
    if (!writer.write(tagged) || !tmp.flush() || tmp.error() != QFileDevice::NoError)
        return false;

    const QByteArray from = QFile::encodeName(tmp.fileName());
    tmp.close();
    if (::rename(from.constData(), QFile::encodeName(target).constData()) != 0)
        return false;
    tmp.setAutoRemove(false);
    return true;
}

// The size that fits source into a box×box square keeping the aspect ratio; never larger than source.
QSize fittedSize(QSize source, int box)
{
    const int longest = std::max(source.width(), source.height());
    if (longest <= box)
        return source;
    const double factor = double(box) / longest;
    return { std::max(1, int(source.width() * factor + 0.5)),
        std::max(1, int(source.height() * factor + 0.5)) };
}

} // namespace

QString IconService::uriForFile(const QString &path)
{
    const QString abs = absolutePath(path);
    if (abs.isEmpty())
        return {};
    // Unreserved characters and the ones a path may carry stay as they are, every other byte of the
    // file name (spaces, '#', '%', '?', UTF-8 sequences...) is escaped, as file managers key their entries.
    const QByteArray escaped = QFile::encodeName(abs).toPercentEncoding("/!*'()&=:@+$,");
    return QStringLiteral("file://") + QString::fromLatin1(escaped);
}

QString IconService::cachePathForFile(const QString &path, CacheSize size)
{
    const QString uri = uriForFile(path);
    if (uri.isEmpty())
        return {};
    const QByteArray md5 = QCryptographicHash::hash(uri.toLatin1(), QCryptographicHash::Md5).toHex();
    return thumbnailRoot() + u'/' + folderName(size) + u'/' + QString::fromLatin1(md5)
        + QStringLiteral(".png");
}

bool IconService::setIconForFile(const QImage &image, const QString &path, int options)
{
    Q_UNUSED(options) // the caller's interface passes icon-creation flags; the cache has no use for them
    if (image.isNull() || image.width() <= 0 || image.height() <= 0)
        return false;
    const QString abs = absolutePath(path);
    if (abs.isEmpty())
        return false;
    const QFileInfo source(abs);
    if (!source.exists())
        return false;

    // Thumb::Image::Width and Height are left out: they describe the source document, and the image
    // given here is a derived square icon, not the source.
    const EntryTexts texts { uriForFile(abs), QString::number(source.lastModified().toSecsSinceEpoch()),
        QString::number(source.size()) };

    // Largest size first, each smaller entry scaled from the one before it: far cheaper than scaling
    // the full picture four times. Alpha formats are scaled premultiplied, so edges keep no fringe.
    bool allWritten = true;
    QImage current = image;
    for (CacheSize size : AllSizes) {
        const QSize target = fittedSize(image.size(), int(size));
        if (current.size() != target)
            current = current.scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        const QImage out = current.convertToFormat(
            current.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
        const QString entry = cachePathForFile(abs, size);
        const bool written = !out.isNull() && makePrivateFolders(QFileInfo(entry).absolutePath())
            && writeEntry(out, entry, texts);
        if (!written) {
            // An older entry at this size could still carry the same modification time (the caller
            // keeps the source's date) and would go on showing the previous icon.
            QFile::remove(entry);
            allWritten = false;
        }
    }
    return allWritten;
}

bool IconService::removeIconOfFile(const QString &path)
{
    if (absolutePath(path).isEmpty())
        return false;
    bool noneLeft = true;
    for (CacheSize size : AllSizes) {
        const QString entry = cachePathForFile(path, size);
        // Nothing there is as good as removed; anything else that fails leaves the entry in doubt.
        if (::unlink(QFile::encodeName(entry).constData()) != 0 && errno != ENOENT && errno != ENOTDIR)
            noneLeft = false;
    }
    return noneLeft;
}

} // namespace orvel
