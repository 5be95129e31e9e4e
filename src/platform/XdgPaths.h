#pragma once

#include <QString>

namespace lanmira {

// The freedesktop base folders, with the usual fallbacks when a variable is unset or not
// absolute.
class XdgPaths {
public:
    static QString configHome(); // $XDG_CONFIG_HOME or ~/.config
    static QString cacheHome();  // $XDG_CACHE_HOME or ~/.cache
    static QString dataHome();   // $XDG_DATA_HOME or ~/.local/share
    static QString runtimeDir(); // $XDG_RUNTIME_DIR, else a private folder under the temp dir
};

} // namespace lanmira
