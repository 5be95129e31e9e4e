#pragma once

#include <QByteArray>
#include <QList>
#include <QStringList>

#include <cstdint>
#include <memory>

class QMimeData;

namespace lanmira {

// Drop-effect bits, as the effect word carries them.
namespace effect {
inline constexpr std::uint32_t kNone = 0;
inline constexpr std::uint32_t kCopy = 1;
inline constexpr std::uint32_t kMove = 2;
inline constexpr std::uint32_t kLink = 4;
inline constexpr std::uint32_t kCut = kMove;
inline constexpr std::uint32_t kCopyAndLink = kCopy | kLink;
} // namespace effect

// A list of files on the clipboard or in a drag, in the formats Linux file managers
// exchange: a URI list, the GNOME verb + URIs, the KDE cut mark, and our own effect word.
class FileListData {
public:
    static constexpr const char* kUriList = "text/uri-list";
    static constexpr const char* kGnome = "x-special/gnome-copied-files";
    static constexpr const char* kKdeCut = "application/x-kde-cutselection";
    static constexpr const char* kEffectWord = "application/x-lanmira-dropeffect";

    // Native (file-system byte) paths; names need not be valid UTF-8.
    QList<QByteArray> paths;
    std::uint32_t effect = effect::kNone;
    // What was listed but is no file URI (other schemes, remote hosts, garbage), as shown.
    QStringList rejected;

    bool empty() const { return paths.isEmpty(); }

    static std::unique_ptr<QMimeData> encode(const QList<QByteArray>& paths, std::uint32_t effect);
    static std::unique_ptr<QMimeData> encode(const QStringList& paths, std::uint32_t effect);
    // Null data or no file list: empty. The effect is our word, else the GNOME verb, else
    // the KDE mark, else copy and link.
    static FileListData decode(const QMimeData* data);
    // Only whether the data offers a file list, without reading it.
    static bool offersFiles(const QMimeData* data);

    // "file:///a%20b" from a native path, every byte outside the unreserved set escaped.
    static QByteArray uriOf(const QByteArray& nativePath);
    // The native path of a local file URI ("file:/p", "file:///p", "file://localhost/p");
    // false for anything else.
    static bool pathOfUri(const QByteArray& uri, QByteArray* nativePath);

    static QByteArray effectBytes(std::uint32_t effect);
};

} // namespace lanmira
