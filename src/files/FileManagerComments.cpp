// Comments in the extended attribute "user.xdg.comment" and labels in the Finder info, written at
// once or gathered and written in batches on the event loop.
#include "files/ExtendedAttributes_p.h"
#include "files/FileManager.h"
#include "files/FileManager_p.h"

#include <QMap>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

constexpr char CommentAttributeName[] = "user.xdg.comment";
// Longer values are not comments anyone typed; they are not read.
constexpr qsizetype MaxCommentSize = 64 * 1024;
constexpr int BatchDelayMs = 200;
constexpr int CommentsPerBatch = 25;
constexpr int LabelsPerBatch = 10;

/// The requests waiting for their batch, and the timers that run the batches. Process-wide, made
/// on first use on the main thread and never freed.
struct PendingFinderWork
{
    QMap<QString, QString> fileComments;
    QMap<QString, QString> folderComments;
    QMap<QString, int> labels;
    QTimer fileTimer;
    QTimer folderTimer;
    QTimer labelTimer;

    PendingFinderWork()
    {
        for (QTimer *timer : { &fileTimer, &folderTimer, &labelTimer }) {
            timer->setSingleShot(true);
            timer->setInterval(BatchDelayMs);
        }
        QObject::connect(&fileTimer, &QTimer::timeout, [] { FileManager::setFileComments(); });
        QObject::connect(&folderTimer, &QTimer::timeout, [] { FileManager::setContainerComments(); });
        QObject::connect(&labelTimer, &QTimer::timeout, [] { FileManager::setFinderLabels(); });
    }
};

PendingFinderWork &pending()
{
    static auto *work = new PendingFinderWork;
    return *work;
}

/// Writes up to limit entries of queue (in key order) with write, removing them; when entries
/// remain, starts timer again.
template <typename Value, typename Write>
void runBatch(QMap<QString, Value> &queue, QTimer &timer, int limit, Write write)
{
    for (int done = 0; done < limit && !queue.isEmpty(); ++done) {
        const auto first = queue.constBegin();
        const QString path = first.key();
        const Value value = first.value();
        queue.erase(first);
        write(value, path);
    }
    if (!queue.isEmpty())
        timer.start();
}

} // namespace

QString FileManager::finderComment(const QString &path, bool useScript)
{
    Q_UNUSED(useScript);
    QByteArray native;
    if (!detail::nativePath(path, &native))
        return QString();
    const std::optional<QByteArray> value
        = detail::readExtendedAttribute(native, CommentAttributeName, MaxCommentSize);
    if (!value || value->isNull())
        return QString();
    return QString::fromUtf8(*value);
}

bool FileManager::setFinderComment(const QString &comment, const QString &path)
{
    QByteArray native;
    if (!detail::nativePath(path, &native) || !fileExistsAtPath(path))
        return false;
    if (comment.isEmpty())
        return detail::removeExtendedAttribute(native, CommentAttributeName);
    return detail::writeExtendedAttribute(native, CommentAttributeName, comment.toUtf8())
        == detail::AttributeWrite::Written;
}

bool FileManager::setFinderComment(const QString &comment, const QString &path, bool asynchronous)
{
    if (!asynchronous)
        return setFinderComment(comment, path);
    bool isDirectory = false;
    if (path.isEmpty() || !fileExistsAtPath(path, &isDirectory))
        return false;
    PendingFinderWork &work = pending();
    // Each new request moves the batch 0.2 s further on, so that a burst is written as one.
    if (isDirectory) {
        work.folderComments.insert(path, comment);
        work.folderTimer.start();
    } else {
        work.fileComments.insert(path, comment);
        work.fileTimer.start();
    }
    return true;
}

void FileManager::setFileComments()
{
    PendingFinderWork &work = pending();
    runBatch(work.fileComments, work.fileTimer, CommentsPerBatch,
        [](const QString &comment, const QString &path) { setFinderComment(comment, path); });
}

void FileManager::setContainerComments()
{
    PendingFinderWork &work = pending();
    runBatch(work.folderComments, work.folderTimer, CommentsPerBatch,
        [](const QString &comment, const QString &path) { setFinderComment(comment, path); });
}

int FileManager::finderLabel(const QString &path)
{
    return (finderFlagsOfFile(path) & FinderFlag::Color) >> 1;
}

bool FileManager::setFinderLabel(int label, const QString &path)
{
    if (label < 0 || label > 7 || path.isEmpty() || !fileExistsAtPath(path))
        return false;
    const quint16 flags = finderFlagsOfFile(path);
    return setFinderFlagsOfFile(path, quint16((flags & ~FinderFlag::Color) | (label << 1)));
}

bool FileManager::setFinderLabel(int label, const QString &path, bool asynchronous)
{
    if (!asynchronous)
        return setFinderLabel(label, path);
    if (label < 0 || label > 7 || path.isEmpty() || !fileExistsAtPath(path))
        return false;
    PendingFinderWork &work = pending();
    work.labels.insert(path, label);
    work.labelTimer.start();
    return true;
}

void FileManager::setFinderLabels()
{
    PendingFinderWork &work = pending();
    runBatch(work.labels, work.labelTimer, LabelsPerBatch,
        [](int label, const QString &path) { setFinderLabel(label, path); });
}

qsizetype FileManager::pendingFinderRequests()
{
    const PendingFinderWork &work = pending();
    return work.fileComments.size() + work.folderComments.size() + work.labels.size();
}

} // namespace orvel
