#pragma once

#include "twain/twain.h"

#include <QString>
#include <QStringList>

namespace lanmira {

// The data source manager library, loaded once for the process: the handle and its
// DSM_Entry, both cleared when it is unloaded.
class TwainManagerLibrary {
public:
    // Where the manager is looked for, in order: the system's library path, then the
    // program's folder.
    static QStringList defaultCandidates();
    // Tests point the search elsewhere; an empty list restores the default.
    static void setCandidates(const QStringList& paths);

    static bool load();
    static void unload();
    static bool loaded() { return entry() != nullptr; }
    static DSMENTRYPROC entry();
};

} // namespace lanmira
