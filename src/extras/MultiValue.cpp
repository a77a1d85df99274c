// An ordered list of labelled values with an optional primary one.
#include "extras/MultiValue.h"

namespace orvel {

QString MultiValue::addValue(const QVariant &value, const QString &label)
{
    // Identifiers are numbers; the small ones (almost all) are made once and shared.
    static const QStringList Small = [] {
        QStringList numbers;
        for (int i = 0; i < 64; ++i)
            numbers.append(QString::number(i));
        return numbers;
    }();
    const int n = m_nextIdentifier++;
    QString identifier = n < Small.size() ? Small.at(n) : QString::number(n);
    m_entries.append(Entry { identifier, label, value });
    return identifier;
}

QVariant MultiValue::valueAtIndex(qsizetype index) const
{
    return index >= 0 && index < m_entries.size() ? m_entries.at(index).value : QVariant();
}

QString MultiValue::labelAtIndex(qsizetype index) const
{
    return index >= 0 && index < m_entries.size() ? m_entries.at(index).label : QString();
}

QString MultiValue::identifierAtIndex(qsizetype index) const
{
    return index >= 0 && index < m_entries.size() ? m_entries.at(index).identifier : QString();
}

qsizetype MultiValue::indexForIdentifier(QStringView identifier) const
{
    for (qsizetype i = 0; i < m_entries.size(); ++i) {
        if (m_entries.at(i).identifier == identifier)
            return i;
    }
    return NotFound;
}

bool MultiValue::setLabelAtIndex(qsizetype index, const QString &label)
{
    if (index < 0 || index >= m_entries.size())
        return false;
    m_entries[index].label = label;
    return true;
}

} // namespace orvel
