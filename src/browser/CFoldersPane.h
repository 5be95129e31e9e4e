#pragma once

#include <QDockWidget>
#include <QString>

#include <functional>

class QFileSystemModel;
class QTreeView;

namespace lanmira {

struct DropRequest;

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

    // Files dropped on a folder of the tree go here, with the folder and the effect that
    // the keys held gave.
    void setDropHandler(std::function<void(DropRequest)> handler);

Q_SIGNALS:
    // An absolute folder path ending with '/'.
    void folderChosen(const QString& folder);

protected:
    void customEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void currentChanged();
    // The folder under a point of the tree's viewport, ending with '/'; empty: none.
    QString folderAt(const QPoint& pos) const;

    QFileSystemModel* m_model;
    QTreeView* m_tree;
    QString m_startFolder;
    QString m_shown;
    std::function<void(DropRequest)> m_dropHandler;
    bool m_follow = false; // the selection is kept in view while folders are still read
};

} // namespace lanmira
