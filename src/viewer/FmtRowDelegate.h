#pragma once

#include <QPixmap>
#include <QStyledItemDelegate>

namespace lanmira {

// Draws the file format list's cells: the name and the extensions as one elided line, and
// an unticked or ticked 16 x 16 box centred in each of the three box columns.
class FmtRowDelegate final : public QStyledItemDelegate {
    Q_OBJECT
public:
    explicit FmtRowDelegate(QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    // The unticked (0) or ticked (1) box image.
    QPixmap box(int ticked) const;

private:
    QPixmap m_boxes; // both images side by side, 32 x 16, red masked out
};

} // namespace lanmira
