// The Help menu's own actions: the update check, the help book and the maker's pages.
#pragma once

#include <QtGlobal>

QT_BEGIN_NAMESPACE
class QMenu;
QT_END_NAMESPACE

namespace orvel {

class ApplicationDelegate;

/// Puts "Check for Updates…", the help book, the release notes, the maker's pages and "Send
/// Feedback…" at the top of menu (before what it holds, such as the About item), in the user's
/// language. "Check for Updates…" goes to the delegate's checkForUpdate(). Nothing happens when
/// menu is null.
void addHelpActions(QMenu *menu, ApplicationDelegate *delegate);

} // namespace orvel
