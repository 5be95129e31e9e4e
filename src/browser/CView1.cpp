#include "browser/CView1.h"

#include "browser/BrowserList.h"
#include "browser/BrowserSettings.h"
#include "browser/FileDeleter.h"
#include "browser/GridLayout.h"
#include "browser/ThumbnailCache.h"
#include "browser/ThumbnailMaker.h"
#include "browser/ThumbnailWorker.h"
#include "browser/fileops/DropRules.h"
#include "browser/fileops/FileListData.h"
#include "browser/fileops/FileOperations.h"
#include "platform/CommandIds.h"
#include "platform/Messages.h"
#include "platform/PostedMessage.h"

#include <QDir>
#include <QDrag>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QTimer>

#include <algorithm>
#include <utility>

namespace lanmira {
namespace {

constexpr int kCleanPeriodMs = 300'000;
// A change check that took this long skips looking for new files this time.
constexpr int kRescanBudgetMs = 2000;
// The drag starts once the mouse leaves a 16 × 16 square around the press.
constexpr int kDragHalfSquare = 8;
// Converted thumbnails kept for drawing, in bytes: some screens full of large ones.
constexpr int kImageCacheBytes = 48 * 1024 * 1024;
// Sanity bound on a thumbnail's side; anything larger did not come from the maker.
constexpr int kMaxThumbnailSide = 1024;
// Beyond this many finished cells at once, one repaint of the view is cheaper.
constexpr std::size_t kMaxCellUpdates = 256;

bool sizeKey(std::int32_t key) {
    return key == static_cast<int>(SortKey::Size) || key == static_cast<int>(SortKey::Width) ||
           key == static_cast<int>(SortKey::Height);
}

// The toolbar's cycle by key: Name, Extension, Type, Size, Width, Height, Name.
constexpr int kNextInCycle[6] = {5, 2, 3, 4, 0, 1};

int nextInCycle(int key) {
    return key >= 0 && key < 6 ? kNextInCycle[key] : 0;
}

int sortKeyOfCommand(int id) {
    static constexpr std::pair<int, SortKey> kKeys[] = {
        {cmd::ID_SORT_BY_NAME, SortKey::Name},     {cmd::ID_SORT_BY_TYPE, SortKey::Type},
        {cmd::ID_SORT_BY_SIZE, SortKey::Size},     {cmd::ID_SORT_BY_WIDTH, SortKey::Width},
        {cmd::ID_SORT_BY_HEIGHT, SortKey::Height}, {cmd::ID_SORT_BY_EXTENSION, SortKey::Extension}};
    for (const auto& [command, key] : kKeys) {
        if (command == id)
            return static_cast<int>(key);
    }
    return -1;
}

QString fileName(const QString& path) {
    return path.mid(path.lastIndexOf(u'/') + 1);
}

} // namespace

CView1::CView1(QString company, QString app, QString programFolder, QWidget* parent)
    : QAbstractScrollArea(parent), m_company(std::move(company)), m_app(std::move(app)),
      m_programFolder(std::move(programFolder)), m_fileOps(new FileOperations(this)),
      m_images(kImageCacheBytes) {
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setAcceptDrops(true);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
}

CView1::~CView1() {
    if (m_worker)
        m_worker->stop();
    saveSettings();
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
    // Without a cache folder the browser runs without a cache.
    if (const QString root = ThumbnailCache::defaultRoot(); !root.isEmpty())
        m_cache = std::make_unique<ThumbnailCache>(root);
    m_worker = std::make_unique<ThumbnailWorker>(list(), m_cache.get(), m_registration.token(),
                                                 [this](int index) { cellDone(index); });
    m_worker->start();
    m_cleanTimer.start(kCleanPeriodMs, this);
    m_initialised = true;
    m_images.clear();
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
    l.stopRequest.store(BrowserList::kStopAbandon);
    std::unique_lock lock(l.lock());
    m_images.clear();
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
    if (!sizeKey(l.sortKey))
        l.sort();
    relayout();
    endListChange(lock);
    Q_EMIT statusChanged();
}

void CView1::endListChange(std::unique_lock<std::mutex>& lock) {
    BrowserList& l = list();
    l.thumbnailsComplete.store(0);
    l.firstVisible.store(
        GridLayout::firstVisible(verticalScrollBar()->value(), m_columns, largeMode()));
    lock.unlock();
    l.stopRequest.store(BrowserList::kStopRun);
    if (m_worker)
        m_worker->wake();
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
    if (m_banding)
        viewport()->update();
    else
        viewport()->scroll(dx, dy);
    updateFirstVisible();
}

void CView1::updateFirstVisible() {
    BrowserList& l = list();
    const int first =
        GridLayout::firstVisible(verticalScrollBar()->value(), m_columns, largeMode());
    if (l.thumbnailsComplete.load() != 0 || first == l.firstVisible.load())
        return;
    // The index first: the worker reads it as soon as it sees the restart.
    l.firstVisible.store(first);
    l.stopRequest.store(BrowserList::kStopRestart);
    if (m_worker)
        m_worker->wake();
}

// The worker's reports

void CView1::cellDone(int index) {
    std::lock_guard lock(m_doneLock);
    m_doneCells.push_back(index);
    if (m_flushQueued)
        return;
    m_flushQueued = true;
    // One queued call however many cells finish before the event loop gets to it. The
    // worker is stopped before this object dies, and Qt drops calls queued for a dead one.
    QMetaObject::invokeMethod(
        this, [this] { flushDoneCells(); }, Qt::QueuedConnection);
}

void CView1::flushDoneCells() {
    std::vector<int> cells;
    {
        std::lock_guard lock(m_doneLock);
        cells.swap(m_doneCells);
        m_flushQueued = false;
    }
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
        deferredDrop(*m);
        return;
    }
    QAbstractScrollArea::customEvent(event);
}

void CView1::resort() {
    if (!m_initialised || !sizeKey(list().sortKey))
        return;
    bool moved = false;
    {
        std::lock_guard lock(list().lock());
        moved = list().sort();
    }
    if (moved) {
        relayout();
        Q_EMIT statusChanged();
    }
}

// Timers

void CView1::timerEvent(QTimerEvent* event) {
    if (event->timerId() == m_checkTimer.timerId()) {
        changeCheck();
    } else if (event->timerId() == m_cleanTimer.timerId()) {
        if (m_cache)
            m_cache->clean(static_cast<int>(QRandomGenerator::global()->bounded(256)));
    } else {
        QAbstractScrollArea::timerEvent(event);
    }
}

void CView1::changeCheck() {
    BrowserList& l = list();
    if (!m_initialised || !m_cache || l.thumbnailsComplete.load() != 1)
        return;
    QElapsedTimer clock;
    clock.start();
    l.stopRequest.store(BrowserList::kStopAbandon);
    std::unique_lock lock(l.lock());

    l.touch();
    auto& items = l.items();
    const std::size_t before = items.size();
    bool changed = false;
    const auto gone = [&](const std::unique_ptr<BrowserItem>& item) {
        switch (m_cache->checkForChange(*item, l)) {
        case ThumbnailCache::Gone:
            return true;
        case ThumbnailCache::Changed:
            changed = true;
            return false;
        case ThumbnailCache::Unchanged:
            break;
        }
        return false;
    };
    items.erase(std::remove_if(items.begin(), items.end(), gone), items.end());
    const bool removed = items.size() != before;

    const bool rescanned = clock.elapsed() < kRescanBudgetMs;
    const bool added = rescanned && l.rescanForAdditions();

    if (removed || changed)
        m_images.clear();
    if (!removed && changed && !added)
        viewport()->update();
    if (removed || added) {
        relayout();
        m_forceResort = true;
    }
    endListChange(lock);
    if (removed || changed || added)
        Q_EMIT statusChanged();
}

// Commands

void CView1::sortUnderLock(bool relayoutAlways) {
    bool moved = false;
    {
        std::lock_guard lock(list().lock());
        moved = list().sort();
    }
    if (moved || relayoutAlways) {
        relayout();
        Q_EMIT statusChanged();
    }
}

void CView1::setSortKey(int key) {
    BrowserList& l = list();
    // No sorting from a refresh until the worker has finished the folder: the size keys
    // would sort on sizes not yet known.
    if (l.thumbnailsComplete.load() == 0)
        return;
    if (key != l.sortKey || m_forceResort) {
        l.sortKey = key;
        sortUnderLock(true);
        saveSettings();
    }
    m_forceResort = false;
}

void CView1::setSortDirection(int direction) {
    BrowserList& l = list();
    if (l.thumbnailsComplete.load() == 0 || direction == l.sortDirection)
        return;
    l.sortDirection = direction;
    sortUnderLock(false);
    saveSettings();
}

void CView1::setLargeMode(bool large) {
    list().largeMode = large ? 1 : 0;
    m_images.clear();
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
    if (const int key = sortKeyOfCommand(id); key >= 0) {
        setSortKey(key);
        return true;
    }
    switch (id) {
    case cmd::ID_BROWSER_REFRESH:
        refresh();
        return true;
    case cmd::ID_SORT_ASCENDING:
        setSortDirection(0);
        return true;
    case cmd::ID_SORT_DESCENDING:
        setSortDirection(1);
        return true;
    case cmd::ID_BROWSER_SORT_CYCLE:
        if (l.thumbnailsComplete.load() != 0) {
            l.sortKey = nextInCycle(l.sortKey);
            sortUnderLock(true);
            saveSettings();
        }
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
    const BrowserList& l = list();
    if (const int key = sortKeyOfCommand(id); key >= 0) {
        state.setCheck(l.sortKey == key);
        return true;
    }
    switch (id) {
    case cmd::ID_SORT_ASCENDING:
    case cmd::ID_SORT_DESCENDING:
        state.setCheck(l.sortDirection == (id == cmd::ID_SORT_DESCENDING ? 1 : 0));
        return true;
    case cmd::ID_LARGE_ICONS:
    case cmd::ID_SMALL_ICONS:
        state.setCheck(largeMode() == (id == cmd::ID_LARGE_ICONS));
        return true;
    case cmd::ID_DELETE:
    case cmd::ID_FILES_CUT:
    case cmd::ID_FILES_COPY:
        state.enabled = l.selectedCount() > 0;
        return true;
    case cmd::ID_MULTIPAGE_TIFF:
        state.enabled = l.selectedCount() > 0 && m_fileOps->state() == FileOperations::State::Idle;
        return true;
    case cmd::ID_FILES_PASTE:
        state.enabled = m_fileOps->canPaste(l.currentFolder);
        return true;
    case cmd::ID_FILES_PASTE_SHORTCUT:
        state.enabled = m_fileOps->canPasteShortcut(l.currentFolder);
        return true;
    case cmd::ID_BROWSER_REFRESH:
    case cmd::ID_BROWSER_SORT_CYCLE:
    case cmd::ID_BROWSER_TOGGLE_ICONS:
    case cmd::ID_SELECT_ALL:
    case cmd::ID_INVERT_SELECTION:
        state.enabled = true;
        return true;
    default:
        return false;
    }
}

// Deleting

void CView1::deleteSelection(bool forGood) {
    const std::vector<QString> selected = list().selectedPaths();
    if (selected.empty())
        return;
    if (!FileDeleter::deletePaths(this, QStringList(selected.begin(), selected.end()), forGood))
        return;
    BrowserList& l = list();
    l.stopRequest.store(BrowserList::kStopAbandon);
    std::unique_lock lock(l.lock());
    // Only what is really gone: the user may have kept some files.
    l.removeSelectedGone();
    m_images.clear();
    relayout();
    endListChange(lock);
    Q_EMIT statusChanged();
}

int CView1::deleteFile(const QString& path, bool forGood) {
    if (!FileDeleter::deletePaths(this, QStringList{path}, forGood))
        return -1;
    BrowserList& l = list();
    l.stopRequest.store(BrowserList::kStopAbandon);
    std::unique_lock lock(l.lock());
    const int index = l.removePath(path);
    if (index >= 0) {
        m_images.clear();
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

    const auto& items = list().items();
    const int n = static_cast<int>(items.size());
    const QPoint offset = scrollOffset();
    if (m_columns > 0 && n > 0) {
        // Only the cells under the exposed area: a folder may hold tens of thousands.
        const QSize cell = GridLayout::cellSize(largeMode());
        const QRect doc = exposed.translated(offset);
        const int firstRow = std::max(0, doc.top() / cell.height());
        const int lastRow = std::min(m_rows - 1, doc.bottom() / cell.height());
        const int firstColumn = std::max(0, doc.left() / cell.width());
        const int lastColumn = std::min(m_columns - 1, doc.right() / cell.width());
        for (int row = firstRow; row <= lastRow; ++row) {
            for (int column = firstColumn; column <= lastColumn; ++column) {
                const int k = row * m_columns + column;
                if (k < n)
                    drawCell(painter, *items[k], offset);
            }
        }
    }

    if (m_banding) {
        // Inverting, so the outline shows on any thumbnail.
        painter.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
        painter.setPen(QPen(Qt::white, 0, Qt::DotLine));
        painter.setBrush(Qt::NoBrush);
        const QRect band = bandRect().translated(-offset);
        painter.drawRect(band.adjusted(0, 0, -1, -1));
    }
}

void CView1::drawCell(QPainter& painter, const BrowserItem& item, QPoint offset) {
    const bool large = largeMode();
    const QRect cell = item.cell(large).translated(-offset);
    const int inset = large ? GridLayout::kLargeInset : GridLayout::kSmallInset;
    const bool selected = item.selected();
    if (selected)
        painter.fillRect(cell.adjusted(inset, inset, -inset, -inset),
                         palette().color(QPalette::Highlight));

    if (const QImage* image = thumbnailImage(item)) {
        const int box = large ? ThumbnailMaker::kLargeBox : ThumbnailMaker::kSmallBox;
        painter.drawImage(QPoint(cell.left() + inset + (box - image->width()) / 2,
                                 cell.top() + inset + (box - image->height()) / 2),
                          *image);
    }

    const QRect text =
        large ? QRect(cell.left() + 5, cell.top() + cell.height() - 25, cell.width() - 10, 20)
              : QRect(cell.left() + 40, cell.top() + 4, cell.width() - 44, cell.height() - 8);
    const QString name =
        painter.fontMetrics().elidedText(fileName(item.path), Qt::ElideRight, text.width());
    painter.setPen(selected ? Qt::white : Qt::black);
    painter.drawText(
        text, Qt::TextSingleLine | Qt::AlignVCenter | (large ? Qt::AlignHCenter : Qt::AlignLeft),
        name);
}

const QImage* CView1::thumbnailImage(const BrowserItem& item) {
    // The done bit, read with acquire order, is what makes the worker's pixels visible.
    if (!item.thumbnailDone())
        return nullptr;
    const Thumbnail& t = largeMode() ? item.large : item.small;
    if (t.empty() || t.width <= 0 || t.height <= 0 || t.width > kMaxThumbnailSide ||
        t.height > kMaxThumbnailSide)
        return nullptr;
    if (CachedImage* cached = m_images.object(&item); cached && cached->source == t.pixels.data())
        return &cached->image;
    const std::uint64_t stride = Thumbnail::stride(t.width);
    if (t.pixels.size() < stride * static_cast<std::uint64_t>(t.height))
        return nullptr;
    // The rows are bottom-up B, G, R: wrap them, then flip into a picture that draws fast.
    const QImage wrapped(t.pixels.data(), t.width, t.height, static_cast<qsizetype>(stride),
                         QImage::Format_BGR888);
    auto entry = std::make_unique<CachedImage>();
    entry->image = wrapped.mirrored().convertToFormat(QImage::Format_RGB32);
    entry->source = t.pixels.data();
    const auto cost = std::max<qsizetype>(1, entry->image.sizeInBytes());
    CachedImage* raw = entry.get();
    if (!m_images.insert(&item, entry.release(), cost))
        return nullptr;
    return &raw->image;
}

void CView1::updateCell(int index) {
    const auto& items = list().items();
    if (index < 0 || index >= static_cast<int>(items.size()))
        return;
    viewport()->update(items[index]->cell(largeMode()).translated(-scrollOffset()));
}

// Mouse and keys

void CView1::clearSelection() {
    const auto& items = list().items();
    for (int k = 0; k < static_cast<int>(items.size()); ++k) {
        if (items[k]->selected()) {
            items[k]->setSelected(false);
            updateCell(k);
        }
    }
}

QRect CView1::bandRect() const {
    // Exclusive of the far edges, so a band of no width selects nothing.
    const QPoint topLeft(std::min(m_anchor.x(), m_current.x()),
                         std::min(m_anchor.y(), m_current.y()));
    const QPoint farCorner(std::max(m_anchor.x(), m_current.x()),
                           std::max(m_anchor.y(), m_current.y()));
    return QRect(topLeft, QSize(farCorner.x() - topLeft.x(), farCorner.y() - topLeft.y()));
}

void CView1::updateBandFrame(const QRect& band) {
    const QRect r = band.translated(-scrollOffset());
    const QRect outer = r.adjusted(-1, -1, 1, 1);
    viewport()->update(QRect(outer.left(), outer.top(), outer.width(), 3));
    viewport()->update(QRect(outer.left(), outer.bottom() - 2, outer.width(), 3));
    viewport()->update(QRect(outer.left(), outer.top(), 3, outer.height()));
    viewport()->update(QRect(outer.right() - 2, outer.top(), 3, outer.height()));
}

void CView1::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::RightButton) {
        // The context menu acts on what was clicked: an unselected picture becomes the
        // selection.
        const int k = GridLayout::hitTest(list(), event->position().toPoint() + scrollOffset());
        if (k >= 0 && !list().items()[k]->selected()) {
            clearSelection();
            list().items()[k]->setSelected(true);
            updateCell(k);
            Q_EMIT statusChanged();
        }
    }
    if (event->button() != Qt::LeftButton) {
        QAbstractScrollArea::mousePressEvent(event);
        return;
    }
    const QPoint pos = event->position().toPoint();
    m_dragCandidate = false;
    const int k = GridLayout::hitTest(list(), pos + scrollOffset());
    if (k < 0) {
        m_banding = true;
        m_anchor = m_current = pos + scrollOffset();
        return;
    }
    BrowserItem& item = *list().items()[k];
    if (!item.selected()) {
        if (!(event->modifiers() & Qt::ControlModifier))
            clearSelection();
        item.setSelected(true);
        updateCell(k);
        Q_EMIT statusChanged();
    }
    m_dragCandidate = true;
    m_pressPos = pos;
}

void CView1::mouseMoveEvent(QMouseEvent* event) {
    const QPoint pos = event->position().toPoint();
    if (m_dragCandidate && (event->buttons() & Qt::LeftButton)) {
        const QPoint moved = pos - m_pressPos;
        if (std::abs(moved.x()) > kDragHalfSquare || std::abs(moved.y()) > kDragHalfSquare) {
            m_dragCandidate = false;
            startDrag();
        }
        return;
    }
    if (m_banding)
        dragBand(pos + scrollOffset(), event->modifiers() & Qt::ControlModifier);
}

void CView1::dragBand(QPoint documentPoint, bool adding) {
    updateBandFrame(bandRect());
    m_current = documentPoint;
    const QRect band = bandRect();
    updateBandFrame(band);

    const bool large = largeMode();
    const auto& items = list().items();
    bool changed = false;
    for (int k = 0; k < static_cast<int>(items.size()); ++k) {
        BrowserItem& item = *items[k];
        const bool inside = item.cell(large).intersects(band);
        if (inside == item.selected() || (!inside && adding))
            continue;
        item.setSelected(inside);
        updateCell(k);
        changed = true;
    }
    if (changed)
        Q_EMIT statusChanged();
}

void CView1::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        if (m_banding) {
            m_banding = false;
            viewport()->update();
        }
        m_dragCandidate = false;
    }
    QAbstractScrollArea::mouseReleaseEvent(event);
}

void CView1::startDrag() {
    const std::vector<QString> paths = list().selectedPaths();
    if (paths.empty())
        return;
    // The clipboard's formats, so a file manager takes the drop as it takes a paste.
    std::unique_ptr<QMimeData> mime =
        FileListData::encode(QStringList(paths.begin(), paths.end()), effect::kCopyAndLink);
    auto* drag = new QDrag(this); // parented: Qt may still use it while exec() returns
    drag->setMimeData(mime.release());
    m_dragging = true;
    drag->exec(Qt::CopyAction | Qt::MoveAction | Qt::LinkAction);
    m_dragging = false;
    drag->deleteLater();
}

std::uint32_t CView1::dragOverEffect(const QDropEvent* event) const {
    return DropRules::dragOverEffect(!list().currentFolder.isEmpty(),
                                     FileListData::offersFiles(event->mimeData()), m_dragging,
                                     DropRules::keyState(event->modifiers()));
}

void CView1::dragEnterEvent(QDragEnterEvent* event) {
    dragMoveEvent(event);
}

void CView1::dragMoveEvent(QDragMoveEvent* event) {
    const std::uint32_t e = dragOverEffect(event);
    if (e == effect::kNone) {
        event->ignore();
        return;
    }
    event->setDropAction(DropRules::action(e));
    event->accept();
}

void CView1::dropEvent(QDropEvent* event) {
    const std::uint32_t e = dragOverEffect(event);
    if (e == effect::kNone) {
        event->ignore();
        return;
    }
    DropRequest request;
    request.folder = list().currentFolder;
    request.files = FileListData::decode(event->mimeData());
    request.effect = e;
    event->setDropAction(DropRules::action(e));
    event->accept();
    postDrop(std::move(request));
}

void CView1::postDrop(DropRequest request) {
    postMessage(this, msg::BROWSER_DEFERRED_DROP, 0, static_cast<qintptr>(request.effect),
                makePayload(std::move(request)));
}

void CView1::deferredDrop(PostedMessage& message) {
    // A drop from this view arrives while its drag loop still runs: wait for it to end.
    if (m_dragging) {
        std::unique_ptr<DropRequest> request = message.takePayload<DropRequest>();
        if (request)
            QTimer::singleShot(50, this,
                               [this, r = *request]() mutable { postDrop(std::move(r)); });
        return;
    }
    if (const DropRequest* request = message.payload<DropRequest>())
        m_fileOps->drop(*request);
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
    const auto& items = list().items();
    const BrowserItem* only = nullptr;
    for (const auto& item : items) {
        if (!item->selected())
            continue;
        if (only)
            return;
        only = item.get();
    }
    if (only)
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
