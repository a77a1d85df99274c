// Failure: the one way the toolkit answers NO and says why.
#pragma once

#include <QString>

namespace orvel {

/// Gives text to the caller as the reason of a failure when it asked for one (error is not null),
/// and answers the failure value of Result: false, null, nullopt or empty. So every "answer NO
/// and say why" is one line: `return failure(error, u"no data"_s);` answers false,
/// `return failure<ImagePtr>(error, why);` a null image.
template <typename Result = bool> [[nodiscard]] Result failure(QString *error, const QString &text)
{
    if (error)
        *error = text;
    return Result {};
}

} // namespace orvel
