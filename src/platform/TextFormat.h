#pragma once

#include <QString>

#include <cstdint>
#include <initializer_list>
#include <span>
#include <variant>

namespace lanmira {

// One argument of a localised format text.
class FormatArg {
public:
    FormatArg(int v) : m_value(static_cast<std::int64_t>(v)) {}
    FormatArg(long v) : m_value(static_cast<std::int64_t>(v)) {}
    FormatArg(long long v) : m_value(static_cast<std::int64_t>(v)) {}
    FormatArg(unsigned v) : m_value(static_cast<std::uint64_t>(v)) {}
    FormatArg(unsigned long v) : m_value(static_cast<std::uint64_t>(v)) {}
    FormatArg(unsigned long long v) : m_value(static_cast<std::uint64_t>(v)) {}
    FormatArg(double v) : m_value(v) {}
    FormatArg(const QString& v) : m_value(v) {}
    FormatArg(const char* utf8) : m_value(QString::fromUtf8(utf8)) {}

    const auto& value() const { return m_value; }

private:
    std::variant<std::int64_t, std::uint64_t, double, QString> m_value;
};

// printf-style formatting of localised texts ("%s", "%d", "%u", "%04d", "%.2f", "%%"),
// typed so that a translation whose conversions do not match its arguments shows
// something sensible instead of reading a wrong argument. A conversion without an
// argument is kept as written. Numbers use the C locale, so "1.00" reads back as typed.
QString formatText(const QString& format, std::span<const FormatArg> args);
inline QString formatText(const QString& format, std::initializer_list<FormatArg> args) {
    return formatText(format, std::span<const FormatArg>(args.begin(), args.size()));
}

} // namespace lanmira
