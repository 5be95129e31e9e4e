#include "viewer/FormatListLogic.h"

namespace lanmira {

namespace {

// Widths of the five columns in pixels.
constexpr int kWidths[FormatListLogic::ColumnCount] = {170, 220, 48, 40, 116};

// The exclusive right and bottom edges of a cell, as the box centring is computed on them.
int centreLess8(int from, int extent) {
    return (from + (from + extent)) / 2 - FormatListLogic::kBoxSize / 2;
}

} // namespace

std::vector<FormatListLogic::Row> FormatListLogic::describedRows(InfoFn info) {
    std::vector<Row> rows;
    for (int format = 0; format < 16; ++format)
        if (const ImageLibFmtInfo* record = info(format))
            rows.push_back({record->format, QString::fromUtf8(record->name ? record->name : "")});
    return rows;
}

QString FormatListLogic::extensions(std::uint32_t format, const ImageLibExtFmt* table) {
    QString text;
    // A row of format 0 ends the walk, even before the table's own end.
    for (const ImageLibExtFmt* row = table; row && row->ext && row->format != 0; ++row) {
        if (row->format != format)
            continue;
        if (!text.isEmpty())
            text += QStringLiteral("; ");
        text += QStringLiteral("*.") + QString::fromUtf8(row->ext);
    }
    return text;
}

int FormatListLogic::columnWidth(int column) {
    return column >= 0 && column < ColumnCount ? kWidths[column] : 0;
}

bool FormatListLogic::centred(int column) {
    return column >= Listed && column < ColumnCount;
}

QRect FormatListLogic::boxRect(const QRect& cell) {
    return {centreLess8(cell.x(), cell.width()), centreLess8(cell.y(), cell.height()), kBoxSize,
            kBoxSize};
}

int FormatListLogic::bitAt(const QPoint& point, const std::array<QRect, 3>& boxCells) {
    if (boxRect(boxCells[0]).contains(point))
        return 0;
    if (boxRect(boxCells[1]).contains(point))
        return 1;
    if (boxRect(boxCells[2]).contains(point))
        return 2;
    return -1;
}

bool FormatListLogic::ticked(std::uint32_t format, int bit) const {
    return format < m_words.size() && bit >= 0 && bit < 3 && (m_words[format] >> bit) & 1;
}

bool FormatListLogic::toggle(std::uint32_t format, int bit) {
    if (format >= m_words.size() || bit < 0 || bit > 2)
        return false;
    m_words[format] ^= 1u << bit;
    return true;
}

void FormatListLogic::setDefaults() {
    m_words.fill(kDefaultWord);
}

} // namespace lanmira
