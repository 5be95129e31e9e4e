#include "camera/panels/ExposureTimeScale.h"

#include <cmath>

namespace lanmira {

ExposureTimeScale::ExposureTimeScale(std::uint32_t minimum, std::uint32_t maximum)
    : m_min(minimum), m_max(maximum),
      // Rounded up past the cube root so the first position's time is just above the minimum.
      m_first(static_cast<int>(
          std::trunc(std::cbrt(static_cast<double>(minimum) * maximum * maximum) / 1000.0 + 1.0))),
      m_last(static_cast<int>(std::trunc(maximum / 1000.0))) {}

int ExposureTimeScale::positionOf(std::uint32_t t) const {
    if (m_last <= 0)
        return m_last; // a range under a millisecond has only the one position
    int p = static_cast<int>(std::trunc(std::cbrt(t / (m_last * 1000.0)) * m_last));
    if (p < m_first)
        p = m_first;
    if (p > m_last)
        p = m_last;
    return p;
}

std::uint32_t ExposureTimeScale::timeOf(int p) const {
    if (p == m_first)
        return m_min;
    if (p == m_last || m_last <= 0)
        return m_max;
    const double x = static_cast<double>(p) / m_last;
    const double t = std::trunc(x * x * m_last * 1000.0 * x);
    if (t < m_min)
        return m_min;
    if (t > m_max)
        return m_max;
    return static_cast<std::uint32_t>(t);
}

} // namespace lanmira
