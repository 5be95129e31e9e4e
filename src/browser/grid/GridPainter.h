#pragma once

#include <QCache>
#include <QColor>
#include <QImage>
#include <QPoint>
#include <QRect>

class QPainter;

namespace lanmira {

class BrowserList;
struct BrowserItem;

// Draws the grid's cells: the highlight, the thumbnail centred in its box and the elided
// file name. Keeps the thumbnails converted for drawing, by item.
class GridPainter {
public:
    struct Grid {
        int columns = 0;
        int rows = 0;
        bool large = false;
        QPoint offset; // the scroll position: document minus viewport coordinates
    };
    struct Colours {
        QColor highlight;
    };

    GridPainter();

    // Only the cells under `exposed` (viewport coordinates): a folder may hold tens of
    // thousands.
    void paintCells(QPainter& painter, const BrowserList& list, const Grid& grid, QRect exposed,
                    const Colours& colours);
    void drawCell(QPainter& painter, const BrowserItem& item, const Grid& grid,
                  const Colours& colours);
    // The item's thumbnail ready to draw; null while it has none, or none that is sound.
    const QImage* thumbnailImage(const BrowserItem& item, bool large);
    // To be called whenever items may have been freed or their thumbnails dropped.
    void forgetImages() { m_images.clear(); }

private:
    struct CachedImage {
        QImage image;
        const void* source = nullptr; // the pixels it was made from
    };

    QCache<const BrowserItem*, CachedImage> m_images;
};

} // namespace lanmira
