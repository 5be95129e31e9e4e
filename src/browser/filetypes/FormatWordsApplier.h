#pragma once

#include "browser/filetypes/MimeAppsList.h"

#include <QString>
#include <QStringList>

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace lanmira {

class BrowserList;

// The only writer of the sixteen format words (bit 0 listed in the browser, bit 1 the
// format's extensions open with this program, bit 2 only kept). For every format whose
// bit 1 changes, each extension's file type is taken over in the user's `mimeapps.list`
// (its previous default application kept under "Shell" as the value ".ext") or given back.
class FormatWordsApplier {
public:
    using Words = std::array<std::uint32_t, 16>;

    struct Environment {
        std::filesystem::path configHome; // empty: $XDG_CONFIG_HOME
        QString dataHome;                 // empty: $XDG_DATA_HOME
        QString programPath;              // empty: the running program
        // The MIME types of files with this extension, the main one first; empty: the
        // desktop's shared MIME database.
        std::function<QStringList(const QString& extension)> mimeTypesOf;
    };

    FormatWordsApplier(QString company, QString app, Environment environment = {});

    // The words take effect in the list at once; the files follow on a thread of the
    // applier's own, one apply after another, so OK never waits for the disk. False when
    // the words are the ones in use: then nothing at all is written.
    bool apply(BrowserList& list, const Words& words) const;
    // Returns once every write that apply() queued is done (before the program ends).
    static void waitForWrites();

    // What apply() queues for a change from `before` to `after`: the associations of every
    // format whose bit 1 changed, the words and the browser's other values. True when
    // mimeapps.list or the desktop entry was rewritten, after which the desktop is told.
    bool writeFiles(const Words& before, const Words& after, std::int32_t sortKey,
                    std::int32_t sortDirection, std::int32_t largeMode) const;

    // Has the desktop read the applications folder again; returns at once.
    static void notifyDesktop(const QString& dataHome = {});

    static QStringList mimeTypesFromDatabase(const QString& extension);
    // Whether a default-application value names our entry first.
    static bool isOurs(std::string_view value);

private:
    // mimeapps.list as a change of the words leaves it, and the previous defaults to keep.
    struct Plan {
        MimeAppsList list;
        std::vector<std::pair<std::string, std::string>> saves;
        bool changed = false;
    };

    // True when mimeapps.list or the desktop entry was rewritten.
    bool changeAssociations(const Words& before, const Words& after) const;
    Plan plan(const std::string& original, const Words& before, const Words& after,
              bool takeOver) const;
    std::string mainType(const char* extension) const;
    // The types whose default is ours, in the order of the format table.
    QStringList typesOurs(const MimeAppsList& list) const;

    QString m_company;
    QString m_app;
    Environment m_env;
};

} // namespace lanmira
