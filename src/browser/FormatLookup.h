#pragma once

#include <QString>
#include <QStringView>

#include <cstdint>

namespace lanmira {

// The image library's format table as the browser uses it.
class FormatLookup {
public:
    // The format number of the first table row whose extension equals `ext` ignoring case;
    // 0 (not an image) when none does.
    static std::uint32_t formatOfExtension(const QString& ext);
    static std::uint32_t formatOfExtension(QStringView ext);
    // The format from the text after the last "." of `name`. A symbolic link is a shortcut:
    // its target is resolved (ShortcutResolver) and the result is the negative of the
    // target's format, with the target path left in `target`. 0 when not an image.
    static std::int32_t formatOfFile(const QString& path, QString* target);
    // The same when the caller already knows whether `path` is a symbolic link (a folder
    // scan learns it from the directory entry and saves a stat per file).
    static std::int32_t formatOfEntry(const QString& path, bool isSymlink, QString* target);
    // 0-based row of the table whose extension matches the file's (the target's for a
    // shortcut); -1 when the name has no dot or no row matches.
    static int typeRank(const QString& pathOrTarget);

    // The text after the last "." of the file name (folders are ignored); a null view when
    // the name has no dot, an empty one when it ends with the dot.
    static QStringView extensionOf(QStringView path);
};

// Resolves a shortcut (symbolic link) to the absolute path of a regular file. Gives up
// after 500 ms so a dead network mount never blocks the caller; an empty result means the
// link is broken, loops, points at a folder or could not be resolved in time.
class ShortcutResolver {
public:
    static QString resolve(const QString& linkPath);
};

} // namespace lanmira
