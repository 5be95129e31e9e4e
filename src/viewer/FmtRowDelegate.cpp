#include "viewer/FmtRowDelegate.h"

#include "viewer/FormatListLogic.h"

#include <QBitmap>
#include <QPainter>

namespace lanmira {

namespace {

// Unticked box, then ticked box; pure red is the transparent colour.
const char* const kBoxes[] = {
    "32 16 4 1",
    "r c #FF0000",
    "g c #606060",
    "w c #FFFFFF",
    "k c #000000",
    "rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrr",
    "rggggggggggggggrrggggggggggggggr",
    "rgwwwwwwwwwwwwgrrgwwwwwwwwwwwwgr",
    "rgwwwwwwwwwwwwgrrgwwwwwwwwwwwwgr",
    "rgwwwwwwwwwwwwgrrgwwwwwwwwwkwwgr",
    "rgwwwwwwwwwwwwgrrgwwwwwwwwkkwwgr",
    "rgwwwwwwwwwwwwgrrgwwwwwwwkkkwwgr",
    "rgwwwwwwwwwwwwgrrgwwkwwwkkkwwwgr",
    "rgwwwwwwwwwwwwgrrgwwkkwkkkwwwwgr",
    "rgwwwwwwwwwwwwgrrgwwkkkkkwwwwwgr",
    "rgwwwwwwwwwwwwgrrgwwwkkkwwwwwwgr",
    "rgwwwwwwwwwwwwgrrgwwwwkwwwwwwwgr",
    "rgwwwwwwwwwwwwgrrgwwwwwwwwwwwwgr",
    "rgwwwwwwwwwwwwgrrgwwwwwwwwwwwwgr",
    "rggggggggggggggrrggggggggggggggr",
    "rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrr",
};

} // namespace

FmtRowDelegate::FmtRowDelegate(QObject* parent) : QStyledItemDelegate(parent), m_boxes(kBoxes) {
    m_boxes.setMask(m_boxes.createMaskFromColor(QColor(255, 0, 0), Qt::MaskInColor));
}

QPixmap FmtRowDelegate::box(int ticked) const {
    constexpr int size = FormatListLogic::kBoxSize;
    return m_boxes.copy(ticked ? size : 0, 0, size, size);
}

void FmtRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                           const QModelIndex& index) const {
    const bool selected = option.state & QStyle::State_Selected;
    const QPalette& palette = option.palette;
    painter->save();
    painter->fillRect(option.rect, selected ? palette.highlight() : palette.base());
    const int column = index.column();
    if (column < FormatListLogic::Listed) {
        const QRect text = option.rect.adjusted(2, 0, -4, 0);
        painter->setPen(selected ? palette.highlightedText().color() : palette.text().color());
        painter->setFont(option.font);
        const QString elided =
            option.fontMetrics.elidedText(index.data().toString(), Qt::ElideRight, text.width());
        painter->drawText(text, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, elided);
    } else {
        const bool on = index.data(Qt::CheckStateRole).toInt() == Qt::Checked;
        painter->drawPixmap(FormatListLogic::boxRect(option.rect).topLeft(), box(on ? 1 : 0));
    }
    if (option.state & QStyle::State_HasFocus) {
        painter->setPen(QPen(palette.text().color(), 1, Qt::DotLine));
        painter->drawRect(option.rect.adjusted(0, 0, -1, -1));
    }
    painter->restore();
}

QSize FmtRowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    size.setHeight(std::max(size.height(), FormatListLogic::kBoxSize + 4));
    return size;
}

} // namespace lanmira
