#include "settings/IniText.h"

namespace lanmira::settings::initext {

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

bool isControl(unsigned char c) {
    return c < 0x20 || c == 0x7f;
}

char foldAscii(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

// Length of the well-formed UTF-8 sequence at text[i] (ASCII included), 0 when ill-formed:
// overlong forms, surrogates and code points above U+10FFFF are rejected.
std::size_t sequenceLength(std::string_view text, std::size_t i) {
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned char lead = byte(i);
    if (lead < 0x80)
        return 1;
    std::size_t len = 0;
    unsigned char lo = 0x80;
    unsigned char hi = 0xbf;
    if (lead >= 0xc2 && lead <= 0xdf) {
        len = 2;
    } else if (lead >= 0xe0 && lead <= 0xef) {
        len = 3;
        if (lead == 0xe0)
            lo = 0xa0;
        else if (lead == 0xed)
            hi = 0x9f;
    } else if (lead >= 0xf0 && lead <= 0xf4) {
        len = 4;
        if (lead == 0xf0)
            lo = 0x90;
        else if (lead == 0xf4)
            hi = 0x8f;
    } else {
        return 0;
    }
    if (i + len > text.size())
        return 0;
    if (byte(i + 1) < lo || byte(i + 1) > hi)
        return 0;
    for (std::size_t k = 2; k < len; ++k) {
        if (byte(i + k) < 0x80 || byte(i + k) > 0xbf)
            return 0;
    }
    return len;
}

// Valid UTF-8 without control characters; a tab only where allowed.
bool isUtf8WithoutControls(std::string_view text, bool allowTab) {
    for (std::size_t i = 0; i < text.size();) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (isControl(c) && !(allowTab && c == '\t'))
            return false;
        const std::size_t len = sequenceLength(text, i);
        if (len == 0)
            return false;
        i += len;
    }
    return true;
}

bool isSafeRaw(std::string_view text) {
    if (text.empty())
        return true;
    if (isBlank(text.front()) || isBlank(text.back()))
        return false;
    if (text.front() == ';' || text.front() == '#' || text.front() == '[')
        return false;
    if (text.find_first_of("\"\\") != std::string_view::npos)
        return false;
    return isUtf8WithoutControls(text, false);
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    c = foldAscii(c);
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

} // namespace

std::string_view trim(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (foldAscii(a[i]) != foldAscii(b[i]))
            return false;
    }
    return true;
}

std::string foldCase(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        c = foldAscii(c);
    return out;
}

bool isCleanLine(std::string_view text) {
    return isUtf8WithoutControls(text, true);
}

bool isSafeRawValue(std::string_view value) {
    return isSafeRaw(value);
}

bool isSafeRawName(std::string_view name) {
    return !name.empty() && name.find('=') == std::string_view::npos && isSafeRaw(name);
}

std::string quote(std::string_view text) {
    static constexpr char hex[] = "0123456789abcdef";
    std::string out;
    out.reserve(text.size() + 2);
    out += '"';
    for (std::size_t i = 0; i < text.size();) {
        const auto c = static_cast<unsigned char>(text[i]);
        switch (c) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            if (const std::size_t len = sequenceLength(text, i); len > 0 && !isControl(c)) {
                out.append(text.substr(i, len));
                i += len;
                continue;
            }
            out += "\\x";
            out += hex[c >> 4];
            out += hex[c & 0xf];
        }
        ++i;
    }
    out += '"';
    return out;
}

std::optional<std::string> unquote(std::string_view text, std::size_t& pos) {
    if (pos >= text.size() || text[pos] != '"')
        return std::nullopt;
    std::string out;
    for (std::size_t i = pos + 1; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '"') {
            pos = i + 1;
            return out;
        }
        if (c != '\\') {
            out += c;
            continue;
        }
        if (++i == text.size())
            return std::nullopt;
        switch (text[i]) {
        case '"':
            out += '"';
            break;
        case '\\':
            out += '\\';
            break;
        case 'n':
            out += '\n';
            break;
        case 'r':
            out += '\r';
            break;
        case 't':
            out += '\t';
            break;
        case 'x': {
            const int high = i + 1 < text.size() ? hexDigit(text[i + 1]) : -1;
            const int low = i + 2 < text.size() ? hexDigit(text[i + 2]) : -1;
            if (high < 0 || low < 0)
                return std::nullopt;
            out += static_cast<char>(high * 16 + low);
            i += 2;
            break;
        }
        default:
            return std::nullopt;
        }
    }
    return std::nullopt;
}

} // namespace lanmira::settings::initext
