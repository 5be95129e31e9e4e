#include "settings/RegistryKey.h"

#include "TestFiles.h"
#include "settings/IniFile.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <thread>
#include <unistd.h>

using lanmira::settings::IniFile;
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

TEST(RegistryKey, LargeFilesAreReadAndKeepEverythingOnWrite) {
    TempDir dir;
    const RegistryKey key("Software\\V\\A\\A", dir.path);
    std::string text = "[options]\nslide=7000\n\n[mine]\nown=kept\n";
    const std::string comment = "; " + std::string(1000, 'c') + "\n";
    while (text.size() < (std::size_t{5} << 20))
        text += comment;
    writeFile(key.file(), text);

    EXPECT_EQ(key.readInt("options", "slide", 2000), 7000);
    ASSERT_TRUE(key.writeInt("options", "prompt", 1));
    const std::string after = readFile(key.file());
    EXPECT_EQ(after.size(), text.size() + std::string("prompt=1\n").size());
    EXPECT_EQ(key.readString("mine", "own", ""), "kept");
    EXPECT_EQ(key.readInt("options", "slide", 2000), 7000);
}

// Whatever stops the file from being read, a write must leave it as it was.
TEST(RegistryKey, FilesThatCannotBeReadAreNeverReplaced) {
    TempDir dir;
    const RegistryKey key("Software\\V\\A\\A", dir.path);
    const fs::path file = key.file();
    const std::string settings = "[options]\nslide=7000\n";
    struct Case {
        const char* name;
        std::function<void()> make;
        bool skip = false;
    };
    const Case cases[] = {
        {"too large",
         [&] {
             writeFile(file, settings);
             fs::resize_file(file, IniFile::maxFileSize + 1);
         }},
        {"no read permission",
         [&] {
             writeFile(file, settings);
             fs::permissions(file, fs::perms::owner_write);
         },
         ::geteuid() == 0}, // root reads it anyway
        {"a FIFO",
         [&] {
             fs::create_directories(file.parent_path());
             ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
         }},
        {"a folder", [&] { fs::create_directories(file / "inside"); }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        if (c.skip)
            continue;
        std::error_code ec;
        fs::remove_all(file, ec);
        c.make();
        struct stat before {};
        ASSERT_EQ(::lstat(file.c_str(), &before), 0);

        EXPECT_EQ(key.readInt("options", "slide", 2000), 2000) << "reads give the defaults";
        EXPECT_FALSE(key.writeInt("options", "slide", 2000));
        EXPECT_FALSE(key.remove("options", "slide"));

        struct stat now {};
        ASSERT_EQ(::lstat(file.c_str(), &now), 0);
        EXPECT_EQ(now.st_ino, before.st_ino);
        EXPECT_EQ(now.st_size, before.st_size);
        EXPECT_EQ(folderEntries(file.parent_path()), std::vector<std::string>{"A.conf"});
        fs::permissions(file, fs::perms::owner_all, ec);
    }
}

} // namespace
