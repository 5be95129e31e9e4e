#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

#include <cstdint>

namespace lanmira {

class BrowserList;

// The grid's geometry, apart from any widget: cells of 106 × 126 (large) or 142 × 40
// (small), columns fitted to the width, and the change-check period.
class GridLayout {
public:
    static constexpr QSize kLargeCell{106, 126};
    static constexpr QSize kSmallCell{142, 40};
    static constexpr int kLargeInset = 5;
    static constexpr int kSmallInset = 4;

    struct Input {
        int itemCount = 0;
        bool largeMode = true;
        QSize client;             // the viewport
        int verticalBarWidth = 0; // of a vertical scroll bar
        bool verticalBarShown = false;
        int horizontalBarHeight = 0;
        bool horizontalBarShown = false;
    };

    struct Result {
        int columns = 0;
        int rows = 0;
        QSize scrollSize{0, 0}; // document size
    };

    static Result compute(const Input& in);
    static QSize cellSize(bool largeMode) { return largeMode ? kLargeCell : kSmallCell; }
    static QRect cellRect(int index, int columns, bool largeMode);
    // min(4000, (n / 1000 + 2) × 1000) ms.
    static int changeCheckPeriod(int itemCount);
    // (vertical scroll position / cell height) × columns, at least 0.
    static int firstVisible(int scrollY, int columns, bool largeMode);

    // Applies the layout to every item's cell of the current mode. The worker never touches
    // the order or the cells, so the user-interface thread needs no lock for this.
    static Result layOut(BrowserList& list, const Input& in);
    // The first item whose inset cell holds the document point; -1 when none.
    static int hitTest(const BrowserList& list, QPoint documentPoint);
};

} // namespace lanmira
