#include "viewer/CView2.h"

#include "acquire/ClipboardImage.h"
#include "acquire/DibLayout.h"
#include "browser/BrowserList.h"
#include "i18n/i18n.h"
#include "platform/CommandIds.h"
#include "platform/PostedMessage.h"
#include "platform/TextFormat.h"
#include "viewer/CSaveAsDlg.h"
#include "viewer/ImageTransforms.h"
#include "viewer/ViewerHost.h"
#include "viewer/ViewerReceiver.h"

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QScrollBar>
#include <QStyle>

#include <algorithm>
#include <cstring>

using namespace Qt::StringLiterals;

namespace lanmira {

namespace {

using Step = ImageNavigator::Step;

constexpr QRgb kOpaque = 0xFF000000u;

// The source column or row that display position `d` of `displayed` falls on.
int sourceIndex(int d, int source, int displayed) {
    const auto s = static_cast<std::int64_t>(d) * source / displayed;
    return static_cast<int>(std::min<std::int64_t>(s, source - 1));
}

// The box of source positions that display position `d` averages: at least one.
std::pair<int, int> sourceBox(int d, int source, int displayed) {
    const int from = sourceIndex(d, source, displayed);
    const auto to = static_cast<int>(static_cast<std::int64_t>(d + 1) * source / displayed);
    return {from, std::max(from + 1, std::min(to, source))};
}

// Sums of the box's rows are kept in 16 bits: at most this many rows of 255 fit.
constexpr int kMaxBoxRows = 257;

// sums[k] += row[k]: the bulk of the averaging, so 16 bytes at a time.
void addRow(std::uint16_t* sums, const std::uint8_t* row, std::size_t n) {
    std::size_t k = 0;
#if defined(__GNUC__)
    using Bytes = std::uint8_t __attribute__((vector_size(16)));
    using Words = std::uint16_t __attribute__((vector_size(32)));
    for (; k + 16 <= n; k += 16) {
        Bytes b;
        Words w;
        std::memcpy(&b, row + k, sizeof b);
        std::memcpy(&w, sums + k, sizeof w);
        w += __builtin_convertvector(b, Words);
        std::memcpy(sums + k, &w, sizeof w);
    }
#endif
    for (; k < n; ++k)
        sums[k] = static_cast<std::uint16_t>(sums[k] + row[k]);
}

} // namespace

CView2::CView2(ViewerHost& host, QWidget* parent)
    : QAbstractScrollArea(parent), m_host(host), m_navigator(BrowserList::instance()) {
    m_trackMode = m_host.readTrackMode() != 0 ? 1 : 0;
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    // The bands and the picture cover every pixel, and the picture area is never erased
    // first, so a repaint does not flicker.
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    viewport()->setAutoFillBackground(false);
    // The scrollable extent stays 0 x 0 for good: no scroll bar ever shows, a picture
    // larger than the window is clipped at its right and bottom, and the hand tool only
    // acts where a scroll bar exists. Long-standing behaviour that users know; keep it.
    horizontalScrollBar()->setRange(0, 0);
    verticalScrollBar()->setRange(0, 0);
    updateCursor();
}

CView2::~CView2() {
    m_host.writeTrackMode(m_trackMode);
    if (m_receiver)
        ViewerReceiver::clear();
}

// Document

void CView2::openFile(const QString& path, const QString& linkTarget) {
    apply(m_document.open(path, linkTarget));
}

void CView2::adopt(PackedDib picture) {
    apply(m_document.adopt(std::move(picture)));
}

void CView2::becomeReceiver() {
    ViewerReceiver::set(
        [this](const QString& path, const QString& linkTarget) { openFile(path, linkTarget); });
    m_receiver = true;
}

void CView2::withdrawReceiver() {
    ViewerReceiver::clear();
    m_receiver = false;
}

bool CView2::closeDocument() {
    if (!m_document.close())
        return false;
    withdrawReceiver();
    apply(ImageDocument::Result::Emptied);
    return true;
}

void CView2::release() {
    m_document.clear();
    withdrawReceiver();
    apply(ImageDocument::Result::Emptied);
}

void CView2::apply(ImageDocument::Result result) {
    if (result == ImageDocument::Result::Unchanged)
        return;
    pictureChanged();
    if (result == ImageDocument::Result::Shown)
        m_zoom.applyFitMode(pictureSize(), client());
    updateCursor();
    viewport()->update();
    Q_EMIT statusChanged();
}

void CView2::pictureChanged() {
    ++m_generation;
    m_converted.reset();
    m_smoothTimer.stop();
}

QSize CView2::pictureSize() const {
    return m_document.hasPicture() ? QSize(m_document.width(), m_document.height()) : QSize();
}

QString CView2::paneText(int paneId) const {
    switch (paneId) {
    case cmd::ID_PANE_PATH:
        return m_document.pathText();
    case cmd::ID_PANE_SIZE:
        return m_document.sizeText();
    case cmd::ID_PANE_DEPTH:
        return m_document.depthText();
    case cmd::ID_PANE_PAGE:
        return m_document.pageText();
    case cmd::ID_PANE_ZOOM:
        return formatText(i18n_stringW("ids_calvora_zoom"),
                          {static_cast<double>(m_zoom.zoomPercent())});
    default:
        return {};
    }
}

// Commands

bool CView2::onCommand(int id) {
    const QSize picture = pictureSize();
    bool repaint = false;
    switch (id) {
    case cmd::ID_FILE_OPEN: {
        stopSlideShow();
        const QString path = m_host.chooseFileToOpen(this);
        if (!path.isEmpty())
            apply(m_document.openFromDialog(path));
        break;
    }
    case cmd::ID_FILE_SAVE:
        stopSlideShow();
        m_document.save();
        break;
    case cmd::ID_FILE_SAVE_AS:
        stopSlideShow();
        m_document.saveAs();
        break;
    case cmd::ID_DELETE:
        deleteShown();
        break;
    case cmd::ID_PAGE_FIRST:
        apply(m_document.firstPage());
        break;
    case cmd::ID_PAGE_PREVIOUS:
        apply(m_document.previousPage());
        break;
    case cmd::ID_PAGE_NEXT:
        apply(m_document.nextPage());
        break;
    case cmd::ID_PAGE_LAST:
        apply(m_document.lastPage());
        break;
    case cmd::ID_FILE_PRINT:
        print();
        break;
    case cmd::ID_FILE_PRINT_PREVIEW:
        printPreview();
        break;
    case cmd::ID_COPY_IMAGE:
        copyImage();
        break;
    case cmd::ID_TRACK:
        stopSlideShow();
        m_trackMode = m_trackMode == 1 ? 0 : 1;
        updateCursor();
        break;
    case cmd::ID_ZOOM_BEST_FIT:
        repaint = m_zoom.bestFit(picture, client());
        break;
    case cmd::ID_ZOOM_ACTUAL_SIZE:
        repaint = m_zoom.setZoom(1, 1, picture);
        break;
    case cmd::ID_ZOOM_LOCK:
        repaint = m_zoom.toggleLock(picture, client());
        break;
    case cmd::ID_ZOOM_AUTO_SHRINK:
        repaint = m_zoom.toggleAutoShrink(picture, client());
        break;
    case cmd::ID_ZOOM_AUTO_ENLARGE:
        repaint = m_zoom.toggleAutoEnlarge(picture, client());
        break;
    case cmd::ID_ROTATE_CCW:
        runTransform(rotateCounterClockwise);
        break;
    case cmd::ID_ROTATE_CW:
        runTransform(rotateClockwise);
        break;
    case cmd::ID_ROTATE_180:
        runTransform(rotate180);
        break;
    case cmd::ID_FLIP_HORIZONTAL:
        runTransform(mirrorLeftRight);
        break;
    case cmd::ID_FLIP_VERTICAL:
        runTransform(mirrorTopBottom);
        break;
    case cmd::ID_IMAGE_FIRST:
        stepImage(Step::First);
        break;
    case cmd::ID_IMAGE_PREVIOUS:
        stepImage(Step::Previous);
        break;
    case cmd::ID_IMAGE_NEXT:
        stepImage(Step::Next);
        break;
    case cmd::ID_IMAGE_LAST:
        stepImage(Step::Last);
        break;
    case cmd::ID_NEXT_PAGE_OR_IMAGE:
        stopSlideShow();
        if (m_document.hasNextPage())
            apply(m_document.nextPage());
        else
            m_navigator.step(Step::Next);
        break;
    case cmd::ID_PREVIOUS_PAGE_OR_IMAGE:
        stopSlideShow();
        if (m_document.hasPreviousPage())
            apply(m_document.previousPage());
        else
            m_navigator.step(Step::Previous);
        break;
    case cmd::ID_SLIDE_SHOW:
        m_document.slideShowRunning = !m_document.slideShowRunning;
        if (m_document.slideShowRunning)
            m_slideTimer.start(static_cast<int>(m_host.slideDelay()), this);
        break;
    default:
        return false;
    }
    if (repaint)
        viewport()->update();
    Q_EMIT statusChanged();
    return true;
}

bool CView2::onUpdateCommand(int id, CommandState& state) {
    const bool picture = m_document.hasPicture();
    switch (id) {
    case cmd::ID_FILE_OPEN:
        state.enabled = true;
        break;
    case cmd::ID_FILE_SAVE:
        state.enabled = m_document.canSave();
        break;
    case cmd::ID_FILE_SAVE_AS:
        state.enabled = m_document.canSaveAs();
        break;
    case cmd::ID_DELETE:
        state.enabled = m_document.canDelete();
        break;
    case cmd::ID_PAGE_FIRST:
        state.enabled = m_document.canFirstPage();
        break;
    case cmd::ID_PAGE_PREVIOUS:
        state.enabled = m_document.canPreviousPage();
        break;
    case cmd::ID_PAGE_NEXT:
        state.enabled = m_document.canNextPage();
        break;
    case cmd::ID_PAGE_LAST:
        state.enabled = m_document.canLastPage();
        break;
    case cmd::ID_FILE_PRINT:
    case cmd::ID_FILE_PRINT_PREVIEW:
    case cmd::ID_COPY_IMAGE:
    case cmd::ID_ZOOM_BEST_FIT:
    case cmd::ID_ROTATE_CCW:
    case cmd::ID_ROTATE_CW:
    case cmd::ID_ROTATE_180:
    case cmd::ID_FLIP_HORIZONTAL:
    case cmd::ID_FLIP_VERTICAL:
        state.enabled = picture;
        break;
    case cmd::ID_TRACK:
        state.enabled = picture;
        state.setCheck(m_trackMode == 1);
        break;
    case cmd::ID_ZOOM_ACTUAL_SIZE:
        state.enabled = picture && !m_zoom.actualSize();
        break;
    case cmd::ID_ZOOM_LOCK:
        state.setCheck(m_zoom.locked());
        break;
    case cmd::ID_ZOOM_AUTO_SHRINK:
        state.enabled = picture;
        state.setCheck(m_zoom.fitMode() & ZoomGeometry::kAutoShrink);
        break;
    case cmd::ID_ZOOM_AUTO_ENLARGE:
        state.enabled = picture;
        state.setCheck(m_zoom.fitMode() & ZoomGeometry::kAutoEnlarge);
        break;
    case cmd::ID_IMAGE_FIRST:
        state.enabled = m_navigator.canStep(Step::First);
        break;
    case cmd::ID_IMAGE_PREVIOUS:
        state.enabled = m_navigator.canStep(Step::Previous);
        break;
    case cmd::ID_IMAGE_NEXT:
        state.enabled = m_navigator.canStep(Step::Next);
        break;
    case cmd::ID_IMAGE_LAST:
        state.enabled = m_navigator.canStep(Step::Last);
        break;
    case cmd::ID_NEXT_PAGE_OR_IMAGE:
        state.enabled = m_document.canNextPage() || m_navigator.canStep(Step::Next);
        break;
    case cmd::ID_PREVIOUS_PAGE_OR_IMAGE:
        state.enabled = m_document.canPreviousPage() || m_navigator.canStep(Step::Previous);
        break;
    case cmd::ID_SLIDE_SHOW:
        state.setCheck(m_document.slideShowRunning);
        break;
    default:
        return false;
    }
    return true;
}

void CView2::runTransform(PackedDib (*transform)(const PackedDib&)) {
    stopSlideShow();
    if (!m_document.hasPicture())
        return;
    // An empty result means memory ran short: the picture stays as it was.
    PackedDib turned = transform(m_document.image());
    if (!turned.isNull())
        apply(m_document.replacePicture(std::move(turned)));
}

void CView2::stepImage(Step step) {
    stopSlideShow();
    m_navigator.step(step);
}

void CView2::deleteShown() {
    stopSlideShow();
    const bool forGood = QGuiApplication::keyboardModifiers() & Qt::ShiftModifier;
    const int position = m_document.deleteShown(
        [this, forGood](const QString& path) { return m_host.deleteFile(path, forGood); });
    if (position < 0)
        return;
    pictureChanged();
    viewport()->repaint();
    Q_EMIT statusChanged();
    m_navigator.showPosition(position);
}

void CView2::copyImage() {
    if (m_document.hasPicture())
        copyDibToClipboard(m_document.image());
}

void CView2::restartSlideTimerIfRunning() {
    if (m_document.slideShowRunning)
        m_slideTimer.start(static_cast<int>(m_host.slideDelay()), this);
}

void CView2::slideTick() {
    // Ticks that arrive while a step is still running (a message box of a file that
    // failed to open) find the flag clear and pass.
    if (!m_document.slideShowRunning)
        return;
    m_document.slideShowRunning = false;
    if (m_document.hasNextPage())
        apply(m_document.nextPage());
    else
        m_navigator.step(Step::Next);
    m_document.slideShowRunning = true;
    Q_EMIT statusChanged();
}

// Events

void CView2::timerEvent(QTimerEvent* event) {
    if (event->timerId() == m_slideTimer.timerId()) {
        slideTick();
        return;
    }
    if (event->timerId() == m_smoothTimer.timerId()) {
        m_smoothTimer.stop();
        smoothDisplay();
        return;
    }
    QAbstractScrollArea::timerEvent(event);
}

void CView2::customEvent(QEvent* event) {
    PostedMessage* m = PostedMessage::from(event);
    if (m && m->message() == msg::VIEWER_SELECT_SHOWN_FILE) {
        if (!m_document.filePath().isEmpty())
            m_navigator.selectShownFile(m_document.filePath());
        return;
    }
    QAbstractScrollArea::customEvent(event);
}

void CView2::keyPressEvent(QKeyEvent* event) {
    // Arrow keys scroll one line through the scroll bars' own handling.
    QAbstractScrollArea::keyPressEvent(event);
}

void CView2::resizeEvent(QResizeEvent* event) {
    // A new size does not fit the picture again; it stays centred at its zoom.
    QAbstractScrollArea::resizeEvent(event);
    updateCursor();
    viewport()->update();
}

void CView2::scrollContentsBy(int /*dx*/, int /*dy*/) {
    viewport()->update();
}

// Geometry and the hand tool

ViewClient CView2::client() const {
    ViewClient c;
    c.size = viewport()->size();
    c.horizontalBar = horizontalScrollBar()->isVisibleTo(this);
    c.verticalBar = verticalScrollBar()->isVisibleTo(this);
    const int extent = style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this);
    c.horizontalBarHeight = extent;
    c.verticalBarWidth = extent;
    return c;
}

QPoint CView2::scrollPosition() const {
    return {horizontalScrollBar()->value(), verticalScrollBar()->value()};
}

bool CView2::hasScrollBar() const {
    return horizontalScrollBar()->isVisibleTo(this) || verticalScrollBar()->isVisibleTo(this);
}

QRect CView2::pictureRectOnViewport() const {
    return m_zoom.pictureRect(pictureSize(), viewport()->size()).translated(-scrollPosition());
}

bool CView2::hitPicture(QPoint viewportPoint) const {
    return m_zoom.pictureRect(pictureSize(), viewport()->size())
        .contains(viewportPoint + scrollPosition());
}

void CView2::updateCursor() {
    if (m_dragging)
        return;
    if (m_trackMode == 0)
        viewport()->setCursor(Qt::ArrowCursor);
    else if (m_trackMode == 1)
        viewport()->setCursor(hasScrollBar() ? Qt::OpenHandCursor : Qt::ArrowCursor);
    else
        viewport()->unsetCursor();
}

void CView2::mousePressEvent(QMouseEvent* event) {
    const QPoint at = event->position().toPoint();
    if (event->button() == Qt::LeftButton && hitPicture(at) && m_trackMode == 1 && hasScrollBar()) {
        m_dragging = true;
        m_dragMoved = false;
        m_dragLast = at;
        viewport()->setCursor(Qt::ClosedHandCursor);
        return;
    }
    QAbstractScrollArea::mousePressEvent(event);
}

void CView2::mouseMoveEvent(QMouseEvent* event) {
    if (!m_dragging) {
        QAbstractScrollArea::mouseMoveEvent(event);
        return;
    }
    const QPoint at = event->position().toPoint();
    const QPoint delta = at - m_dragLast;
    m_dragLast = at;
    if (delta.isNull())
        return;
    QScrollBar* h = horizontalScrollBar();
    QScrollBar* v = verticalScrollBar();
    const QPoint now = scrollPosition();
    // An axis without a scroll bar stays at 0.
    h->setValue(h->isVisibleTo(this) ? std::max(0, now.x() - delta.x()) : 0);
    v->setValue(v->isVisibleTo(this) ? std::max(0, now.y() - delta.y()) : 0);
    m_dragMoved = true;
}

void CView2::mouseReleaseEvent(QMouseEvent* event) {
    if (!m_dragging || event->button() != Qt::LeftButton) {
        QAbstractScrollArea::mouseReleaseEvent(event);
        return;
    }
    m_dragging = false;
    updateCursor();
    if (m_dragMoved)
        viewport()->update();
}

// Drawing

void CView2::paintEvent(QPaintEvent* event) {
    const QRect area = event->rect();
    if (area.isEmpty())
        return;
    QPainter painter(viewport());
    const QColor face = palette().color(QPalette::Button);
    const QRect picture = pictureRectOnViewport();
    const QRect visible = picture & viewport()->rect();
    if (visible.isEmpty()) {
        painter.fillRect(area, face);
        return;
    }
    ensureDisplay(picture, visible);
    for (const QRect& band : QRegion(area).subtracted(QRegion(visible)))
        painter.fillRect(band, face);
    const QRect target = visible & area;
    if (m_display.isNull())
        painter.fillRect(target, face);
    else
        painter.drawImage(target, m_display, target.translated(-visible.topLeft()));
}

void CView2::ensureDisplay(QRect pictureRect, QRect visible) {
    const QRect part = visible.translated(-pictureRect.topLeft());
    if (m_displayGeneration == m_generation && m_displaySize == pictureRect.size() &&
        m_displayPart == part && !m_display.isNull())
        return;
    m_smoothTimer.stop();
    m_displayGeneration = m_generation;
    m_displaySize = pictureRect.size();
    m_displayPart = part;
    m_displaySmooth = false;
    Source source;
    if (!readSource(source)) {
        m_display = QImage();
        return;
    }
    sampleNearest(source, m_displaySize, part, m_display);
    // A reduced picture shows its detail better averaged; that follows as soon as the
    // first, quick version is on screen.
    if (m_displaySize.width() < source.width || m_displaySize.height() < source.height)
        m_smoothTimer.start(0, this);
}

void CView2::smoothDisplay() {
    if (m_displayGeneration != m_generation || m_displaySmooth || m_display.isNull())
        return;
    Source source;
    if (!readSource(source))
        return;
    sampleSmooth(source, m_displaySize, m_displayPart, m_display);
    m_displaySmooth = true;
    viewport()->update(pictureRectOnViewport());
}

bool CView2::readSource(Source& source) {
    const PackedDib& picture = m_document.image();
    auto layout = DibLayout::read(picture.data(), picture.size());
    if (!layout)
        return false;
    const int depth = layout->bitCount;
    const bool direct = !layout->coreHeader && !layout->topDown &&
                        layout->compression == DibLayout::kRgb &&
                        (depth == 1 || depth == 4 || depth == 8 || depth == 24 || depth == 32);
    const std::uint8_t* block = picture.data();
    std::uint64_t offset = 0;
    if (direct) {
        // The rows lie where drawing has always looked for them; a block too short for
        // that falls back to where they really are.
        offset = dibPixelOffsetForDrawing(picture);
        if (offset + layout->stride * static_cast<std::uint64_t>(layout->height) > picture.size())
            offset = layout->pixelOffset;
        std::fill(std::begin(source.palette), std::end(source.palette), kOpaque);
        const std::uint8_t* table = block + layout->headerSize + layout->maskBytes;
        for (std::uint32_t i = 0; i < layout->usablePaletteEntries(); ++i)
            source.palette[i] = qRgb(table[4 * i + 2], table[4 * i + 1], table[4 * i]);
    } else {
        if (m_convertedGeneration != m_generation) {
            m_converted = dibToRgb24(picture);
            m_convertedGeneration = m_generation;
        }
        layout = DibLayout::read(m_converted.data(), m_converted.size());
        if (!layout)
            return false;
        block = m_converted.data();
        offset = layout->pixelOffset;
    }
    source.bottomRow = block + offset;
    source.stride = static_cast<qsizetype>(layout->stride);
    source.width = layout->width;
    source.height = layout->height;
    source.bitCount = layout->bitCount;
    return true;
}

void CView2::sampleNearest(const Source& source, QSize displayed, QRect part, QImage& out) {
    if (out.size() != part.size() || out.format() != QImage::Format_RGB32)
        out = QImage(part.size(), QImage::Format_RGB32);
    if (out.isNull())
        return;
    const int bytesPerPixel = source.bitCount / 8;
    m_columns.resize(static_cast<std::size_t>(part.width()));
    for (int i = 0; i < part.width(); ++i) {
        const int sx = sourceIndex(part.left() + i, source.width, displayed.width());
        // Whole bytes for 24 and 32 bits; the pixel index for the palette depths.
        m_columns[i] = static_cast<std::uint32_t>(bytesPerPixel >= 3 ? sx * bytesPerPixel : sx);
    }
    const std::uint32_t* cols = m_columns.data();
    const QRgb* palette = source.palette;
    const int n = part.width();
    int lastRow = -1;
    for (int j = 0; j < part.height(); ++j) {
        auto* dst = reinterpret_cast<QRgb*>(out.scanLine(j));
        const int sy = sourceIndex(part.top() + j, source.height, displayed.height());
        if (sy == lastRow) {
            // Enlarged pictures repeat rows.
            std::memcpy(dst, out.constScanLine(j - 1), static_cast<std::size_t>(n) * 4);
            continue;
        }
        lastRow = sy;
        const std::uint8_t* row = source.bottomRow + (source.height - 1 - sy) * source.stride;
        switch (source.bitCount) {
        case 24:
        case 32:
            for (int i = 0; i < n; ++i) {
                const std::uint8_t* p = row + cols[i];
                dst[i] = kOpaque | (QRgb{p[2]} << 16) | (QRgb{p[1]} << 8) | p[0];
            }
            break;
        case 8:
            for (int i = 0; i < n; ++i)
                dst[i] = palette[row[cols[i]]];
            break;
        case 4:
            for (int i = 0; i < n; ++i) {
                const std::uint32_t x = cols[i];
                const std::uint8_t v = row[x >> 1];
                dst[i] = palette[(x & 1) ? (v & 15) : (v >> 4)];
            }
            break;
        case 1:
            for (int i = 0; i < n; ++i) {
                const std::uint32_t x = cols[i];
                dst[i] = palette[(row[x >> 3] >> (7 - (x & 7))) & 1];
            }
            break;
        default:
            break;
        }
    }
}

const std::uint8_t* CView2::bgrRow(const Source& source, int sourceRow, int from, int to) {
    const std::uint8_t* row = source.bottomRow + (source.height - 1 - sourceRow) * source.stride;
    if (source.bitCount == 24)
        return row + from * 3;
    m_expanded.resize(static_cast<std::size_t>(to - from) * 3);
    std::uint8_t* out = m_expanded.data();
    for (int x = from; x < to; ++x, out += 3) {
        QRgb c = 0;
        switch (source.bitCount) {
        case 32:
            out[0] = row[4 * x];
            out[1] = row[4 * x + 1];
            out[2] = row[4 * x + 2];
            continue;
        case 8:
            c = source.palette[row[x]];
            break;
        case 4:
            c = source.palette[(x & 1) ? (row[x >> 1] & 15) : (row[x >> 1] >> 4)];
            break;
        case 1:
            c = source.palette[(row[x >> 3] >> (7 - (x & 7))) & 1];
            break;
        default:
            break;
        }
        out[0] = static_cast<std::uint8_t>(qBlue(c));
        out[1] = static_cast<std::uint8_t>(qGreen(c));
        out[2] = static_cast<std::uint8_t>(qRed(c));
    }
    return m_expanded.data();
}

void CView2::sampleSmooth(const Source& source, QSize displayed, QRect part, QImage& out) {
    if (out.size() != part.size() || out.format() != QImage::Format_RGB32)
        out = QImage(part.size(), QImage::Format_RGB32);
    if (out.isNull() || part.isEmpty())
        return;
    if (source.height / displayed.height() >= kMaxBoxRows - 1) {
        sampleNearest(source, displayed, part, out);
        return;
    }
    // Each display pixel is the mean of the box of source pixels it covers: first the
    // box's rows are summed column by column, then each box's columns.
    const int first = sourceBox(part.left(), source.width, displayed.width()).first;
    const int end = sourceBox(part.right(), source.width, displayed.width()).second;
    const auto span = static_cast<std::size_t>(end - first) * 3;
    m_sums.resize(span);
    m_columns.resize(static_cast<std::size_t>(part.width()) + 1);
    for (int i = 0; i < part.width(); ++i)
        m_columns[i] = static_cast<std::uint32_t>(
            sourceBox(part.left() + i, source.width, displayed.width()).first - first);
    m_columns[part.width()] = static_cast<std::uint32_t>(end - first);
    for (int j = 0; j < part.height(); ++j) {
        const auto [y0, y1] = sourceBox(part.top() + j, source.height, displayed.height());
        std::uint16_t* sums = m_sums.data();
        std::fill(sums, sums + span, std::uint16_t{0});
        for (int y = y0; y < y1; ++y)
            addRow(sums, bgrRow(source, y, first, end), span);
        auto* dst = reinterpret_cast<QRgb*>(out.scanLine(j));
        const int rows = y1 - y0;
        int lastCount = 0;
        std::uint64_t reciprocal = 0;
        for (int i = 0; i < part.width(); ++i) {
            const std::uint32_t x0 = m_columns[i];
            // Each box ends where the next one begins.
            const std::uint32_t x1 = std::max(x0 + 1, m_columns[i + 1]);
            std::uint32_t b = 0, g = 0, r = 0;
            for (std::uint32_t x = x0; x < x1; ++x) {
                b += sums[3 * x];
                g += sums[3 * x + 1];
                r += sums[3 * x + 2];
            }
            const int count = static_cast<int>(x1 - x0) * rows;
            if (count != lastCount) {
                lastCount = count;
                reciprocal = ((std::uint64_t{1} << 32) + count / 2) / count;
            }
            const auto mean = [&](std::uint32_t sum) {
                return std::min<QRgb>(255,
                                      static_cast<QRgb>((sum * reciprocal + (1ull << 31)) >> 32));
            };
            dst[i] = kOpaque | (mean(r) << 16) | (mean(g) << 8) | mean(b);
        }
    }
}

// Printing

namespace {

// Without an installed printer the output goes to a PDF file beside the picture's name,
// which the print dialog offers as its print-to-file choice.
void prepare(QPrinter& printer, const QString& filePath, const QString& untitled) {
    const QFileInfo file(filePath);
    const QString name = file.completeBaseName().isEmpty() ? untitled : file.completeBaseName();
    printer.setDocName(name);
    if (printer.outputFormat() == QPrinter::PdfFormat && printer.outputFileName().isEmpty())
        printer.setOutputFileName(QDir::current().absoluteFilePath(name + u".pdf"_s));
}

} // namespace

void CView2::print() {
    if (!m_document.hasPicture())
        return;
    QPrinter printer(QPrinter::HighResolution);
    prepare(printer, m_document.filePath(), i18n_stringW("ids_lanmira_savefile"));
    QPrintDialog dialog(&printer, this);
    dialog.setOption(QAbstractPrintDialog::PrintToFile, true);
    if (dialog.exec() == QDialog::Accepted)
        printPicture(&printer);
}

void CView2::printPreview() {
    if (!m_document.hasPicture())
        return;
    QPrinter printer(QPrinter::HighResolution);
    prepare(printer, m_document.filePath(), i18n_stringW("ids_lanmira_savefile"));
    QPrintPreviewDialog preview(&printer, this);
    connect(&preview, &QPrintPreviewDialog::paintRequested, this,
            [this](QPrinter* p) { printPicture(p); });
    preview.exec();
}

void CView2::printPicture(QPrinter* printer) {
    Source source;
    if (!readSource(source))
        return;
    QPainter painter;
    if (!painter.begin(printer))
        return;
    const QRect page = painter.viewport();
    const QSize size = QSize(source.width, source.height).scaled(page.size(), Qt::KeepAspectRatio);
    const QRect target(page.left() + (page.width() - size.width()) / 2,
                       page.top() + (page.height() - size.height()) / 2, size.width(),
                       size.height());
    // At most the picture's own resolution; the printer's device scales the rest.
    const QSize sampled = size.boundedTo(QSize(source.width, source.height));
    QImage image;
    if (sampled.width() < source.width)
        sampleSmooth(source, sampled, QRect(QPoint(0, 0), sampled), image);
    else
        sampleNearest(source, sampled, QRect(QPoint(0, 0), sampled), image);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.drawImage(target, image);
}

// Questions and messages

void CView2::inform(int icon, const QString& text) {
    QMessageBox box(static_cast<QMessageBox::Icon>(icon), i18n_stringW("ids_lanmira_appname"), text,
                    QMessageBox::Ok, this);
    box.exec();
}

bool CView2::promptEnabled() const {
    return m_host.promptToSave();
}

void CView2::openFailed(const QString& errorText) {
    inform(QMessageBox::Warning, errorText);
}

void CView2::pageFailed(const QString& errorText) {
    inform(QMessageBox::Information, errorText);
}

bool CView2::confirmMultipage() {
    QMessageBox box(QMessageBox::Information, i18n_stringW("ids_lanmira_appname"),
                    i18n_stringW("ids_lanmira_multipage"), QMessageBox::Ok | QMessageBox::Cancel,
                    this);
    return box.exec() == QMessageBox::Ok;
}

void CView2::saveFailed(const QString& text) {
    inform(QMessageBox::Warning, text);
}

DocumentUi::Answer CView2::askToSave(const QString& name) {
    QMessageBox box(QMessageBox::Warning, i18n_stringW("ids_lanmira_appname"),
                    formatText(i18n_stringW("ids_lanmira_savechanges"), {name}),
                    QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, this);
    box.setDefaultButton(QMessageBox::Yes);
    switch (box.exec()) {
    case QMessageBox::Yes:
        return Answer::Yes;
    case QMessageBox::No:
        return Answer::No;
    default:
        return Answer::Cancel;
    }
}

std::optional<DocumentUi::SaveAsChoice> CView2::chooseSaveAs(const PackedDib& picture,
                                                             const QString& proposedName) {
    return CSaveAsDlg::run(this, picture, proposedName);
}

} // namespace lanmira
