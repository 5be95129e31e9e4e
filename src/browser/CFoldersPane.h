#pragma once

#include <QDockWidget>
#include <QString>

class QFileSystemModel;
class QTreeView;

namespace lanmira {

// The browser's docked tree of the file system's folders. Choosing a folder makes it the
// process's current folder and asks the browser to show it.
class CFoldersPane final : public QDockWidget {
    Q_OBJECT
public:
    // `startFolder` is selected once the pane exists; empty: the process's current folder.
    explicit CFoldersPane(const QString& startFolder, QWidget* parent = nullptr);

    // Selects a folder in the tree (and so opens it); false when it is not a folder.
    bool selectFolder(const QString& path);
    QString selectedFolder() const;

Q_SIGNALS:
    // An absolute folder path ending with '/'.
    void folderChosen(const QString& folder);

protected:
    void customEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void currentChanged();

    QFileSystemModel* m_model;
    QTreeView* m_tree;
    QString m_startFolder;
    QString m_shown;
    bool m_follow = false; // the selection is kept in view while folders are still read
};

} // namespace lanmira
