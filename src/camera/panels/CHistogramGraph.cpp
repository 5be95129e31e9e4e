#include "camera/panels/CHistogramGraph.h"

#include "camera/panels/HistogramGeometry.h"
#include "i18n/i18n.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QPixmap>

namespace lanmira {
namespace {

const QColor kChannelColours[4] = {QColor(0, 0, 255), QColor(0, 255, 0), QColor(255, 0, 0),
                                   QColor(192, 192, 192)};

} // namespace

CHistogramGraph::CHistogramGraph(QWidget* parent) : QWidget(parent) {
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    // The markers are dragged here; the edits beside the graph set the same edges by keys.
    setAccessibleName(i18n_stringW("ids_calvora_camerapane_histogram"));
}

void CHistogramGraph::paintGraph(QPainter& p, const QRect& area, const HistogramPicture& pic,
                                 int dragging, int dragX) {
    const HistogramGeometry g(area);
    const QRect graph = g.graph();
    p.fillRect(area, Qt::white);
    p.setPen(Qt::black);
    p.setBrush(Qt::NoBrush);
    p.drawRect(area.adjusted(0, 0, -1, -1));

    QFont font = QApplication::font("QMenu");
    font.setPixelSize(9);
    p.setFont(font);
    const int bottom = graph.top() + graph.height();
    for (int value : {50, 100, 150, 200}) {
        const int x = g.tickX(value);
        p.drawLine(x, bottom, x, bottom + 4);
        p.drawText(QRect(x - 100, bottom + 4, 200, 16), Qt::AlignCenter, QString::number(value));
    }
    p.drawText(QRect(area.left() + 2, bottom + 4, area.width() - 4, 16),
               Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("0"));
    p.drawText(QRect(area.left() + 2, bottom + 4, area.width() - 4, 16),
               Qt::AlignRight | Qt::AlignVCenter, QStringLiteral("255"));

    if (!pic.attached || !g.usable())
        return;
    p.setPen(Qt::NoPen);
    auto draw = [&](int channel) {
        const auto points = g.polygon(pic.bins[static_cast<std::size_t>(channel)].data());
        if (points.empty())
            return;
        p.setBrush(kChannelColours[channel]);
        p.drawPolygon(points.data(), static_cast<int>(points.size()), Qt::WindingFill);
    };
    if (pic.channel == HistogramLevels::kAllColours) {
        for (int c = 0; c < 3; ++c)
            draw(c);
    } else {
        draw(pic.channel);
    }

    p.setPen(QPen(QColor(255, 0, 255), 1));
    const int lowX = dragging == Low ? dragX : g.xOfLevel(pic.levels.lowEdge(pic.channel));
    const int highX = dragging == High ? dragX : g.xOfLevel(pic.levels.highEdge(pic.channel));
    p.drawLine(lowX, graph.top(), lowX, bottom - 1);
    p.drawLine(highX, graph.top(), highX, bottom - 1);
}

void CHistogramGraph::paintEvent(QPaintEvent*) {
    // Drawn whole off-screen and shown in one step, so the 10 Hz updates never flicker.
    QPixmap buffer(size() * devicePixelRatioF());
    buffer.setDevicePixelRatio(devicePixelRatioF());
    {
        QPainter off(&buffer);
        paintGraph(off, rect(), m_picture, m_drag, m_dragX);
    }
    QPainter p(this);
    p.drawPixmap(0, 0, buffer);
}

CHistogramGraph::Drag CHistogramGraph::markerAt(int x) const {
    const HistogramGeometry g(rect());
    if (!m_picture.attached || !g.usable())
        return None;
    // Dragging is for the channel the camera delivers: grey with grey output, colours else.
    const bool greyChannel = m_picture.channel == HistogramLevels::kGrey;
    if (greyChannel != m_picture.grey)
        return None;
    if (g.onMarker(g.xOfLevel(m_picture.levels.lowEdge(m_picture.channel)), x))
        return Low;
    if (g.onMarker(g.xOfLevel(m_picture.levels.highEdge(m_picture.channel)), x))
        return High;
    return None;
}

void CHistogramGraph::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    const int x = event->position().toPoint().x();
    m_drag = markerAt(x);
    m_dragX = x;
}

void CHistogramGraph::mouseMoveEvent(QMouseEvent* event) {
    const int x = event->position().toPoint().x();
    if (m_drag == None) {
        setCursor(markerAt(x) != None ? Qt::SizeHorCursor : Qt::ArrowCursor);
        return;
    }
    const QRect graph = HistogramGeometry(rect()).graph();
    if (x >= graph.left() && x <= graph.left() + graph.width()) {
        m_dragX = x;
        update();
    }
}

void CHistogramGraph::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || m_drag == None)
        return;
    const Drag drag = m_drag;
    m_drag = None;
    const int level = HistogramGeometry(rect()).levelOfX(m_dragX);
    Q_EMIT markerDropped(drag == Low, level);
    update();
}

} // namespace lanmira
