#pragma once

// Points SANE at its "test" backend alone, the manager at the build's source plug-in and
// the remembered default source at a scratch folder. Must run before SANE is first used.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace twaintest {

inline std::filesystem::path scratchRoot() {
    static const std::filesystem::path root = [] {
        auto p = std::filesystem::temp_directory_path() /
                 ("lanmira-twain-test-" + std::to_string(::getpid()));
        std::filesystem::create_directories(p / "sane");
        std::filesystem::create_directories(p / "config");
        std::ofstream(p / "sane" / "dll.conf") << "test\n";
        return p;
    }();
    return root;
}

class SaneTestEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        const auto root = scratchRoot();
        ::setenv("SANE_CONFIG_DIR", (root / "sane").c_str(), 1);
        ::setenv("XDG_CONFIG_HOME", (root / "config").c_str(), 1);
        ::setenv("LANMIRA_TWAIN_SOURCES", LANMIRA_BUILD_DIR "/bin", 1);
        ::unsetenv("LANMIRA_SANE_OPTIONS");
        ::unsetenv("LANMIRA_SANE_MEMORY_LIMIT");
    }
    void TearDown() override {
        std::error_code ec;
        std::filesystem::remove_all(scratchRoot(), ec);
    }
};

inline const auto* const kEnvironment =
    ::testing::AddGlobalTestEnvironment(new SaneTestEnvironment);

} // namespace twaintest
