#pragma once

#include <QString>

#include <cstdint>

namespace lanmira {

// A time typed in milliseconds, checked against a range in microseconds.
struct ExposureTimeInput {
    enum class Verdict { Ok, Empty, Invalid, OutOfRange };

    Verdict verdict = Verdict::Empty;
    std::uint32_t microseconds = 0; // meaningful for Ok only

    // "12.5" gives 12 500 µs; anything left over after the number ("12.5x") is invalid.
    // Numbers are read in the C locale whatever the user's, so a dot is the separator.
    static ExposureTimeInput parse(const QString& text, std::uint32_t minimum,
                                   std::uint32_t maximum);
};

} // namespace lanmira
