#pragma once

#include <cstdint>

namespace lanmira {

// The exposure time slider's cubic scale: short times get most of the slider's travel,
// which is where a microscope user fine-tunes. Positions are milliseconds on the cube of
// the slider's fraction; the first and last positions map to the range's exact limits.
class ExposureTimeScale {
public:
    ExposureTimeScale(std::uint32_t minimum, std::uint32_t maximum);

    // The slider's range. With minimum == maximum the first position lies above the last.
    int firstPosition() const { return m_first; }
    int lastPosition() const { return m_last; }

    int positionOf(std::uint32_t microseconds) const;
    std::uint32_t timeOf(int position) const;

private:
    std::uint32_t m_min;
    std::uint32_t m_max;
    int m_first;
    int m_last;
};

} // namespace lanmira
