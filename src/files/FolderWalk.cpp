// FolderWalk: resolves a dropped path and walks folders depth-first, handing each file to a visitor.
#include "files/FolderWalk.h"

#include "files/FileManager.h"
#include "files/LinkResolution.h"

#include <QFile>
#include <QStringList>

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace orvel {

FolderWalk::Visitor::~Visitor() = default;

void FolderWalk::Visitor::failed(const QString &, const QString &) { }

bool FolderWalk::Visitor::unreadableFolder(const QString &, const QString &) { return true; }

void FolderWalk::Visitor::willExamine(const QString &) { }

void FolderWalk::Visitor::willListFolder(const QString &) { }

namespace {

/// The system's text for an errno value, starting in lower case like the other reasons.
QString errorText(int error)
{
    QString text = QString::fromLocal8Bit(std::strerror(error));
    if (!text.isEmpty())
        text[0] = text[0].toLower();
    return text;
}

/// Why nothing usable is at resolved, the resolution of path.
QString missingReason(const QString &path, const QString &resolved)
{
    const QByteArray linkName = QFile::encodeName(path);
    struct stat st;
    if (::lstat(linkName.constData(), &st) == 0 && S_ISLNK(st.st_mode)) {
        if (::stat(linkName.constData(), &st) != 0 && errno == ELOOP)
            return QStringLiteral("link loop: its links lead round in a circle");
        QByteArray target(4096, '\0');
        ssize_t n = ::readlink(linkName.constData(), target.data(), size_t(target.size()));
        if (n >= 0)
            return QStringLiteral("broken link to %1").arg(QFile::decodeName(target.left(n)));
        return QStringLiteral("broken link");
    }
    if (::stat(QFile::encodeName(resolved).constData(), &st) == 0)
        return QStringLiteral("no such file or folder"); // vanished while we looked
    if (errno == ENOENT || errno == ENOTDIR)
        return QStringLiteral("no such file or folder");
    return errorText(errno);
}

/// Answers whether the folder can be opened for listing; error receives why not.
bool canListFolder(const QString &path, QString *error)
{
    DIR *dir = ::opendir(QFile::encodeName(path).constData());
    if (!dir) {
        *error = QStringLiteral("cannot read folder: %1").arg(errorText(errno));
        return false;
    }
    ::closedir(dir);
    return true;
}

class Walk
{
public:
    Walk(FolderWalk::Visitor &visitor, int maxDepth)
        : m_visitor(visitor)
        , m_maxDepth(maxDepth)
    {
    }

    bool processPath(const QString &path);

private:
    bool processEntry(const QString &path, FolderWalk::Found found);
    struct Ancestor
    {
        FileIdentity identity;
        QString path;
    };

    bool processFolder(const QString &path, const QString &folder);

    FolderWalk::Visitor &m_visitor;
    // The folders on the way from the walked path down to the current one.
    std::vector<Ancestor> m_ancestors;
    // How many folder levels below a named path are walked; negative for all.
    int m_maxDepth = -1;
};

bool Walk::processPath(const QString &path) { return processEntry(path, FolderWalk::Found::Named); }

bool Walk::processEntry(const QString &path, FolderWalk::Found found)
{
    m_visitor.willExamine(path);
    const QString resolved = path.isEmpty() ? QString() : stringByResolvingLinkOfPath(path);
    if (resolved.isEmpty()) {
        m_visitor.failed(path, QStringLiteral("no such file or folder"));
        return false;
    }
    bool isDirectory = false;
    if (!FileManager::fileExistsAtPath(resolved, &isDirectory)) {
        m_visitor.failed(path, missingReason(path, resolved));
        return false;
    }
    if (!isDirectory)
        return m_visitor.processFile(resolved, found);
    return processFolder(path, resolved);
}

bool Walk::processFolder(const QString &path, const QString &folder)
{
    // Folders are told apart by device and inode, so a link, a bind mount or a second spelling
    // of an ancestor is recognised as well as the ancestor's own path.
    const std::optional<FileIdentity> identity = FileManager::fileIdentityAtPath(folder);
    if (!identity) {
        m_visitor.failed(path, missingReason(path, folder));
        return false;
    }
    for (const Ancestor &ancestor : m_ancestors) {
        if (ancestor.identity == *identity) {
            m_visitor.failed(
                path, QStringLiteral("link loop: leads back to %1, which contains it").arg(ancestor.path));
            return false;
        }
    }

    // The entries of this folder would lie deeper than the walk may go.
    if (m_maxDepth >= 0 && qsizetype(m_ancestors.size()) >= m_maxDepth)
        return true;
    m_ancestors.push_back({ *identity, folder });
    m_visitor.willListFolder(folder);
    const QStringList entries = FileManager::directoryContentsAtPath(folder, true);
    bool result = true;
    QString reason;
    if (entries.isEmpty() && !canListFolder(folder, &reason))
        result = m_visitor.unreadableFolder(folder, reason);
    for (const QString &entry : entries) {
        // Every entry is walked, even after a NO.
        const bool ok = processEntry(entry, FolderWalk::Found::InFolder);
        result = result && ok;
    }
    m_ancestors.pop_back();
    return result;
}

} // namespace

bool FolderWalk::processPath(const QString &path, Visitor &visitor, int maxDepth)
{
    Walk walk(visitor, maxDepth);
    return walk.processPath(path);
}

} // namespace orvel
