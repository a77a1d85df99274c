// The application's own texts in the user's language.
#pragma once

#include "support/Bundle.h"

#include <QString>

namespace orvel {

/// english translated by the main bundle's default strings table (data/translations/Localizable_*.ts);
/// english itself when the table has no entry for it. Every text the application shows from its
/// code goes through here, so that the table test finds it.
[[nodiscard]] inline QString localizedText(const QString &english)
{
    return Bundle::mainBundle().localizedStringForKey(english, QString(), QString());
}

} // namespace orvel
