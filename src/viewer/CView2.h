#pragma once

#include "platform/CommandTarget.h"
#include "viewer/DocumentUi.h"
#include "viewer/ImageDocument.h"
#include "viewer/ImageNavigator.h"
#include "viewer/PictureDisplay.h"
#include "viewer/ZoomGeometry.h"

#include <QAbstractScrollArea>
#include <QBasicTimer>

namespace lanmira {

class ViewerHost;

// The viewer's view: one picture scaled by the zoom, centred, with the background painted
// only around it; the document, zoom, transform, page, navigation, slide show, clipboard
// and print commands.
class CView2 final : public QAbstractScrollArea, public CommandTarget, private DocumentUi {
    Q_OBJECT
public:
    static constexpr int kSlideTimerId = 8194;

    explicit CView2(ViewerHost& host, QWidget* parent = nullptr);
    ~CView2() override; // writes "OT"

    ImageDocument& document() { return m_document; }
    const ImageDocument& document() const { return m_document; }
    const ZoomGeometry& zoom() const { return m_zoom; }
    int trackMode() const { return m_trackMode; }

    // Opens a file at its first page (message 0x469, the viewer receiver, dropped files).
    void openFile(const QString& path, const QString& linkTarget = {});
    // Takes over a pasted picture as a new untitled one (message 0x46C).
    void adopt(PackedDib picture);

    // The view becomes, or stops being, the receiver of files chosen in the folder list.
    void becomeReceiver();
    void withdrawReceiver();
    // close(): the save prompt, then clear; false when the user cancelled.
    bool closeDocument();
    // release(): the same without the question.
    void release();
    // The slide delay changed: a running show continues with the new period.
    void restartSlideTimerIfRunning();

    // Status pane text by pane id (59397..59400, 59497).
    QString paneText(int paneId) const;

    bool onCommand(int id) override;
    bool onUpdateCommand(int id, CommandState& state) override;

Q_SIGNALS:
    // A status pane's text may have changed.
    void statusChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void customEvent(QEvent* event) override;

private:
    // DocumentUi
    bool promptEnabled() const override;
    void openFailed(const QString& errorText) override;
    void pageFailed(const QString& errorText) override;
    bool confirmMultipage() override;
    void saveFailed(const QString& message) override;
    Answer askToSave(const QString& name) override;
    std::optional<SaveAsChoice> chooseSaveAs(const PackedDib& picture,
                                             const QString& proposedName) override;

    // Turns what the document did into a fit and a repaint.
    void apply(ImageDocument::Result result);
    void pictureChanged();
    QSize pictureSize() const;
    ViewClient client() const;
    QPoint scrollPosition() const;
    bool hasScrollBar() const;
    // The picture rectangle in viewport coordinates.
    QRect pictureRectOnViewport() const;
    bool hitPicture(QPoint viewportPoint) const;
    void updateCursor();
    void stopSlideShow() { m_document.slideShowRunning = false; }
    void runTransform(PackedDib (*transform)(const PackedDib&));
    void slideTick();
    void stepImage(ImageNavigator::Step step);
    void deleteShown();
    void copyImage();
    void inform(int icon, const QString& text);

    ViewerHost& m_host;
    ImageDocument m_document{*this};
    ZoomGeometry m_zoom;
    ImageNavigator m_navigator;
    int m_trackMode = 1;
    QBasicTimer m_slideTimer;
    bool m_receiver = false;

    // Hand tool: the last point of the drag, in viewport coordinates.
    bool m_dragging = false;
    bool m_dragMoved = false;
    QPoint m_dragLast;

    PictureDisplay m_display;
    QBasicTimer m_smoothTimer; // the smooth version follows the quick one
};

} // namespace lanmira
