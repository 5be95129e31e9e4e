#include "browser/CFoldersPane.h"

#include "browser/fileops/DropRequest.h"
#include "browser/fileops/DropRules.h"
#include "browser/fileops/FileListData.h"
#include "i18n/i18n.h"
#include "platform/PostedMessage.h"

#include <QDir>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QHeaderView>
#include <QScrollBar>
#include <QTreeView>

namespace lanmira {

CFoldersPane::CFoldersPane(const QString& startFolder, QWidget* parent)
    : QDockWidget(i18n_stringW("ids_folders"), parent), m_model(new QFileSystemModel(this)),
      m_tree(new QTreeView(this)),
      m_startFolder(startFolder.isEmpty() ? QDir::currentPath() : startFolder) {
    setObjectName(QStringLiteral("CFoldersPane"));
    setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
    // Folders only; the model lists them on a thread of its own, so a slow mount never
    // freezes the tree.
    m_model->setFilter(QDir::AllDirs | QDir::NoDotAndDotDot | QDir::Drives);
    m_model->setReadOnly(true);
    m_model->setRootPath(QStringLiteral("/"));
    m_tree->setModel(m_model);
    m_tree->setObjectName(QStringLiteral("folderTree"));
    m_tree->setHeaderHidden(true);
    for (int c = 1; c < m_model->columnCount(); ++c)
        m_tree->hideColumn(c);
    m_tree->setRootIsDecorated(true);
    m_tree->setUniformRowHeights(true);
    m_tree->setFrameShape(QFrame::StyledPanel);
    m_tree->setSelectionMode(QAbstractItemView::SingleSelection);
    setWidget(m_tree);
    // The tree's own drop handling would ask the read-only model; the filter answers.
    m_tree->viewport()->setAcceptDrops(true);
    m_tree->viewport()->installEventFilter(this);
    connect(m_tree->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &CFoldersPane::currentChanged);
    // The model reads and sorts folders on a thread of its own: rows above the selected
    // folder arrive after it was selected and push it out of sight, so the tree keeps it in
    // view until the user takes over.
    const auto follow = [this] {
        if (m_follow)
            m_tree->scrollTo(m_tree->currentIndex(), QAbstractItemView::PositionAtCenter);
    };
    connect(m_model, &QFileSystemModel::directoryLoaded, this, follow);
    connect(m_model, &QAbstractItemModel::layoutChanged, this, follow);
    connect(m_model, &QAbstractItemModel::rowsInserted, this, follow);
    m_tree->installEventFilter(this);
    m_tree->viewport()->installEventFilter(this);
    m_tree->verticalScrollBar()->installEventFilter(this);
    postMessage(this, msg::FOLDERS_PANE_CREATED);
}

bool CFoldersPane::selectFolder(const QString& path) {
    const QFileInfo info(path);
    if (!info.isDir())
        return false;
    const QModelIndex index = m_model->index(info.absoluteFilePath());
    if (!index.isValid())
        return false;
    for (QModelIndex p = index.parent(); p.isValid(); p = p.parent())
        m_tree->expand(p);
    m_tree->setCurrentIndex(index);
    m_tree->scrollTo(index, QAbstractItemView::PositionAtCenter);
    m_follow = true;
    // Choosing the folder that is already current still shows it (the start-up step).
    if (m_shown != info.absoluteFilePath())
        currentChanged();
    return true;
}

QString CFoldersPane::selectedFolder() const {
    return m_shown;
}

void CFoldersPane::customEvent(QEvent* event) {
    PostedMessage* m = PostedMessage::from(event);
    if (m && m->message() == msg::FOLDERS_PANE_CREATED) {
        if (!selectFolder(m_startFolder))
            selectFolder(QDir::currentPath());
        return;
    }
    QDockWidget::customEvent(event);
}

void CFoldersPane::setDropHandler(std::function<void(DropRequest)> handler) {
    m_dropHandler = std::move(handler);
}

QString CFoldersPane::folderAt(const QPoint& pos) const {
    const QModelIndex index = m_tree->indexAt(pos);
    if (!index.isValid())
        return {};
    const QString path = m_model->filePath(index);
    if (path.isEmpty() || !QFileInfo(path).isDir())
        return {};
    return path.endsWith(u'/') ? path : path + u'/';
}

bool CFoldersPane::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::Wheel:
    case QEvent::KeyPress:
        // The user took over: the start folder is no longer kept in view.
        m_follow = false;
        break;
    default:
        break;
    }
    if (watched != m_tree->viewport())
        return QDockWidget::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop: {
        auto* drop = static_cast<QDropEvent*>(event);
        const QString folder = folderAt(drop->position().toPoint());
        // The grid is another view: its drags count as coming from elsewhere here.
        const std::uint32_t e = DropRules::dragOverEffect(
            !folder.isEmpty() && m_dropHandler, FileListData::offersFiles(drop->mimeData()), false,
            DropRules::keyState(drop->modifiers()));
        if (e == effect::kNone) {
            drop->ignore();
            // Enter must be accepted for moves over other folders to be offered at all.
            if (event->type() == QEvent::DragEnter && FileListData::offersFiles(drop->mimeData()))
                drop->accept();
            return true;
        }
        drop->setDropAction(DropRules::action(e));
        drop->accept();
        if (event->type() == QEvent::Drop) {
            DropRequest request;
            request.folder = folder;
            request.files = FileListData::decode(drop->mimeData());
            request.effect = e;
            m_dropHandler(std::move(request));
        }
        return true;
    }
    case QEvent::DragLeave:
        return true;
    default:
        return QDockWidget::eventFilter(watched, event);
    }
}

void CFoldersPane::currentChanged() {
    const QModelIndex index = m_tree->currentIndex();
    if (!index.isValid())
        return;
    const QString path = m_model->filePath(index);
    if (path.isEmpty() || !QFileInfo(path).isDir())
        return;
    m_shown = path;
    QDir::setCurrent(path);
    Q_EMIT folderChosen(path.endsWith(u'/') ? path : path + u'/');
}

} // namespace lanmira
