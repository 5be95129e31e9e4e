#pragma once

#include "viewer/PictureSampler.h"

#include <QImage>
#include <QRect>
#include <QSize>

#include <cstdint>

namespace lanmira {

// The visible part of the shown picture at its displayed size, sampled once and kept until
// the picture, the zoom or the visible part changes.
class PictureDisplay {
public:
    enum class Sampled {
        Kept,        // what is held still fits
        Quick,       // sampled again, nearest pixel
        SmoothLater, // sampled quickly; a reduced picture wants smooth() next
    };

    // A picture's block may be reused by the next one, so pictures are told apart by a
    // counter, not by their address.
    void pictureChanged();

    // `pictureRect` is the whole displayed picture and `visible` the part of it to hold,
    // both in viewport coordinates.
    Sampled ensure(const PackedDib& picture, QRect pictureRect, QRect visible);
    // Replaces the quick version with box means. True when it did.
    bool smooth(const PackedDib& picture);
    // Null when the picture could not be read.
    const QImage& image() const { return m_image; }

    bool readable(const PackedDib& picture);
    // The picture fitted to `page`, centred; at most its own resolution, since the printer
    // scales the rest. False when it cannot be read.
    bool forPrinting(const PackedDib& picture, QRect page, QRect& target, QImage& image);

private:
    PictureSampler m_sampler;
    std::uint64_t m_generation = 1;
    QImage m_image;
    std::uint64_t m_imageGeneration = 0;
    QSize m_size; // the displayed size it was sampled for
    QRect m_part; // the part of it that m_image holds
    bool m_smooth = false;
};

} // namespace lanmira
