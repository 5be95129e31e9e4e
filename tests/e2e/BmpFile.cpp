#include "BmpFile.h"

#include <QByteArray>
#include <QFile>

namespace lanmira::e2e {

bool writeBmp(const QString& path, int w, int h, unsigned char shade) {
    const int stride = (w * 3 + 3) / 4 * 4;
    QByteArray b;
    auto u16 = [&](quint16 v) { b.append(char(v & 0xFF)).append(char(v >> 8)); };
    auto u32 = [&](quint32 v) {
        u16(quint16(v & 0xFFFF));
        u16(quint16(v >> 16));
    };
    b.append("BM");
    u32(quint32(54 + stride * h));
    u32(0);
    u32(54);
    u32(40);
    u32(quint32(w));
    u32(quint32(h));
    u16(1);
    u16(24);
    for (int i = 0; i < 6; ++i)
        u32(0);
    for (int y = 0; y < h; ++y) {
        QByteArray row(stride, '\0');
        for (int x = 0; x < w; ++x) {
            row[x * 3] = char(shade);
            row[x * 3 + 1] = char((x * 255) / w);
            row[x * 3 + 2] = char((y * 255) / h);
        }
        b.append(row);
    }
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(b) == b.size() && f.flush();
}

} // namespace lanmira::e2e
