// FolderWalk: resolves a dropped path and walks folders depth-first, handing each file to a visitor.
#pragma once

#include <QString>

namespace orvel {

/// The walk over one dropped path: a link at its end is resolved, a file goes to the visitor, a
/// folder is listed and every entry is walked in listing order, depth-first, the answers ANDed.
class FolderWalk
{
public:
    /// How the walk came to a file: given it (a path named by the user, or a link to a file), or
    /// found it inside a folder it walks.
    enum class Found { Named, InFolder };

    /// What the walk asks of its caller. Only processFile() must be provided.
    class Visitor
    {
    public:
        virtual ~Visitor();

        /// Handles one file (its path already resolved) and answers YES or NO.
        virtual bool processFile(const QString &path, Found found) = 0;

        /// Told when the walk itself answers NO for path (as the walk was given it), with a
        /// one-line reason: nothing there, a broken link, a link loop.
        virtual void failed(const QString &path, const QString &reason);

        /// Told when a folder cannot be read. The walk answers what this answers for it: YES by
        /// default, as for an empty folder.
        virtual bool unreadableFolder(const QString &path, const QString &reason);

        /// Called at the start of every path the walk looks at, before its link is resolved or
        /// the file system is asked about it.
        virtual void willExamine(const QString &path);

        /// Called just before the folder at path (resolved) is listed.
        virtual void willListFolder(const QString &path);
    };

    /// Walks path. Answers NO when the path cannot be resolved or nothing is there, the answer of
    /// processFile() for a file, and for a folder the AND of the answers of all its entries
    /// (every entry is walked even after a NO; an empty folder answers YES).
    ///
    /// Unlike a plain recursion, the walk never enters a folder that is already on its own way
    /// down (a symbolic link to one of its ancestors): that entry answers NO with a reason.
    ///
    /// maxDepth, when not negative, is how deep the walk goes, as find's -maxdepth counts: 0 the
    /// path alone (a folder is not entered), 1 the entries of a named folder but not of its
    /// sub-folders, and so on; a folder left unwalked answers YES.
    static bool processPath(const QString &path, Visitor &visitor, int maxDepth = -1);
};

} // namespace orvel
