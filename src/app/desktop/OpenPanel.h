// OpenPanel: the file dialog of File > Make Thumbnails…, for files and folders alike.
#pragma once

#include <QFileDialog>
#include <QStringList>

namespace orvel {

/// A file dialog that chooses files and folders together (several at once), showing the files
/// of the kinds the program reads (pictures, documents, movies) and folders; a second filter
/// shows every file. Opening a folder by double-click enters it; the accept button takes what is
/// selected, folders included.
class OpenPanel : public QFileDialog
{
    Q_OBJECT

public:
    explicit OpenPanel(QWidget *parent = nullptr);

    /// What the user chose, as absolute paths, in the order shown; empty before accepting.
    [[nodiscard]] QStringList chosenPaths() const;

    /// The name patterns of the files the program reads ("*.jpg", "*.JPG", …), both cases of
    /// each extension, since the dialog matches case-sensitively where the file system does.
    [[nodiscard]] static QStringList readableNamePatterns();

public Q_SLOTS:
    void accept() override;

private:
    QStringList m_chosen;
};

} // namespace orvel
