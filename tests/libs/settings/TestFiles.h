#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

// A fresh folder under the system temp folder, removed with everything in it.
struct TempDir {
    std::filesystem::path path = make();
    ~TempDir() {
        std::error_code ec;
        std::filesystem::remove_all(path, ec);
    }
    static std::filesystem::path make() {
        std::string pattern = std::filesystem::temp_directory_path() / "lanmira-settings-XXXXXX";
        return ::mkdtemp(pattern.data()) ? pattern : std::string();
    }
};

inline void writeFile(const std::filesystem::path& file, const std::string& text) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

inline std::string readFile(const std::filesystem::path& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

inline std::vector<std::string> folderEntries(const std::filesystem::path& dir) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(dir))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}
