#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace twaindsm {

// Where source plug-ins (files ending in ".ds") are looked for, in order: the program's
// folder, each folder of $LANMIRA_TWAIN_SOURCES (colon-separated), the manager's own
// "twain" folder, then the usual library folders.
class SourceLocator {
public:
    static std::vector<std::filesystem::path> folders();
    // Every ".ds" file of those folders, each file name once (the first folder wins), in
    // name order within a folder.
    static std::vector<std::filesystem::path> sourceFiles();
};

} // namespace twaindsm
