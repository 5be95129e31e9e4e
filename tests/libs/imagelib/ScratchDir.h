#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

// A folder of the test's own, removed with everything in it.
class ScratchDir {
public:
    ScratchDir()
        : m_path(std::filesystem::temp_directory_path() /
                 ("imagelib-" + std::to_string(::getpid()) + "-" + std::to_string(++s_count))) {
        std::filesystem::create_directories(m_path);
    }
    ~ScratchDir() { std::filesystem::remove_all(m_path); }
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;

    std::string file(const std::string& name) const { return (m_path / name).string(); }
    const std::filesystem::path& path() const { return m_path; }

private:
    static inline int s_count = 0;
    std::filesystem::path m_path;
};

inline std::vector<std::uint8_t> readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline void writeFile(const std::string& path, const std::vector<std::uint8_t>& b) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(b.data()), static_cast<std::streamsize>(b.size()));
}
