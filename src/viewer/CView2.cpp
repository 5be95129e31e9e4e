#include "viewer/CView2.h"

#include "acquire/ClipboardImage.h"
#include "browser/BrowserList.h"
#include "i18n/i18n.h"
#include "platform/CommandIds.h"
#include "platform/PostedMessage.h"
#include "platform/TextFormat.h"
#include "viewer/CSaveAsDlg.h"
#include "viewer/ImageTransforms.h"
#include "viewer/PicturePrinter.h"
#include "viewer/ViewerCommands.h"
#include "viewer/ViewerHost.h"
#include "viewer/ViewerReceiver.h"

#include <QGuiApplication>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyle>

#include <algorithm>

namespace lanmira {

namespace {

using Step = ImageNavigator::Step;

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
    m_display.pictureChanged();
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
        PicturePrinter(this, m_document, m_display).print();
        break;
    case cmd::ID_FILE_PRINT_PREVIEW:
        PicturePrinter(this, m_document, m_display).preview();
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
    return ViewerCommands::update(id, state, m_document, m_navigator, m_zoom, m_trackMode);
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
        if (m_display.smooth(m_document.image()))
            viewport()->update(pictureRectOnViewport());
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
    switch (m_display.ensure(m_document.image(), picture, visible)) {
    case PictureDisplay::Sampled::Kept:
        break;
    case PictureDisplay::Sampled::Quick:
        m_smoothTimer.stop();
        break;
    case PictureDisplay::Sampled::SmoothLater:
        m_smoothTimer.start(0, this);
        break;
    }
    for (const QRect& band : QRegion(area).subtracted(QRegion(visible)))
        painter.fillRect(band, face);
    const QRect target = visible & area;
    const QImage& image = m_display.image();
    if (image.isNull())
        painter.fillRect(target, face);
    else
        painter.drawImage(target, image, target.translated(-visible.topLeft()));
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
