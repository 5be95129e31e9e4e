#pragma once

#include "browser/StatusTexts.h"
#include "browser/grid/GridSorting.h"
#include "browser/thumbnails/DoneCellQueue.h"
#include "browser/thumbnails/ThumbnailFeed.h"
#include "platform/CommandTarget.h"
#include "platform/ReceiverRegistry.h"

#include <QAbstractScrollArea>
#include <QBasicTimer>

#include <functional>
#include <memory>
#include <mutex>

namespace lanmira {

class BrowserList;
class BrowserSettings;
class FileOperations;
class GridDragDrop;
class GridPainter;
class GridSelection;
struct DropRequest;

// The browser's grid of thumbnails over the process-wide browser list.
class CView1 final : public QAbstractScrollArea, public CommandTarget {
    Q_OBJECT
public:
    using OpenImage = std::function<void(const QString& path, const QString& linkTarget)>;

    CView1(QString company, QString app, QString programFolder, QWidget* parent = nullptr);
    ~CView1() override; // stop browser()

    // start browser(): settings, cache root, worker. False: the browser stays empty.
    bool startBrowser();
    // Makes `path` (a folder; a trailing '/' is added) the current folder and refreshes.
    void openFolder(const QString& path);
    void refresh();

    StatusTexts statusTexts() const;
    void setOpenImage(OpenImage callback) { m_openImage = std::move(callback); }

    // Deletes the selection (for good when `forGood`); keeps only items whose files
    // remain.
    void deleteSelection(bool forGood);
    // For the viewer: deletes one file; the removed item's former index, 0 when no item
    // matched, -1 when the deletion failed or was declined.
    int deleteFile(const QString& path, bool forGood);

    bool onCommand(int id) override;
    bool onUpdateCommand(int id, CommandState& state) override;

    // A drag that started in this view is in progress.
    bool dragging() const;
    FileOperations& fileOperations() const { return *m_fileOps; }
    // Hands a drop to the deferred handler, which runs once the drag has ended (the folder
    // pane's drops come this way too).
    void postDrop(DropRequest request);
    int columns() const { return m_columns; }

Q_SIGNALS:
    // The selection or the list changed: the status texts may differ.
    void statusChanged();

    // Implementation members follow (private).
protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void customEvent(QEvent* event) override;

private:
    BrowserList& list() const;
    bool largeMode() const;
    QPoint scrollOffset() const;

    void relayout();
    void applyLayout();
    void updateScrollBars();
    void updateFirstVisible();
    // The end of every change of the list: the worker starts a new pass.
    void endListChange(std::unique_lock<std::mutex>& lock);
    int firstVisibleCell() const;
    void changeCheck();
    void resort();
    void applySorting(GridSorting::Effect effect);
    void setLargeMode(bool large);
    void saveSettings() const;

    void cellDone(int index); // worker thread
    void flushDoneCells();

    void updateCell(int index);
    void updateBandFrame(const QRect& band);
    void multiPageTiff();

    QString m_company;
    QString m_app;
    QString m_programFolder;
    OpenImage m_openImage;
    ReceiverRegistration m_registration{this};
    FileOperations* m_fileOps; // owned as a child
    ThumbnailFeed m_feed;
    bool m_initialised = false;
    bool m_startFailed = false;
    bool m_settingsLoaded = false;

    int m_columns = 0;
    int m_rows = 0;
    bool m_inLayout = false;
    bool m_layoutAgain = false;

    QBasicTimer m_checkTimer; // timer 1
    QBasicTimer m_cleanTimer; // timer 2
    int m_checkPeriod = 0;

    std::unique_ptr<GridPainter> m_painter;
    std::unique_ptr<GridSelection> m_selection;
    std::unique_ptr<GridSorting> m_sorting;
    std::unique_ptr<GridDragDrop> m_dragDrop;
    DoneCellQueue m_doneCells; // filled by the worker thread
};

} // namespace lanmira
