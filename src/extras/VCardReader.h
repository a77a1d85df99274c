// The vCard reader: versions 2.1, 3.0 and 4.0 as address books, phones and mail services export
// them, into person records.
#pragma once

#include "extras/Person.h"

#include <QByteArrayView>
#include <QList>

namespace orvel {

/// The reader's bounds; input beyond them is skipped, never held.
struct VCardLimits
{
    /// Person::initWithContentsOfFile reads no further into a file (a card is rarely above 1 MB;
    /// a larger one is read as far as this goes).
    static constexpr qsizetype MaxFileBytes = 16 * 1024 * 1024;
    /// One property, unfolded (an embedded picture of about 9 MB); a longer one is skipped.
    static constexpr qsizetype MaxPropertyBytes = 12 * 1024 * 1024;
    /// Properties read per card; the rest of the card is skipped.
    static constexpr qsizetype MaxPropertiesPerCard = 10000;
    /// Parameters read per property; the rest are ignored.
    static constexpr int MaxParameters = 32;
    /// Cards read from one input.
    static constexpr qsizetype MaxCards = 1000000;
};

/// The cards of vCard data in order, at most maxCards of them; an empty list when there is none.
/// A card cut short (no END:VCARD) gives what was read of it, without its last property when the
/// data ends inside that property's line or the property is an embedded picture, whose end cannot
/// be told. Text outside the cards and lines that are no property are skipped.
QList<Person> readVCards(QByteArrayView data, qsizetype maxCards = VCardLimits::MaxCards);

} // namespace orvel
