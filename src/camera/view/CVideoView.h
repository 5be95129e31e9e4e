#pragma once

#include "camera/view/FrameScaler.h"
#include "camera/view/VideoGeometry.h"
#include "dscap/dscap.h"
#include "platform/ReceiverRegistry.h"

#include <QPoint>
#include <QWidget>

class ICameraControl;

namespace lanmira {

class CVideoFrame;

// The live picture of the camera frame, centred at the frame's zoom, with the two regions
// of interest on top: white balance in red, automatic exposure in green. Dragging a region
// moves it, dragging one of its eight handles resizes it; each change goes to the camera
// at once.
class CVideoView final : public QWidget {
    Q_OBJECT
public:
    enum class Region { WhiteBalance, Exposure };

    explicit CVideoView(CVideoFrame& frame);
    ~CVideoView() override;

    // The receiver context the capture library posts to.
    void* receiverContext() const { return m_receiver.context(); }

    // The panels switch the regions on and off.
    void showRegion(Region which, bool show);
    bool regionShown(Region which) const;
    RegionF region(Region which) const;
    void setRegion(Region which, const RegionF& region);
    // Reads both regions back from the camera (after it opened, its size or flips changed).
    void readRegionsFromCamera();

    QRect pictureRect() const;
    // Frames painted since the view was made, for the shown-rate figures.
    quint64 paintedFrames() const { return m_paintedFrames; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void customEvent(QEvent* event) override;

private:
    struct RegionState {
        bool shown = false;
        RegionF region;
        int drag = -1; // -1 none, 0 move, 1..8 a handle
    };

    RegionState& state(Region which);
    const RegionState& state(Region which) const;
    RegionI screenRegion(const RegionState& r) const;
    void paintRegion(class QPainter& painter, const RegionState& r, const QColor& colour,
                     const QString& label) const;
    void paintStrips(QPainter& painter, const QRect& area, const QRect& picture) const;
    void sendRegion(Region which);
    int hitAt(QPoint point, Region& which) const;

    static void drawFrame(void* context, const dscap_image* image);

    CVideoFrame& m_frame;
    ReceiverRegistration m_receiver{this};
    RegionState m_whiteBalance;
    RegionState m_exposure;
    QPoint m_dragStart;
    QPoint m_dragLast;
    FrameScaler m_scaler;
    QRect m_drawTarget; // where drawFrame puts the picture, during a paint
    class QPainter* m_drawPainter = nullptr;
    quint64 m_paintedFrames = 0;
};

} // namespace lanmira
