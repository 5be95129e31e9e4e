#include "settings/RegistryKey.h"

#include "TestFiles.h"

#include <gtest/gtest.h>

#include <optional>
#include <thread>

using lanmira::settings::RegistryKey;
namespace fs = std::filesystem;

namespace {

// Sets an environment variable for one scope and puts the old value back.
struct EnvOverride {
    const char* name;
    std::optional<std::string> old;
    EnvOverride(const char* variable, const char* value) : name(variable) {
        if (const char* was = std::getenv(variable))
            old = was;
        value ? ::setenv(variable, value, 1) : ::unsetenv(variable);
    }
    ~EnvOverride() { old ? ::setenv(name, old->c_str(), 1) : ::unsetenv(name); }
};

TEST(RegistryKey, KeyPathsMapToConfFilesUnderTheConfigHome) {
    const EnvOverride home("HOME", "/home/someone");
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"Software\\Vornalt\\Lanmira\\Lanmira", "/cfg", "/cfg/Vornalt/Lanmira/Lanmira.conf"},
        {"SOFTWARE\\Acme\\Scope\\ibrowser", "/cfg", "/cfg/Acme/Scope/ibrowser.conf"},
        {"Vornalt\\Tool", "/cfg", "/cfg/Vornalt/Tool.conf"},
        {"software\\..\\a/b\\.", "/cfg", "/cfg/_./a_b/_.conf"},
        {"Software", "/cfg", ""},
        {"Software\\A\\B", "relative/is/ignored", "/home/someone/.config/A/B.conf"},
        {"Software\\A\\B", nullptr, "/home/someone/.config/A/B.conf"}};
    for (const auto& [key, configHome, expected] : cases) {
        const EnvOverride xdg("XDG_CONFIG_HOME", configHome);
        EXPECT_EQ(RegistryKey(key).file(), fs::path(expected)) << key;
    }
}

TEST(RegistryKey, OwnValuesComeFirstAndSubkeysAreSections) {
    TempDir dir;
    const RegistryKey key("Software\\Vornalt\\Lanmira\\ibrowser", dir.path);
    ASSERT_TRUE(key.writeInt("Deep\\Er", "x", 1));
    ASSERT_TRUE(key.writeInt("", "sortby", 3));
    ASSERT_TRUE(key.writeString("", "title", ""));
    EXPECT_EQ(readFile(key.file()), "sortby=3\ntitle=\n\n[Deep\\Er]\nx=1\n");

    EXPECT_EQ(key.readInt("Deep\\Er", "x", 0), 1);
    EXPECT_EQ(key.readString("", "title", "Lanmira"), "") << "an empty value is still a value";
    EXPECT_EQ(key.readInt("", "title", 7), 7) << "text in an integer slot reads as the default";
    EXPECT_EQ(key.readInt("missing", "x", 5), 5);
    EXPECT_TRUE(key.remove("", "sortby"));
    EXPECT_EQ(key.readInt("", "sortby", -1), -1);
    EXPECT_FALSE(RegistryKey("Software", dir.path).writeInt("s", "k", 1)) << "names no file";
}

TEST(RegistryKey, ConcurrentWritersToOneFileAllLand) {
    TempDir dir;
    const RegistryKey key("Software\\V\\A\\A", dir.path);
    {
        std::vector<std::jthread> writers;
        for (int t = 0; t < 4; ++t) {
            writers.emplace_back([&, t] {
                // Each thread has its own key object, as separate owners would.
                const RegistryKey own("Software\\V\\A\\A", dir.path);
                for (int i = 0; i < 25; ++i)
                    own.writeInt("t" + std::to_string(t), "k" + std::to_string(i), t * 1000 + i);
            });
        }
    }
    for (int t = 0; t < 4; ++t) {
        for (int i = 0; i < 25; ++i)
            EXPECT_EQ(key.readInt("t" + std::to_string(t), "k" + std::to_string(i), -1),
                      t * 1000 + i);
    }
}

} // namespace
