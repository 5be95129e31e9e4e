#include "viewer/PictureDisplay.h"

namespace lanmira {

void PictureDisplay::pictureChanged() {
    ++m_generation;
    m_sampler.forget();
}

PictureDisplay::Sampled PictureDisplay::ensure(const PackedDib& picture, QRect pictureRect,
                                               QRect visible) {
    const QRect part = visible.translated(-pictureRect.topLeft());
    if (m_imageGeneration == m_generation && m_size == pictureRect.size() && m_part == part &&
        !m_image.isNull())
        return Sampled::Kept;
    m_imageGeneration = m_generation;
    m_size = pictureRect.size();
    m_part = part;
    m_smooth = false;
    PictureSampler::Source source;
    if (!m_sampler.read(picture, m_generation, source)) {
        m_image = QImage();
        return Sampled::Quick;
    }
    m_sampler.sampleNearest(source, m_size, part, m_image);
    // A reduced picture shows its detail better averaged; that follows as soon as the
    // first, quick version is on screen.
    if (m_size.width() < source.width || m_size.height() < source.height)
        return Sampled::SmoothLater;
    return Sampled::Quick;
}

bool PictureDisplay::smooth(const PackedDib& picture) {
    if (m_imageGeneration != m_generation || m_smooth || m_image.isNull())
        return false;
    PictureSampler::Source source;
    if (!m_sampler.read(picture, m_generation, source))
        return false;
    m_sampler.sampleSmooth(source, m_size, m_part, m_image);
    m_smooth = true;
    return true;
}

bool PictureDisplay::readable(const PackedDib& picture) {
    PictureSampler::Source source;
    return m_sampler.read(picture, m_generation, source);
}

bool PictureDisplay::forPrinting(const PackedDib& picture, QRect page, QRect& target,
                                 QImage& image) {
    PictureSampler::Source source;
    if (!m_sampler.read(picture, m_generation, source))
        return false;
    const QSize size = QSize(source.width, source.height).scaled(page.size(), Qt::KeepAspectRatio);
    target = QRect(page.left() + (page.width() - size.width()) / 2,
                   page.top() + (page.height() - size.height()) / 2, size.width(), size.height());
    const QSize sampled = size.boundedTo(QSize(source.width, source.height));
    if (sampled.width() < source.width)
        m_sampler.sampleSmooth(source, sampled, QRect(QPoint(0, 0), sampled), image);
    else
        m_sampler.sampleNearest(source, sampled, QRect(QPoint(0, 0), sampled), image);
    return true;
}

} // namespace lanmira
