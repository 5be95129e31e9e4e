#include "browser/grid/GridPainter.h"

#include "browser/BrowserList.h"
#include "browser/grid/GridLayout.h"
#include "browser/thumbnails/ThumbnailMaker.h"

#include <QPainter>

#include <algorithm>
#include <cstdint>
#include <memory>

namespace lanmira {
namespace {

// Converted thumbnails kept for drawing, in bytes: some screens full of large ones.
constexpr int kImageCacheBytes = 48 * 1024 * 1024;
// Sanity bound on a thumbnail's side; anything larger did not come from the maker.
constexpr int kMaxThumbnailSide = 1024;

QString fileName(const QString& path) {
    return path.mid(path.lastIndexOf(u'/') + 1);
}

} // namespace

GridPainter::GridPainter() : m_images(kImageCacheBytes) {}

void GridPainter::paintCells(QPainter& painter, const BrowserList& list, const Grid& grid,
                             QRect exposed, const Colours& colours) {
    const auto& items = list.items();
    const int n = static_cast<int>(items.size());
    if (grid.columns <= 0 || n <= 0)
        return;
    const QSize cell = GridLayout::cellSize(grid.large);
    const QRect doc = exposed.translated(grid.offset);
    const int firstRow = std::max(0, doc.top() / cell.height());
    const int lastRow = std::min(grid.rows - 1, doc.bottom() / cell.height());
    const int firstColumn = std::max(0, doc.left() / cell.width());
    const int lastColumn = std::min(grid.columns - 1, doc.right() / cell.width());
    for (int row = firstRow; row <= lastRow; ++row) {
        for (int column = firstColumn; column <= lastColumn; ++column) {
            const int k = row * grid.columns + column;
            if (k < n)
                drawCell(painter, *items[k], grid, colours);
        }
    }
}

void GridPainter::drawCell(QPainter& painter, const BrowserItem& item, const Grid& grid,
                           const Colours& colours) {
    const bool large = grid.large;
    const QRect cell = item.cell(large).translated(-grid.offset);
    const int inset = large ? GridLayout::kLargeInset : GridLayout::kSmallInset;
    const bool selected = item.selected();
    if (selected)
        painter.fillRect(cell.adjusted(inset, inset, -inset, -inset), colours.highlight);

    if (const QImage* image = thumbnailImage(item, large)) {
        const int box = large ? ThumbnailMaker::kLargeBox : ThumbnailMaker::kSmallBox;
        painter.drawImage(QPoint(cell.left() + inset + (box - image->width()) / 2,
                                 cell.top() + inset + (box - image->height()) / 2),
                          *image);
    }

    const QRect text =
        large ? QRect(cell.left() + 5, cell.top() + cell.height() - 25, cell.width() - 10, 20)
              : QRect(cell.left() + 40, cell.top() + 4, cell.width() - 44, cell.height() - 8);
    const QString name =
        painter.fontMetrics().elidedText(fileName(item.path), Qt::ElideRight, text.width());
    painter.setPen(selected ? Qt::white : Qt::black);
    painter.drawText(
        text, Qt::TextSingleLine | Qt::AlignVCenter | (large ? Qt::AlignHCenter : Qt::AlignLeft),
        name);
}

const QImage* GridPainter::thumbnailImage(const BrowserItem& item, bool large) {
    // The done bit, read with acquire order, is what makes the worker's pixels visible.
    if (!item.thumbnailDone())
        return nullptr;
    const Thumbnail& t = large ? item.large : item.small;
    if (t.empty() || t.width <= 0 || t.height <= 0 || t.width > kMaxThumbnailSide ||
        t.height > kMaxThumbnailSide)
        return nullptr;
    if (CachedImage* cached = m_images.object(&item); cached && cached->source == t.pixels.data())
        return &cached->image;
    const std::uint64_t stride = Thumbnail::stride(t.width);
    if (t.pixels.size() < stride * static_cast<std::uint64_t>(t.height))
        return nullptr;
    // The rows are bottom-up B, G, R: wrap them, then flip into a picture that draws fast.
    const QImage wrapped(t.pixels.data(), t.width, t.height, static_cast<qsizetype>(stride),
                         QImage::Format_BGR888);
    auto entry = std::make_unique<CachedImage>();
    entry->image = wrapped.mirrored().convertToFormat(QImage::Format_RGB32);
    entry->source = t.pixels.data();
    const auto cost = std::max<qsizetype>(1, entry->image.sizeInBytes());
    CachedImage* raw = entry.get();
    if (!m_images.insert(&item, entry.release(), cost))
        return nullptr;
    return &raw->image;
}

} // namespace lanmira
