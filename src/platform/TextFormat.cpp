#include "platform/TextFormat.h"

#include <cmath>

namespace lanmira {
namespace {

struct Conversion {
    bool leftAlign = false;
    bool zeroPad = false;
    bool plus = false;
    bool space = false;
    int width = 0;
    int precision = -1;
    QChar conv;
};

QString pad(QString body, const Conversion& c, bool numeric) {
    if (body.size() >= c.width)
        return body;
    const qsizetype fill = c.width - body.size();
    if (c.leftAlign)
        return body + QString(fill, u' ');
    if (c.zeroPad && numeric) {
        // Zeros go after the sign.
        qsizetype at =
            (!body.isEmpty() && (body[0] == u'-' || body[0] == u'+' || body[0] == u' ')) ? 1 : 0;
        body.insert(at, QString(fill, u'0'));
        return body;
    }
    return QString(fill, u' ') + body;
}

QString signedText(std::int64_t v, const Conversion& c) {
    QString s = QString::number(v);
    if (v >= 0 && c.plus)
        s.prepend(u'+');
    else if (v >= 0 && c.space)
        s.prepend(u' ');
    return s;
}

QString render(const Conversion& c, const FormatArg& arg) {
    const auto& v = arg.value();
    const char conv = c.conv.toLatin1();
    const bool numericConv = conv == 'd' || conv == 'i' || conv == 'u' || conv == 'x' ||
                             conv == 'X' || conv == 'f' || conv == 'F' || conv == 'c';
    if (std::holds_alternative<QString>(v)) {
        QString s = std::get<QString>(v);
        if (conv == 's' && c.precision >= 0)
            s.truncate(c.precision);
        return pad(s, c, false);
    }
    double asDouble = 0;
    std::int64_t asSigned = 0;
    std::uint64_t asUnsigned = 0;
    if (std::holds_alternative<std::int64_t>(v)) {
        asSigned = std::get<std::int64_t>(v);
        asUnsigned = static_cast<std::uint64_t>(asSigned);
        asDouble = static_cast<double>(asSigned);
    } else if (std::holds_alternative<std::uint64_t>(v)) {
        asUnsigned = std::get<std::uint64_t>(v);
        asSigned = static_cast<std::int64_t>(asUnsigned);
        asDouble = static_cast<double>(asUnsigned);
    } else {
        asDouble = std::get<double>(v);
        asSigned = std::isfinite(asDouble) ? static_cast<std::int64_t>(asDouble) : 0;
        asUnsigned = static_cast<std::uint64_t>(asSigned);
    }
    QString body;
    switch (conv) {
    case 'd':
    case 'i':
        body = signedText(asSigned, c);
        break;
    case 'u':
        // A 32-bit "%u" of a negative int shows the unsigned 32-bit value, as printf does.
        body = std::holds_alternative<std::int64_t>(v) && asSigned < 0 && asSigned >= INT32_MIN
                   ? QString::number(static_cast<std::uint32_t>(asSigned))
                   : QString::number(asUnsigned);
        break;
    case 'x':
    case 'X':
        body = QString::number(asUnsigned, 16);
        if (conv == 'X')
            body = body.toUpper();
        break;
    case 'c':
        body = QString(QChar(static_cast<char16_t>(asUnsigned)));
        break;
    case 'f':
    case 'F':
        body = QString::number(asDouble, 'f', c.precision < 0 ? 6 : c.precision);
        if (asDouble >= 0 && c.plus)
            body.prepend(u'+');
        break;
    default: // 's' with a number, or anything else: show the value plainly
        body =
            std::holds_alternative<double>(v) ? QString::number(asDouble) : signedText(asSigned, c);
        break;
    }
    return pad(body, c, numericConv);
}

} // namespace

QString formatText(const QString& format, std::span<const FormatArg> list) {
    std::size_t next = 0;
    QString out;
    out.reserve(format.size() + 16);
    const qsizetype n = format.size();
    for (qsizetype i = 0; i < n; ++i) {
        const QChar ch = format[i];
        if (ch != u'%') {
            out += ch;
            continue;
        }
        const qsizetype start = i;
        qsizetype j = i + 1;
        if (j < n && format[j] == u'%') {
            out += u'%';
            i = j;
            continue;
        }
        Conversion c;
        for (; j < n; ++j) {
            const QChar f = format[j];
            if (f == u'-')
                c.leftAlign = true;
            else if (f == u'0')
                c.zeroPad = true;
            else if (f == u'+')
                c.plus = true;
            else if (f == u' ')
                c.space = true;
            else if (f != u'#')
                break;
        }
        while (j < n && format[j].isDigit() && c.width < 1000)
            c.width = c.width * 10 + format[j++].digitValue();
        if (j < n && format[j] == u'.') {
            c.precision = 0;
            ++j;
            while (j < n && format[j].isDigit() && c.precision < 100)
                c.precision = c.precision * 10 + format[j++].digitValue();
        }
        while (j < n && (format[j] == u'l' || format[j] == u'h' || format[j] == u'z' ||
                         format[j] == u'I' || format[j] == u'6' || format[j] == u'4' ||
                         format[j] == u'L' || format[j] == u'j' || format[j] == u't'))
            ++j;
        if (j >= n || QStringView(u"diuxXfFcs").indexOf(format[j]) < 0 || next >= list.size()) {
            // Unknown or unfed conversion: keep the text as it stands.
            const qsizetype end = j < n ? j : n - 1;
            out += format.mid(start, end - start + 1);
            i = end;
            continue;
        }
        c.conv = format[j];
        out += render(c, list[next++]);
        i = j;
    }
    return out;
}

} // namespace lanmira
