// Not API: the property, address and metadata names as shared strings, shared by the module's files.
#pragma once

#include <QString>
#include <QStringView>

namespace orvel {

/// The name as a QString. When the view is one of the module's name constants the string shares
/// the constant's static text and nothing is allocated (a card sets a dozen names, an index run
/// reads thousands of cards); any other view is copied.
QString nameString(QStringView name);

} // namespace orvel
