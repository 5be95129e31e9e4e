#include "camera/panels/ExposureTimeInput.h"

#include <charconv>
#include <cmath>

namespace lanmira {

ExposureTimeInput ExposureTimeInput::parse(const QString& text, std::uint32_t minimum,
                                           std::uint32_t maximum) {
    ExposureTimeInput in;
    const QString limited = text.left(256);
    if (limited.isEmpty())
        return in;
    const QByteArray bytes = limited.toUtf8();
    const char* begin = bytes.constData();
    const char* end = begin + bytes.size();
    while (begin < end && (*begin == ' ' || *begin == '\t'))
        ++begin;
    if (begin < end && *begin == '+')
        ++begin;
    double value = 0.0;
    const auto [stop, error] = std::from_chars(begin, end, value, std::chars_format::general);
    if (error != std::errc{} || stop != end || !std::isfinite(value)) {
        in.verdict = Verdict::Invalid;
        return in;
    }
    const double us = std::trunc(value * 1000.0);
    if (!(us >= minimum && us <= maximum)) {
        in.verdict = Verdict::OutOfRange;
        return in;
    }
    in.verdict = Verdict::Ok;
    in.microseconds = static_cast<std::uint32_t>(us);
    return in;
}

} // namespace lanmira
