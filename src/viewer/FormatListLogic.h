#pragma once

#include "imagelib/imagelib.h"

#include <QPoint>
#include <QRect>
#include <QString>

#include <array>
#include <cstdint>
#include <vector>

namespace lanmira {

// What the file format list shows and how a press on it changes the words: one row per
// described format, its extensions, and three boxes for bits 0, 1 and 2 of the format's
// word. Words are found by format number, never by row, so rows and words cannot drift.
class FormatListLogic {
public:
    using Words = std::array<std::uint32_t, 16>;
    static constexpr std::uint32_t kDefaultWord = 5;
    static constexpr int kBoxSize = 16;

    enum Column { Name, Extensions, Listed, Associated, Kept, ColumnCount };

    struct Row {
        std::uint32_t format = 0;
        QString name;
    };

    using InfoFn = const ImageLibFmtInfo* (*)(int);

    // The formats 0..15 that have a description, in number order.
    static std::vector<Row> describedRows(InfoFn info = &ImageLib_GetFmtInfo);
    // "*.jpg; *.jpeg" from the rows of `format`, walking the table from its start and
    // stopping at the first row of format 0.
    static QString extensions(std::uint32_t format,
                              const ImageLibExtFmt* table = ImageLib_ExtFmt());

    static int columnWidth(int column);
    static bool centred(int column);
    // The 16 x 16 box centred in a cell whose right and bottom edges are exclusive.
    static QRect boxRect(const QRect& cell);
    // The bit a left press toggles, given the row's cells of the three box columns: the
    // boxes of columns 2 and 3 first, then column 4's; -1 when no box was hit.
    static int bitAt(const QPoint& point, const std::array<QRect, 3>& boxCells);

    explicit FormatListLogic(const Words& words) : m_words(words) {}

    const Words& words() const { return m_words; }
    bool ticked(std::uint32_t format, int bit) const;
    // False for a format number outside the table or a bit other than 0..2.
    bool toggle(std::uint32_t format, int bit);
    void setDefaults();

private:
    Words m_words;
};

} // namespace lanmira
