// The user's standard folders on Linux: the home, the XDG user folders and the XDG base folders.
#pragma once

#include <QString>
#include <QStringView>

namespace orvel {

// Every folder below but the temporary folder and homeDirectory() is looked up once, on first use,
// and kept for the life of the process (thread-safely; later changes of the environment are not
// seen). Folders come without a trailing "/"; the pathIn... functions append "/" and the name.
//
// How the folders of a Mac's user domain are found here:
//   desktop, downloads    XDG_DESKTOP_DIR, XDG_DOWNLOAD_DIR of $XDG_CONFIG_HOME/user-dirs.dirs, as
//                         xdg-user-dirs writes it; else ~/Desktop, ~/Downloads
//   library               $XDG_DATA_HOME, else ~/.local/share (see libraryDirectory())
//   preferences           $XDG_CONFIG_HOME, else ~/.config
//   caches                $XDG_CACHE_HOME, else ~/.cache
//   application support   $XDG_DATA_HOME, else ~/.local/share
// An XDG_* variable that is empty or not an absolute path is ignored, as the XDG base directory
// specification asks.

/// "/tmp", not looked up.
[[nodiscard]] QString temporaryDirectory();
/// The home folder ($HOME), read on every call.
[[nodiscard]] QString homeDirectory();
[[nodiscard]] QString pathInHomeDirectory(QStringView name);

[[nodiscard]] QString desktopDirectory();
[[nodiscard]] QString downloadsDirectory();

/// The folder that holds the user's data per application: $XDG_DATA_HOME (~/.local/share). Not its
/// parent ~/.local: a relocated XDG_DATA_HOME (/data/ann) has no meaningful parent, and ~/.local also
/// holds programs (bin/) and state that no application names as its library.
[[nodiscard]] QString libraryDirectory();
[[nodiscard]] QString pathInLibraryDirectory(QStringView name);
[[nodiscard]] QString preferencesDirectory();
[[nodiscard]] QString pathInPreferencesDirectory(QStringView name);
[[nodiscard]] QString cachesDirectory();
[[nodiscard]] QString pathInCachesDirectory(QStringView name);
[[nodiscard]] QString applicationSupportDirectory();
[[nodiscard]] QString pathInApplicationSupportDirectory(QStringView name);

/// The user's real home, also inside a Flatpak sandbox whose home was set to the application's own
/// folder: when the home holds "/.var/app/$FLATPAK_ID" (or "/.var/app/" without that variable), it is
/// cut before that text. Otherwise the home folder.
[[nodiscard]] QString userHomeDirectory();
[[nodiscard]] QString pathInUserHome(QStringView name);
/// A path in the real user's library, also inside a sandbox: $HOST_XDG_DATA_HOME (which Flatpak
/// passes on from the host) when it is absolute; else libraryDirectory() unless that lies in the
/// application's sandbox folder, in which case userHomeDirectory() + "/.local/share".
[[nodiscard]] QString pathInUserLibrary(QStringView name);

} // namespace orvel
