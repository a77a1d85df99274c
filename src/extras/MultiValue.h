// An ordered list of labelled values, one of which may be marked primary: an address book's
// multi-valued property (e-mail addresses, phone numbers, addresses ...).
#pragma once

#include "strings/NotFound.h"

#include <QList>
#include <QString>
#include <QVariant>

namespace orvel {

class MultiValue
{
public:
    /// Adds a value with its label at the end; answers the value's identifier, unique in this list.
    QString addValue(const QVariant &value, const QString &label = QString());

    qsizetype count() const { return m_entries.size(); }
    bool isEmpty() const { return m_entries.isEmpty(); }

    /// The value, label or identifier at index; invalid / null when index is out of range.
    QVariant valueAtIndex(qsizetype index) const;
    QString labelAtIndex(qsizetype index) const;
    QString identifierAtIndex(qsizetype index) const;
    /// The index of the value with that identifier, or NotFound.
    qsizetype indexForIdentifier(QStringView identifier) const;

    /// Relabels the value at index; false when there is none.
    bool setLabelAtIndex(qsizetype index, const QString &label);

    /// The identifier marked primary, or null. It need not name a value of the list.
    QString primaryIdentifier() const { return m_primary; }
    void setPrimaryIdentifier(const QString &identifier) { m_primary = identifier; }

    /// Whether v holds a multi-value.
    static bool isMultiValue(const QVariant &v) { return v.metaType() == QMetaType::fromType<MultiValue>(); }
    /// The multi-value v holds, or null when it holds something else.
    static const MultiValue *fromVariant(const QVariant &v)
    {
        return isMultiValue(v) ? static_cast<const MultiValue *>(v.constData()) : nullptr;
    }

private:
    struct Entry
    {
        QString identifier;
        QString label;
        QVariant value;
    };
    QList<Entry> m_entries;
    QString m_primary;
    int m_nextIdentifier = 0;
};

} // namespace orvel
