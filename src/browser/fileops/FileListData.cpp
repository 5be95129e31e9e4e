#include "browser/fileops/FileListData.h"

#include <QFile>
#include <QMimeData>
#include <QUrl>

namespace lanmira {
namespace {

constexpr int kMaxShownRejects = 20;

QList<QByteArray> uriLines(const QByteArray& text) {
    QList<QByteArray> lines;
    for (QByteArray line : text.split('\n')) {
        line = line.trimmed(); // also drops the CR of CRLF lists
        if (!line.isEmpty() && !line.startsWith('#'))
            lines.append(line);
    }
    return lines;
}

void reject(FileListData& out, const QByteArray& line) {
    if (out.rejected.size() < kMaxShownRejects)
        out.rejected.append(QString::fromUtf8(line.left(200)));
}

} // namespace

QByteArray FileListData::uriOf(const QByteArray& nativePath) {
    return QByteArrayLiteral("file://") + nativePath.toPercentEncoding("/");
}

bool FileListData::pathOfUri(const QByteArray& uri, QByteArray* nativePath) {
    if (!uri.startsWith("file:"))
        return false;
    QByteArray rest = uri.mid(5);
    if (rest.startsWith("//")) {
        rest = rest.mid(2);
        const qsizetype slash = rest.indexOf('/');
        if (slash < 0)
            return false;
        const QByteArray host = rest.left(slash);
        // Only this machine: a file on another host is not a path here.
        if (!host.isEmpty() && host.compare("localhost", Qt::CaseInsensitive) != 0)
            return false;
        rest = rest.mid(slash);
    }
    if (!rest.startsWith('/'))
        return false;
    // A query or fragment has no place in a file URI; '#' of a name comes escaped.
    const qsizetype end = rest.indexOf('?');
    if (end >= 0)
        rest.truncate(end);
    const QByteArray path = QByteArray::fromPercentEncoding(rest);
    if (path.contains('\0') || path.size() < 2)
        return false;
    *nativePath = path;
    return true;
}

QByteArray FileListData::effectBytes(std::uint32_t word) {
    QByteArray bytes(4, '\0');
    for (int k = 0; k < 4; ++k)
        bytes[k] = static_cast<char>((word >> (8 * k)) & 0xFF);
    return bytes;
}

std::unique_ptr<QMimeData> FileListData::encode(const QList<QByteArray>& paths,
                                                std::uint32_t word) {
    QByteArray uriList;
    QByteArray gnome =
        (word & effect::kMove) ? QByteArrayLiteral("cut") : QByteArrayLiteral("copy");
    for (const QByteArray& p : paths) {
        const QByteArray uri = uriOf(p);
        uriList += uri + "\r\n";
        gnome += '\n' + uri;
    }
    auto data = std::make_unique<QMimeData>();
    data->setData(QString::fromLatin1(kUriList), uriList);
    data->setData(QString::fromLatin1(kGnome), gnome);
    if (word & effect::kMove)
        data->setData(QString::fromLatin1(kKdeCut), QByteArrayLiteral("1"));
    data->setData(QString::fromLatin1(kEffectWord), effectBytes(word));
    return data;
}

std::unique_ptr<QMimeData> FileListData::encode(const QStringList& paths, std::uint32_t word) {
    QList<QByteArray> native;
    native.reserve(paths.size());
    for (const QString& p : paths)
        native.append(QFile::encodeName(p));
    return encode(native, word);
}

bool FileListData::offersFiles(const QMimeData* data) {
    return data && (data->hasFormat(QString::fromLatin1(kUriList)) ||
                    data->hasFormat(QString::fromLatin1(kGnome)));
}

FileListData FileListData::decode(const QMimeData* data) {
    FileListData out;
    if (!data)
        return out;
    QList<QByteArray> uris;
    std::uint32_t gnomeEffect = effect::kNone;
    const QByteArray gnome = data->data(QString::fromLatin1(kGnome));
    if (!gnome.isEmpty()) {
        QList<QByteArray> lines = uriLines(gnome);
        if (!lines.isEmpty() && (lines.front() == "cut" || lines.front() == "copy")) {
            gnomeEffect = lines.front() == "cut" ? effect::kCut : effect::kCopyAndLink;
            lines.removeFirst();
            uris = lines;
        }
    }
    if (uris.isEmpty())
        uris = uriLines(data->data(QString::fromLatin1(kUriList)));
    for (const QByteArray& uri : uris) {
        QByteArray path;
        if (pathOfUri(uri, &path))
            out.paths.append(path);
        else
            reject(out, uri);
    }
    if (out.paths.isEmpty())
        return out;

    const QByteArray word = data->data(QString::fromLatin1(kEffectWord));
    if (word.size() == 4) {
        std::uint32_t v = 0;
        for (int k = 0; k < 4; ++k)
            v |= static_cast<std::uint32_t>(static_cast<std::uint8_t>(word[k])) << (8 * k);
        out.effect = v;
    } else if (gnomeEffect != effect::kNone) {
        out.effect = gnomeEffect;
    } else if (data->data(QString::fromLatin1(kKdeCut)).startsWith('1')) {
        out.effect = effect::kCut;
    } else {
        out.effect = effect::kCopyAndLink;
    }
    return out;
}

} // namespace lanmira
