// Not API: helpers that the image module's classification and loading files share.
#pragma once

#include <QString>
#include <QStringView>

namespace orvel {

/// The extension of the path's last component (trailing slashes ignored): what follows its last
/// dot; empty when there is none, when the dot ends the name, or when the name starts with its only
/// dot (".bashrc" is a hidden name, not an extension).
QString pathExtensionOfPath(QStringView path);

} // namespace orvel
