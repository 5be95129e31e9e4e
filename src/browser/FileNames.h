#pragma once

#include <QByteArray>
#include <QString>

// File names as the system has them (bytes) and as the program holds them (text), with
// nothing lost either way. Linux names need not be UTF-8: a byte that is not part of a valid
// UTF-8 sequence becomes the unpaired surrogate U+DC80 + (byte - 0x80), which no valid name
// decodes to, and turns back into that byte. Drawn, such a character shows as a replacement
// mark; opened, saved or deleted, it names the very file. Qt's own conversion would instead
// make every such byte U+FFFD and lose the file.
namespace lanmira::filenames {

namespace detail {

// Length of the well-formed UTF-8 sequence at bytes[i], 0 when it is not one.
inline int sequenceLength(const QByteArray& bytes, qsizetype i) {
    const auto at = [&](qsizetype k) { return static_cast<unsigned char>(bytes[k]); };
    const unsigned char lead = at(i);
    if (lead < 0x80)
        return 1;
    int length = 0;
    unsigned char lo = 0x80, hi = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        lo = lead == 0xE0 ? 0xA0 : 0x80;
        hi = lead == 0xED ? 0x9F : 0xBF;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        lo = lead == 0xF0 ? 0x90 : 0x80;
        hi = lead == 0xF4 ? 0x8F : 0xBF;
    } else {
        return 0;
    }
    if (i + length > bytes.size() || at(i + 1) < lo || at(i + 1) > hi)
        return 0;
    for (int k = 2; k < length; ++k)
        if (at(i + k) < 0x80 || at(i + k) > 0xBF)
            return 0;
    return length;
}

inline bool isEscapedByte(char16_t c) {
    return c >= 0xDC80 && c <= 0xDCFF;
}

} // namespace detail

inline QString decode(const QByteArray& bytes) {
    QString text;
    text.reserve(bytes.size());
    for (qsizetype i = 0; i < bytes.size();) {
        const int length = detail::sequenceLength(bytes, i);
        if (length == 0) {
            text += QChar(static_cast<char16_t>(0xDC00 + static_cast<unsigned char>(bytes[i])));
            ++i;
            continue;
        }
        text += QString::fromUtf8(bytes.constData() + i, length);
        i += length;
    }
    return text;
}

inline QByteArray encode(const QString& text) {
    QByteArray bytes;
    bytes.reserve(text.size());
    qsizetype runStart = 0;
    const auto flush = [&](qsizetype end) {
        if (end > runStart)
            bytes += QStringView(text).mid(runStart, end - runStart).toUtf8();
    };
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        // An escaped byte is a low surrogate with no high one before it.
        const bool paired = i > 0 && QChar::isHighSurrogate(text[i - 1].unicode());
        if (detail::isEscapedByte(c) && !paired) {
            flush(i);
            bytes += static_cast<char>(c - 0xDC00);
            runStart = i + 1;
        }
    }
    flush(text.size());
    return bytes;
}

} // namespace lanmira::filenames
