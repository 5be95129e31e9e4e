#include "camera/view/CVideoView.h"

#include "camera/frame/CVideoFrame.h"
#include "camera/view/RegionEditor.h"
#include "dscap/ICameraControl.h"
#include "dscap/dscap.h"
#include "i18n/i18n.h"
#include "platform/Messages.h"
#include "platform/PostedMessage.h"

#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QWheelEvent>

#include <cmath>

namespace lanmira {
namespace {

constexpr float kMinimalMove = 0.01f;

} // namespace

CVideoView::CVideoView(CVideoFrame& frame) : QWidget(&frame), m_frame(frame) {
    setObjectName(QStringLiteral("videoView"));
    // The picture covers its rectangle on every paint; only the strips around it are
    // cleared, so the live picture never flickers.
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::ArrowCursor);
    setAccessibleName(i18n_stringW("ids_video"));
}

CVideoView::~CVideoView() = default;

CVideoView::RegionState& CVideoView::state(Region which) {
    return which == Region::WhiteBalance ? m_whiteBalance : m_exposure;
}

const CVideoView::RegionState& CVideoView::state(Region which) const {
    return which == Region::WhiteBalance ? m_whiteBalance : m_exposure;
}

void CVideoView::showRegion(Region which, bool show) {
    RegionState& r = state(which);
    if (r.shown == show)
        return;
    r.shown = show;
    r.drag = RegionEditor::kNone;
    update();
}

bool CVideoView::regionShown(Region which) const {
    return state(which).shown;
}

RegionF CVideoView::region(Region which) const {
    return state(which).region;
}

void CVideoView::setRegion(Region which, const RegionF& region) {
    state(which).region = region;
    update();
}

void CVideoView::readRegionsFromCamera() {
    ICameraControl* control = m_frame.session().control();
    const QSize video = m_frame.videoSize();
    if (!control || video.isEmpty())
        return;
    std::int32_t h = 0, v = 0;
    const bool hflip = control->GetHorizontalFlip(&h) >= 0 && h != 0;
    const bool vflip = control->GetVerticalFlip(&v) >= 0 && v != 0;
    RegionI r;
    if (control->GetWhiteBalanceRegion(&r.left, &r.top, &r.right, &r.bottom) >= 0)
        m_whiteBalance.region =
            RegionEditor::fromCamera(r, hflip, vflip, video.width(), video.height());
    if (control->GetAutoExposureRegion(&r.left, &r.top, &r.right, &r.bottom) >= 0)
        m_exposure.region =
            RegionEditor::fromCamera(r, hflip, vflip, video.width(), video.height());
    update();
}

QRect CVideoView::pictureRect() const {
    const VideoZoom zoom = m_frame.zoom();
    return VideoGeometry::pictureRect(size(), m_frame.videoSize(), zoom.numerator,
                                      zoom.denominator);
}

RegionI CVideoView::screenRegion(const RegionState& r) const {
    const VideoZoom zoom = m_frame.zoom();
    return VideoGeometry::screenRegion(r.region, pictureRect(), zoom.numerator, zoom.denominator);
}

void CVideoView::drawFrame(void* context, const dscap_image* image) {
    auto* self = static_cast<CVideoView*>(context);
    const QImage& shown = self->m_scaler.scale(image->bgr, image->width, image->height,
                                               image->stride, self->m_drawTarget.size());
    if (!shown.isNull())
        self->m_drawPainter->drawImage(self->m_drawTarget.topLeft(), shown);
    ++self->m_paintedFrames;
}

void CVideoView::paintStrips(QPainter& painter, const QRect& area, const QRect& picture) const {
    const QColor workspace = palette().color(QPalette::Dark);
    if (picture.isEmpty()) {
        painter.fillRect(area, workspace);
        return;
    }
    const QRect client = rect();
    const QRect strips[] = {
        QRect(QPoint(client.left(), client.top()), QPoint(picture.left() - 1, client.bottom())),
        QRect(QPoint(picture.left(), client.top()), QPoint(picture.right(), picture.top() - 1)),
        QRect(QPoint(picture.right() + 1, client.top()), QPoint(client.right(), client.bottom())),
        QRect(QPoint(picture.left(), picture.bottom() + 1),
              QPoint(picture.right(), client.bottom())),
    };
    for (const QRect& strip : strips) {
        const QRect part = strip.intersected(area);
        if (!part.isEmpty())
            painter.fillRect(part, workspace);
    }
}

void CVideoView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    const dscap_handle handle = m_frame.session().handle();
    if (!handle) {
        painter.fillRect(event->rect(), palette().color(QPalette::Button));
        m_frame.paintNotice(painter, rect());
        return;
    }
    const QRect picture = pictureRect();
    paintStrips(painter, event->rect(), picture);
    if (!picture.isEmpty() && picture.intersects(event->rect())) {
        m_drawTarget = picture;
        m_drawPainter = &painter;
        // Before the first frame there is nothing to draw: the rectangle keeps the
        // workspace colour until it comes.
        if (!dscap_draw(handle, &CVideoView::drawFrame, this))
            painter.fillRect(picture.intersected(event->rect()), palette().color(QPalette::Dark));
        m_drawPainter = nullptr;
    }
    if (m_whiteBalance.shown)
        paintRegion(painter, m_whiteBalance, QColor(255, 0, 0), i18n_stringW("ids_whitebalance"));
    if (m_exposure.shown)
        paintRegion(painter, m_exposure, QColor(0, 255, 0), i18n_stringW("ids_exposure"));
    m_frame.paintNotice(painter, rect());
}

void CVideoView::paintRegion(QPainter& painter, const RegionState& r, const QColor& colour,
                             const QString& label) const {
    const RegionI s = screenRegion(r);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colour, 1));
    // The outline covers the pixels from left/top up to one before right/bottom.
    painter.drawRect(s.left, s.top, std::max(0, s.right - s.left - 1),
                     std::max(0, s.bottom - s.top - 1));

    // Handles invert what lies under them, so they show on any picture.
    painter.setCompositionMode(QPainter::RasterOp_NotDestination);
    painter.setPen(QPen(Qt::white, 1));
    for (int code = 1; code <= 8; ++code) {
        const QPoint p = VideoGeometry::handlePoint(s, code);
        painter.drawRect(p.x() - 3, p.y() - 3, 6, 6);
    }
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);

    painter.setPen(colour);
    painter.setFont(font());
    const QRect strip(QPoint(s.left, 0), QPoint(std::max(s.left, s.right - 1), s.top - 1));
    painter.drawText(strip, Qt::AlignLeft | Qt::AlignBottom | Qt::TextSingleLine | Qt::TextDontClip,
                     label);
    painter.restore();
}

int CVideoView::hitAt(QPoint point, Region& which) const {
    // Where both overlap, the white balance region wins.
    if (m_whiteBalance.shown) {
        const int code = RegionEditor::hitTest(screenRegion(m_whiteBalance), point);
        if (code >= 0) {
            which = Region::WhiteBalance;
            return code;
        }
    }
    if (m_exposure.shown) {
        const int code = RegionEditor::hitTest(screenRegion(m_exposure), point);
        if (code >= 0) {
            which = Region::Exposure;
            return code;
        }
    }
    return RegionEditor::kNone;
}

void CVideoView::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::MiddleButton) {
        postMessage(&m_frame, msg::VIDEO_ZOOM_STEP, VideoZoom::kActual);
        return;
    }
    const QPoint point = event->position().toPoint();
    if (event->button() != Qt::LeftButton || !m_frame.session().control() ||
        !pictureRect().contains(point)) {
        QWidget::mousePressEvent(event);
        return;
    }
    m_whiteBalance.drag = RegionEditor::kNone;
    m_exposure.drag = RegionEditor::kNone;
    Region which = Region::WhiteBalance;
    const int code = hitAt(point, which);
    if (code < 0) {
        QWidget::mousePressEvent(event);
        return;
    }
    state(which).drag = code;
    m_dragStart = m_dragLast = point;
    setCursor(RegionEditor::cursor(code));
    grabMouse();
}

void CVideoView::mouseMoveEvent(QMouseEvent* event) {
    const QPoint point = event->position().toPoint();
    const bool draggingWhite = m_whiteBalance.drag >= 0;
    if (!draggingWhite && m_exposure.drag < 0) {
        // Not dragging: the cursor tells what a press here would grab.
        Region which = Region::WhiteBalance;
        const int code = pictureRect().contains(point) ? hitAt(point, which) : RegionEditor::kNone;
        setCursor(RegionEditor::cursor(code));
        return;
    }
    const VideoZoom zoom = m_frame.zoom();
    if (zoom.numerator <= 0 || zoom.denominator <= 0)
        return;
    const float dx = static_cast<float>(point.x() - m_dragLast.x()) *
                     static_cast<float>(zoom.denominator) / static_cast<float>(zoom.numerator);
    const float dy = static_cast<float>(point.y() - m_dragLast.y()) *
                     static_cast<float>(zoom.denominator) / static_cast<float>(zoom.numerator);
    m_dragLast = point;
    if (std::fabs(dx) < kMinimalMove && std::fabs(dy) < kMinimalMove)
        return;

    const Region which = draggingWhite ? Region::WhiteBalance : Region::Exposure;
    RegionState& r = state(which);
    const QSize video = m_frame.videoSize();
    if (r.drag == RegionEditor::kMove) {
        if (!RegionEditor::move(r.region, dx, dy, video.width(), video.height()))
            return;
    } else {
        r.drag = RegionEditor::resize(r.region, r.drag, dx, dy, video.width(), video.height());
        setCursor(RegionEditor::cursor(r.drag));
    }
    sendRegion(which);
    update();
}

void CVideoView::sendRegion(Region which) {
    ICameraControl* control = m_frame.session().control();
    if (!control)
        return;
    const QSize video = m_frame.videoSize();
    std::int32_t h = 0, v = 0;
    const bool hflip = control->GetHorizontalFlip(&h) >= 0 && h != 0;
    const bool vflip = control->GetVerticalFlip(&v) >= 0 && v != 0;
    const RegionI c =
        RegionEditor::toCamera(state(which).region, hflip, vflip, video.width(), video.height());
    if (which == Region::WhiteBalance)
        control->SetWhiteBalanceRegion(c.left, c.top, c.right, c.bottom);
    else
        control->SetAutoExposureRegion(c.left, c.top, c.right, c.bottom);
}

void CVideoView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        QWidget::mouseReleaseEvent(event);
        return;
    }
    releaseMouse();
    m_whiteBalance.drag = RegionEditor::kNone;
    m_exposure.drag = RegionEditor::kNone;
}

void CVideoView::wheelEvent(QWheelEvent* event) {
    const int turn = event->angleDelta().y();
    if (turn == 0) {
        QWidget::wheelEvent(event);
        return;
    }
    postMessage(&m_frame, msg::VIDEO_ZOOM_STEP,
                turn > 0 ? VideoZoom::kZoomIn : VideoZoom::kZoomOut);
}

void CVideoView::customEvent(QEvent* event) {
    PostedMessage* m = PostedMessage::from(event);
    if (!m) {
        QWidget::customEvent(event);
        return;
    }
    switch (m->message()) {
    case msg::CAPTURE_NOTIFY:
        if (const dscap_handle h = m_frame.session().handle();
            h && (dscap_notify(h, m->wParam(), m->lParam()) & DSCAP_NOTIFY_REPAINT))
            update(pictureRect());
        break;
    case msg::CAPTURE_RECORDING:
        m_frame.recordingChanged();
        break;
    case msg::CAPTURE_VIDEO_SIZE:
        postMessage(&m_frame, msg::CAPTURE_VIDEO_SIZE, m->wParam(), m->lParam());
        break;
    default:
        QWidget::customEvent(event);
        break;
    }
}

} // namespace lanmira
