// OpenPanel: the file dialog of File > Make Thumbnails…, for files and folders alike.
#include "app/desktop/OpenPanel.h"

#include "app/desktop/LocalizedText.h"
#include "image/Image.h"
#include "movie/Movie.h"

#include <QAbstractItemView>
#include <QDir>
#include <QFileSystemModel>
#include <QItemSelectionModel>

#include <algorithm>
#include <set>

using namespace Qt::StringLiterals;

namespace orvel {

OpenPanel::OpenPanel(QWidget *parent)
    : QFileDialog(parent, localizedText(QStringLiteral("Make Thumbnails")), QDir::homePath())
{
    setObjectName(QStringLiteral("openPanel"));
    // The platform's own dialog cannot take files and folders in one choice.
    setOption(QFileDialog::DontUseNativeDialog);
    setOption(QFileDialog::HideNameFilterDetails);
    setFileMode(QFileDialog::ExistingFiles);
    setAcceptMode(QFileDialog::AcceptOpen);
    setLabelText(QFileDialog::Accept, localizedText(QStringLiteral("Make Thumbnails")));
    setNameFilters({ localizedText(QStringLiteral("Pictures, documents and movies")) + u" ("_s
            + readableNamePatterns().join(u' ') + u')',
        localizedText(QStringLiteral("All files")) + u" (*)"_s });
}

QStringList OpenPanel::readableNamePatterns()
{
    QStringList types = Image::ImageFileTypes();
    types += Image::PDFFileTypes();
    types += Movie::movieFileTypes();
    std::set<QString> seen;
    QStringList patterns;
    for (const QString &type : std::as_const(types)) {
        // The lists also hold classic four-character type codes in quotes, which no name carries.
        if (type.isEmpty() || type.contains(u'\'') || type.contains(u'*') || type.contains(u' '))
            continue;
        for (const QString &extension : { type.toLower(), type.toUpper() }) {
            if (seen.insert(extension).second)
                patterns << u"*."_s + extension;
        }
    }
    return patterns;
}

QStringList OpenPanel::chosenPaths() const
{
    // A name typed into the dialog's field was taken by the dialog's own handling.
    if (m_chosen.isEmpty() && result() == QDialog::Accepted)
        return selectedFiles();
    return m_chosen;
}

void OpenPanel::accept()
{
    m_chosen.clear();
    // What is selected in the view, folders included; the dialog itself would enter a folder.
    QStringList chosen;
    for (const char *name : { "listView", "treeView" }) {
        // The dialog's two views of the folder (not its side bar of places).
        const auto *view = findChild<QAbstractItemView *>(QLatin1StringView(name));
        if (!view || !view->isVisible() || !view->selectionModel())
            continue;
        QModelIndexList rows = view->selectionModel()->selectedRows();
        std::sort(rows.begin(), rows.end());
        for (const QModelIndex &row : std::as_const(rows)) {
            const QString path = row.data(QFileSystemModel::FilePathRole).toString();
            if (!path.isEmpty() && !chosen.contains(path))
                chosen << path;
        }
    }
    if (chosen.isEmpty()) {
        // A name typed into the dialog's field: its own handling, which enters a typed folder.
        QFileDialog::accept();
        return;
    }
    m_chosen = chosen;
    QDialog::accept();
}

} // namespace orvel
