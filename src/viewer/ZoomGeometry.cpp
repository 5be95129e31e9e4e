#include "viewer/ZoomGeometry.h"

#include <cstdint>
#include <cstdlib>
#include <limits>

namespace lanmira {

int ZoomGeometry::mulDiv(int v, int num, int den) {
    if (den == 0)
        return -1;
    const std::int64_t product = static_cast<std::int64_t>(v) * num;
    const std::int64_t magnitude = (std::llabs(product) + std::llabs(den) / 2) / std::llabs(den);
    const std::int64_t result = (product < 0) != (den < 0) ? -magnitude : magnitude;
    if (result > std::numeric_limits<int>::max() || result < std::numeric_limits<int>::min())
        return -1;
    return static_cast<int>(result);
}

float ZoomGeometry::zoomPercent() const {
    return static_cast<float>(m_num) / static_cast<float>(m_den) * 100.0f;
}

QSize ZoomGeometry::displayedSize(QSize picture) const {
    return {mulDiv(picture.width(), m_num, m_den), mulDiv(picture.height(), m_num, m_den)};
}

QRect ZoomGeometry::pictureRect(QSize picture, QSize client) const {
    if (picture.isEmpty())
        return {};
    const QSize shown = displayedSize(picture);
    const int left = client.width() > shown.width() ? (client.width() - shown.width()) / 2 : 0;
    const int top = client.height() > shown.height() ? (client.height() - shown.height()) / 2 : 0;
    return {left, top, shown.width(), shown.height()};
}

bool ZoomGeometry::setZoom(int num, int den, QSize picture) {
    const QSize before = displayedSize(picture);
    m_num = num;
    m_den = den;
    return displayedSize(picture) != before;
}

bool ZoomGeometry::bestFit(QSize picture, const ViewClient& client) {
    if (picture.isEmpty())
        return false;
    // Fit the window as it would be without its scroll bars, which the fit may make go away.
    int width = client.size.width();
    int height = client.size.height();
    if (client.horizontalBar)
        height += client.horizontalBarHeight;
    if (client.verticalBar)
        width += client.verticalBarWidth;
    const float rx = static_cast<float>(width) / static_cast<float>(picture.width());
    const float ry = static_cast<float>(height) / static_cast<float>(picture.height());
    const float r = ry <= rx ? ry : rx;
    // Truncated, never rounded: the fitted picture must not overflow by a rounding step.
    return setZoom(static_cast<int>(r * 100.0f), 100, picture);
}

bool ZoomGeometry::applyFitMode(QSize picture, const ViewClient& client) {
    if (m_locked)
        return true;
    const QSize c = client.size;
    switch (m_fitMode) {
    case 0:
        setZoom(1, 1, picture);
        break;
    case kAutoShrink:
        if (picture.width() <= c.width() && picture.height() <= c.height())
            setZoom(1, 1, picture);
        else
            bestFit(picture, client);
        break;
    case kAutoEnlarge:
        if (picture.width() >= c.width() && picture.height() >= c.height())
            setZoom(1, 1, picture);
        else
            bestFit(picture, client);
        break;
    default:
        bestFit(picture, client);
        break;
    }
    return true;
}

bool ZoomGeometry::toggleAutoShrink(QSize picture, const ViewClient& client) {
    if (picture.isEmpty())
        return false;
    m_fitMode ^= kAutoShrink;
    m_locked = false;
    // Turning the mode off keeps the zoom where it is rather than returning to 100%.
    const QSize c = client.size;
    if ((m_fitMode & kAutoShrink) && (picture.width() > c.width() || picture.height() > c.height()))
        return bestFit(picture, client);
    return false;
}

bool ZoomGeometry::toggleAutoEnlarge(QSize picture, const ViewClient& client) {
    if (picture.isEmpty())
        return false;
    m_fitMode ^= kAutoEnlarge;
    m_locked = false;
    const QSize c = client.size;
    if ((m_fitMode & kAutoEnlarge) &&
        !(picture.width() >= c.width() && picture.height() >= c.height()))
        return bestFit(picture, client);
    return false;
}

bool ZoomGeometry::toggleLock(QSize picture, const ViewClient& client) {
    m_locked = !m_locked;
    return applyFitMode(picture, client);
}

} // namespace lanmira
