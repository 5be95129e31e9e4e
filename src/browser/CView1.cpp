#include "browser/CView1.h"

#include "browser/BrowserList.h"
#include "browser/BrowserSettings.h"
#include "browser/ChangeCheck.h"
#include "browser/FileDeleter.h"
#include "browser/fileops/DropRequest.h"
#include "browser/fileops/FileOperations.h"
#include "browser/grid/GridCommands.h"
#include "browser/grid/GridDragDrop.h"
#include "browser/grid/GridLayout.h"
#include "browser/grid/GridPainter.h"
#include "browser/grid/GridSelection.h"
#include "browser/grid/GridSorting.h"
#include "browser/thumbnails/ThumbnailFeed.h"
#include "platform/CommandIds.h"
#include "platform/Messages.h"
#include "platform/PostedMessage.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace lanmira {
namespace {

constexpr int kCleanPeriodMs = 300'000;
// Beyond this many finished cells at once, one repaint of the view is cheaper.
constexpr std::size_t kMaxCellUpdates = 256;

QString fileName(const QString& path) {
    return path.mid(path.lastIndexOf(u'/') + 1);
}

} // namespace

CView1::CView1(QString company, QString app, QString programFolder, QWidget* parent)
    : QAbstractScrollArea(parent), m_company(std::move(company)), m_app(std::move(app)),
      m_programFolder(std::move(programFolder)), m_fileOps(new FileOperations(this)),
      m_feed(BrowserList::instance()), m_painter(std::make_unique<GridPainter>()),
      m_selection(std::make_unique<GridSelection>(BrowserList::instance())),
      m_sorting(std::make_unique<GridSorting>(BrowserList::instance())),
      m_dragDrop(std::make_unique<GridDragDrop>(*this, BrowserList::instance(), *m_selection,
                                                *m_fileOps)) {
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setAcceptDrops(true);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
}

CView1::~CView1() {
    m_feed.stop();
    saveSettings();
}

bool CView1::dragging() const {
    return m_selection->dragging();
}

BrowserList& CView1::list() const {
    return BrowserList::instance();
}

bool CView1::largeMode() const {
    return list().largeMode != 0;
}

QPoint CView1::scrollOffset() const {
    return {horizontalScrollBar()->value(), verticalScrollBar()->value()};
}

bool CView1::startBrowser() {
    if (m_initialised)
        return true;
    BrowserSettings(m_company, m_app).load(list());
    m_settingsLoaded = true;
    m_feed.start(m_registration.token(), [this](int index) { cellDone(index); });
    m_cleanTimer.start(kCleanPeriodMs, this);
    m_initialised = true;
    m_painter->forgetImages();
    relayout();
    return true;
}

void CView1::openFolder(const QString& path) {
    QString folder = path;
    if (!folder.isEmpty() && !folder.endsWith(u'/'))
        folder += u'/';
    list().currentFolder = folder;
    if (!folder.isEmpty())
        QDir::setCurrent(folder);
    refresh();
}

void CView1::refresh() {
    BrowserList& l = list();
    std::unique_lock lock = m_feed.beginChange();
    m_painter->forgetImages();
    // Without a cache folder the browser stays empty rather than run without a worker.
    if (l.currentFolder.isEmpty() || m_startFailed) {
        l.clear();
        relayout();
        l.thumbnailsComplete.store(0);
        lock.unlock();
        Q_EMIT statusChanged();
        return;
    }
    l.fullScan();
    // The size keys wait for the worker, which is what learns the sizes.
    if (!GridSorting::sortsOnSize(l.sortKey))
        l.sort();
    relayout();
    endListChange(lock);
    Q_EMIT statusChanged();
}

void CView1::endListChange(std::unique_lock<std::mutex>& lock) {
    m_feed.endChange(lock, firstVisibleCell());
}

int CView1::firstVisibleCell() const {
    return GridLayout::firstVisible(verticalScrollBar()->value(), m_columns, largeMode());
}

StatusTexts CView1::statusTexts() const {
    return StatusTexts::of(list());
}

// Layout

void CView1::relayout() {
    // Showing or hiding a scroll bar resizes the viewport, which lays out again from
    // inside this call; run the layout once more instead of nesting.
    if (m_inLayout) {
        m_layoutAgain = true;
        return;
    }
    m_inLayout = true;
    for (int round = 0; round < 3; ++round) {
        m_layoutAgain = false;
        applyLayout();
        if (!m_layoutAgain)
            break;
    }
    m_inLayout = false;
    viewport()->update();
}

void CView1::applyLayout() {
    BrowserList& l = list();
    GridLayout::Input in;
    in.largeMode = largeMode();
    in.client = viewport()->size();
    in.verticalBarWidth = verticalScrollBar()->sizeHint().width();
    in.verticalBarShown = verticalScrollBar()->isVisibleTo(this);
    in.horizontalBarHeight = horizontalScrollBar()->sizeHint().height();
    in.horizontalBarShown = horizontalScrollBar()->isVisibleTo(this);
    const GridLayout::Result r = GridLayout::layOut(l, in);
    m_columns = r.columns;
    m_rows = r.rows;

    const int period = GridLayout::changeCheckPeriod(static_cast<int>(l.items().size()));
    if (period != m_checkPeriod) {
        m_checkPeriod = period;
        m_checkTimer.start(period, this);
    }

    const QSize cell = GridLayout::cellSize(in.largeMode);
    QScrollBar* h = horizontalScrollBar();
    QScrollBar* v = verticalScrollBar();
    h->setPageStep(cell.width());
    h->setSingleStep(std::max(1, cell.width() / 10));
    v->setPageStep(cell.height());
    v->setSingleStep(std::max(1, cell.height() / 10));
    h->setRange(0, std::max(0, r.scrollSize.width() - viewport()->width()));
    v->setRange(0, std::max(0, r.scrollSize.height() - viewport()->height()));
}

void CView1::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    relayout();
    updateFirstVisible();
}

void CView1::scrollContentsBy(int dx, int dy) {
    // The band is drawn over the cells; moving its pixels would leave a stale outline.
    if (m_selection->banding())
        viewport()->update();
    else
        viewport()->scroll(dx, dy);
    updateFirstVisible();
}

void CView1::updateFirstVisible() {
    m_feed.showFrom(firstVisibleCell());
}

// The worker's reports

void CView1::cellDone(int index) {
    // The worker is stopped before this object dies, and Qt drops calls queued for a dead
    // one.
    if (m_doneCells.push(index))
        QMetaObject::invokeMethod(
            this, [this] { flushDoneCells(); }, Qt::QueuedConnection);
}

void CView1::flushDoneCells() {
    const std::vector<int> cells = m_doneCells.take();
    // Indices may predate a refresh: an out-of-range one is dropped, a stale one only
    // repaints a cell for nothing.
    const auto& items = list().items();
    const int n = static_cast<int>(items.size());
    bool selectedDone = false;
    if (cells.size() > kMaxCellUpdates)
        viewport()->update();
    for (int k : cells) {
        if (k < 0 || k >= n)
            continue;
        if (cells.size() <= kMaxCellUpdates)
            updateCell(k);
        selectedDone = selectedDone || items[k]->selected();
    }
    if (selectedDone)
        Q_EMIT statusChanged();
}

void CView1::customEvent(QEvent* event) {
    PostedMessage* m = PostedMessage::from(event);
    if (m && m->message() == msg::BROWSER_RESORT) {
        resort();
        return;
    }
    if (m && m->message() == msg::BROWSER_DEFERRED_DROP) {
        m_dragDrop->deferred(*m);
        return;
    }
    QAbstractScrollArea::customEvent(event);
}

void CView1::resort() {
    if (m_initialised && m_sorting->sortBySizes()) {
        relayout();
        Q_EMIT statusChanged();
    }
}

void CView1::applySorting(GridSorting::Effect effect) {
    if (effect.relayout) {
        relayout();
        Q_EMIT statusChanged();
    }
    if (effect.save)
        saveSettings();
}

// Timers

void CView1::timerEvent(QTimerEvent* event) {
    if (event->timerId() == m_checkTimer.timerId()) {
        changeCheck();
    } else if (event->timerId() == m_cleanTimer.timerId()) {
        m_feed.cleanCache();
    } else {
        QAbstractScrollArea::timerEvent(event);
    }
}

void CView1::changeCheck() {
    BrowserList& l = list();
    if (!m_initialised || !m_feed.cache() || l.thumbnailsComplete.load() != 1)
        return;
    QElapsedTimer clock;
    clock.start();
    std::unique_lock lock = m_feed.beginChange();

    const auto [removed, changed, added] = ChangeCheck::run(l, *m_feed.cache(), clock);
    if (removed || changed)
        m_painter->forgetImages();
    if (!removed && changed && !added)
        viewport()->update();
    if (removed || added) {
        relayout();
        m_sorting->listChanged();
    }
    endListChange(lock);
    if (removed || changed || added)
        Q_EMIT statusChanged();
}

// Commands

void CView1::setLargeMode(bool large) {
    list().largeMode = large ? 1 : 0;
    m_painter->forgetImages();
    relayout();
    updateFirstVisible();
    saveSettings();
}

void CView1::saveSettings() const {
    // Before the settings were read, saving would overwrite them with defaults.
    if (m_settingsLoaded)
        BrowserSettings(m_company, m_app).save(list());
}

bool CView1::onCommand(int id) {
    BrowserList& l = list();
    if (const int key = GridSorting::keyOfCommand(id); key >= 0) {
        applySorting(m_sorting->chooseKey(key));
        return true;
    }
    switch (id) {
    case cmd::ID_BROWSER_REFRESH:
        refresh();
        return true;
    case cmd::ID_SORT_ASCENDING:
        applySorting(m_sorting->chooseDirection(0));
        return true;
    case cmd::ID_SORT_DESCENDING:
        applySorting(m_sorting->chooseDirection(1));
        return true;
    case cmd::ID_BROWSER_SORT_CYCLE:
        applySorting(m_sorting->cycleKey());
        return true;
    case cmd::ID_LARGE_ICONS:
    case cmd::ID_SMALL_ICONS:
        if (largeMode() != (id == cmd::ID_LARGE_ICONS))
            setLargeMode(id == cmd::ID_LARGE_ICONS);
        return true;
    case cmd::ID_BROWSER_TOGGLE_ICONS:
        setLargeMode(!largeMode());
        return true;
    case cmd::ID_SELECT_ALL:
    case cmd::ID_INVERT_SELECTION:
        if (id == cmd::ID_SELECT_ALL)
            l.selectAll();
        else
            l.invertSelection();
        viewport()->update();
        Q_EMIT statusChanged();
        return true;
    case cmd::ID_DELETE:
        deleteSelection(QGuiApplication::queryKeyboardModifiers() & Qt::ShiftModifier);
        return true;
    case cmd::ID_FILES_CUT:
    case cmd::ID_FILES_COPY: {
        const std::vector<QString> paths = l.selectedPaths();
        m_fileOps->putOnClipboard(QStringList(paths.begin(), paths.end()),
                                  id == cmd::ID_FILES_CUT ? effect::kCut : effect::kCopyAndLink);
        return true;
    }
    case cmd::ID_FILES_PASTE:
        m_fileOps->paste(l.currentFolder);
        return true;
    case cmd::ID_FILES_PASTE_SHORTCUT:
        m_fileOps->pasteShortcut(l.currentFolder);
        return true;
    case cmd::ID_MULTIPAGE_TIFF:
        multiPageTiff();
        return true;
    default:
        return false;
    }
}

bool CView1::onUpdateCommand(int id, CommandState& state) {
    return GridCommands::update(id, state, list(), *m_fileOps);
}

// Deleting

void CView1::deleteSelection(bool forGood) {
    const std::vector<QString> selected = list().selectedPaths();
    if (selected.empty())
        return;
    if (!FileDeleter::deletePaths(this, QStringList(selected.begin(), selected.end()), forGood))
        return;
    BrowserList& l = list();
    std::unique_lock lock = m_feed.beginChange();
    // Only what is really gone: the user may have kept some files.
    l.removeSelectedGone();
    m_painter->forgetImages();
    relayout();
    endListChange(lock);
    Q_EMIT statusChanged();
}

int CView1::deleteFile(const QString& path, bool forGood) {
    if (!FileDeleter::deletePaths(this, QStringList{path}, forGood))
        return -1;
    BrowserList& l = list();
    std::unique_lock lock = m_feed.beginChange();
    const int index = l.removePath(path);
    if (index >= 0) {
        m_painter->forgetImages();
        relayout();
    }
    endListChange(lock);
    Q_EMIT statusChanged();
    return std::max(0, index);
}

// Painting

void CView1::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    const QRect exposed = event->rect();
    painter.fillRect(exposed, palette().color(QPalette::Button));
    const QPoint offset = scrollOffset();
    m_painter->paintCells(painter, list(), {m_columns, m_rows, largeMode(), offset}, exposed,
                          {palette().color(QPalette::Highlight)});

    if (m_selection->banding()) {
        // Inverting, so the outline shows on any thumbnail.
        painter.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
        painter.setPen(QPen(Qt::white, 0, Qt::DotLine));
        painter.setBrush(Qt::NoBrush);
        const QRect band = m_selection->bandRect().translated(-offset);
        painter.drawRect(band.adjusted(0, 0, -1, -1));
    }
}

void CView1::updateCell(int index) {
    const auto& items = list().items();
    if (index < 0 || index >= static_cast<int>(items.size()))
        return;
    viewport()->update(items[index]->cell(largeMode()).translated(-scrollOffset()));
}

// Mouse and keys

void CView1::updateBandFrame(const QRect& band) {
    const QRect r = band.translated(-scrollOffset());
    const QRect outer = r.adjusted(-1, -1, 1, 1);
    viewport()->update(QRect(outer.left(), outer.top(), outer.width(), 3));
    viewport()->update(QRect(outer.left(), outer.bottom() - 2, outer.width(), 3));
    viewport()->update(QRect(outer.left(), outer.top(), 3, outer.height()));
    viewport()->update(QRect(outer.right() - 2, outer.top(), 3, outer.height()));
}

void CView1::mousePressEvent(QMouseEvent* event) {
    const QPoint pos = event->position().toPoint();
    const auto cellChanged = [this](int k) { updateCell(k); };
    if (event->button() == Qt::RightButton &&
        m_selection->pressForMenu(pos + scrollOffset(), cellChanged))
        Q_EMIT statusChanged();
    if (event->button() != Qt::LeftButton) {
        QAbstractScrollArea::mousePressEvent(event);
        return;
    }
    if (m_selection->press(pos + scrollOffset(), pos, event->modifiers() & Qt::ControlModifier,
                           cellChanged))
        Q_EMIT statusChanged();
}

void CView1::mouseMoveEvent(QMouseEvent* event) {
    const QPoint pos = event->position().toPoint();
    if (m_selection->state() == GridSelection::State::PressedOnItem &&
        (event->buttons() & Qt::LeftButton)) {
        if (m_selection->leavesDragSquare(pos))
            m_dragDrop->startDrag();
        return;
    }
    if (!m_selection->banding())
        return;
    updateBandFrame(m_selection->bandRect());
    const bool changed =
        m_selection->moveBand(pos + scrollOffset(), event->modifiers() & Qt::ControlModifier,
                              [this](int k) { updateCell(k); });
    updateBandFrame(m_selection->bandRect());
    if (changed)
        Q_EMIT statusChanged();
}

void CView1::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && m_selection->release())
        viewport()->update();
    QAbstractScrollArea::mouseReleaseEvent(event);
}

void CView1::dragEnterEvent(QDragEnterEvent* event) {
    m_dragDrop->dragOver(event);
}

void CView1::dragMoveEvent(QDragMoveEvent* event) {
    m_dragDrop->dragOver(event);
}

void CView1::dropEvent(QDropEvent* event) {
    m_dragDrop->drop(event);
}

void CView1::postDrop(DropRequest request) {
    m_dragDrop->post(std::move(request));
}

void CView1::multiPageTiff() {
    std::vector<TiffJoiner::Source> sources;
    for (const auto& item : list().items()) {
        if (item->selected())
            sources.push_back({fileName(item->path), item->imagePath()});
    }
    m_fileOps->multiPageTiff(std::move(sources));
}

void CView1::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !m_openImage)
        return;
    if (const BrowserItem* only = m_selection->onlySelected())
        m_openImage(only->path, only->linkTarget);
}

void CView1::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Delete) {
        deleteSelection(event->modifiers() & Qt::ShiftModifier);
        return;
    }
    // Navigation keys scroll and never move the selection.
    struct Scroll {
        int key;
        bool vertical;
        QAbstractSlider::SliderAction action;
    };
    static constexpr Scroll kScrolls[] = {
        {Qt::Key_PageUp, true, QAbstractSlider::SliderPageStepSub},
        {Qt::Key_PageDown, true, QAbstractSlider::SliderPageStepAdd},
        {Qt::Key_Up, true, QAbstractSlider::SliderSingleStepSub},
        {Qt::Key_Down, true, QAbstractSlider::SliderSingleStepAdd},
        {Qt::Key_Left, false, QAbstractSlider::SliderSingleStepSub},
        {Qt::Key_Right, false, QAbstractSlider::SliderSingleStepAdd},
        {Qt::Key_Home, true, QAbstractSlider::SliderToMinimum},
        {Qt::Key_End, true, QAbstractSlider::SliderToMaximum}};
    for (const Scroll& s : kScrolls) {
        if (s.key == event->key()) {
            (s.vertical ? verticalScrollBar() : horizontalScrollBar())->triggerAction(s.action);
            return;
        }
    }
    QAbstractScrollArea::keyPressEvent(event);
}

} // namespace lanmira
