#pragma once

#include <QString>
#include <QStringList>

namespace lanmira {

// The desktop entry that file associations point at: `Lanmira.1.desktop` in the user's
// applications folder, starting this program with the file and declaring the types it is
// the default for. It is hidden from menus; the installed entry is the one people start the
// program from and the one that offers every format in "Open With" lists.
class DesktopEntryWriter {
public:
    static constexpr char kFileName[] = "Lanmira.1.desktop";

    // `$XDG_DATA_HOME/applications` (or the given data home's).
    static QString applicationsFolder(const QString& dataHome = {});

    static QString entryText(const QString& name, const QString& programPath,
                             const QStringList& mimeTypes);
    // One argument of an Exec line, quoted when it has to be, then escaped as a desktop
    // entry string.
    static QString execArgument(const QString& argument);

    enum Outcome { Unchanged, Written, Failed };
    // Writes the entry unless the file already holds exactly this text; on failure the old
    // file, if any, is left whole.
    static Outcome ensure(const QString& dataHome, const QString& text);
};

} // namespace lanmira
