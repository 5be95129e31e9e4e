#pragma once

#include "platform/CommandTarget.h"
#include "viewer/DocumentUi.h"
#include "viewer/ImageDocument.h"
#include "viewer/ImageNavigator.h"
#include "viewer/ZoomGeometry.h"

#include <QAbstractScrollArea>
#include <QBasicTimer>
#include <QImage>

#include <cstdint>
#include <vector>

class QPrinter;

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

    // The rows the sampler reads: the picture's own, or a 24-bit copy for what it cannot
    // read directly (16 bits, bit fields, compression, top-down rows, core headers).
    struct Source {
        const std::uint8_t* bottomRow = nullptr;
        qsizetype stride = 0;
        int width = 0;
        int height = 0;
        int bitCount = 0;
        QRgb palette[256] = {};
    };

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
    void print();
    void printPreview();
    void printPicture(QPrinter* printer);
    void inform(int icon, const QString& text);

    bool readSource(Source& source);
    // The part `part` (in displayed-picture coordinates) of the picture scaled to
    // `displayed`, into `out`.
    void sampleNearest(const Source& source, QSize displayed, QRect part, QImage& out);
    void sampleSmooth(const Source& source, QSize displayed, QRect part, QImage& out);
    const std::uint8_t* bgrRow(const Source& source, int sourceRow, int from, int to);
    void ensureDisplay(QRect pictureRect, QRect visible);
    void smoothDisplay();

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

    // Drawing cache. A picture's block may be reused by the next one, so pictures are told
    // apart by a counter, not by their address.
    std::uint64_t m_generation = 1;
    PackedDib m_converted;
    std::uint64_t m_convertedGeneration = 0;
    QImage m_display;
    std::uint64_t m_displayGeneration = 0;
    QSize m_displaySize; // the displayed size it was sampled for
    QRect m_displayPart; // the part of it that m_display holds
    bool m_displaySmooth = false;
    QBasicTimer m_smoothTimer;
    std::vector<std::uint32_t> m_columns; // per display column: source byte offset
    std::vector<std::uint16_t> m_sums;    // smoothing: one row of column sums
    std::vector<std::uint8_t> m_expanded; // smoothing: one source row as 24-bit
};

} // namespace lanmira
