#include "settings/RegistryKey.h"

#include "TestFiles.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <thread>

using lanmira::settings::RegistryKey;
namespace fs = std::filesystem;

namespace {

void writeFile(const fs::path& file, const std::string& text) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

// Sets an environment variable for one scope and puts the old value back.
class EnvOverride {
public:
    EnvOverride(const char* name, const char* value) : name_(name) {
        if (const char* old = std::getenv(name))
            old_ = old;
        value ? ::setenv(name, value, 1) : ::unsetenv(name);
    }
    ~EnvOverride() { old_ ? ::setenv(name_, old_->c_str(), 1) : ::unsetenv(name_); }

private:
    const char* name_;
    std::optional<std::string> old_;
};

TEST(RegistryKey, KeyPathsMapToConfFiles) {
    const std::pair<const char*, const char*> cases[] = {
        {"Software\\Vornalt\\Lanmira\\Lanmira", "Vornalt/Lanmira/Lanmira.conf"},
        {"SOFTWARE\\Acme\\Scope\\ibrowser", "Acme/Scope/ibrowser.conf"},
        {"Software\\Vornalt\\Lanmira\\Shell", "Vornalt/Lanmira/Shell.conf"},
        {"Vornalt\\Tool", "Vornalt/Tool.conf"},
        {"software\\..\\a/b\\.", "_./a_b/_.conf"},
        {"Software", ""},
        {"", ""}};
    for (const auto& [key, relative] : cases) {
        const fs::path expected = *relative ? fs::path("/cfg") / relative : fs::path();
        EXPECT_EQ(RegistryKey(key, "/cfg").file(), expected) << key;
    }
}

TEST(RegistryKey, ConfigHomeComesFromTheEnvironment) {
    const EnvOverride home("HOME", "/home/someone");
    {
        const EnvOverride xdg("XDG_CONFIG_HOME", "/xdg");
        EXPECT_EQ(RegistryKey("Software\\A\\B").file(), "/xdg/A/B.conf");
    }
    {
        const EnvOverride xdg("XDG_CONFIG_HOME", "relative/is/ignored");
        EXPECT_EQ(RegistryKey("Software\\A\\B").file(), "/home/someone/.config/A/B.conf");
    }
    const EnvOverride xdg("XDG_CONFIG_HOME", nullptr);
    EXPECT_EQ(lanmira::settings::configHome(), "/home/someone/.config");
}

TEST(RegistryKey, OwnValuesComeFirstAndSubkeysAreSections) {
    TempDir dir;
    const RegistryKey key("Software\\Vornalt\\Lanmira\\ibrowser", dir.path());
    ASSERT_TRUE(key.writeInt("Deep\\Er", "x", 1));
    ASSERT_TRUE(key.writeInt("", "sortby", 3));
    ASSERT_TRUE(key.writeString("", "title", ""));
    EXPECT_EQ(readFile(key.file()), "sortby=3\ntitle=\n\n[Deep\\Er]\nx=1\n");

    EXPECT_EQ(key.readInt("", "SORTBY", 0), 3);
    EXPECT_EQ(key.readInt("deep\\er", "X", 0), 1);
    EXPECT_EQ(key.readString("", "title", "Lanmira"), "") << "an empty value is still a value";
    EXPECT_EQ(key.readInt("", "title", 7), 7) << "text in an integer slot reads as the default";
    EXPECT_EQ(key.readInt("missing", "x", 5), 5);
    EXPECT_EQ(key.readString("", "missing", "def"), "def");

    EXPECT_TRUE(key.remove("", "sortby"));
    EXPECT_EQ(key.readInt("", "sortby", -1), -1);
}

TEST(RegistryKey, KeysNamingNoFileReadDefaultsAndWriteNothing) {
    const RegistryKey key("Software", "/nonexistent");
    EXPECT_EQ(key.readInt("s", "k", 9), 9);
    EXPECT_EQ(key.readString("s", "k", "d"), "d");
    EXPECT_FALSE(key.writeInt("s", "k", 1));
}

TEST(RegistryKey, DamagedFilesReadAsDefaultsAndAreRewrittenClean) {
    using namespace std::string_literals;
    const std::pair<const char*, std::string> cases[] = {
        {"binary junk", "\x89PNG\r\n\x1a\n\xff\xd8\xff\xe0\x00\x10JFIF=\x01\x02\n"s},
        {"NUL bytes", "slide=\0\0\0\n\0\0[options]\0\n"s},
        {"unterminated section", "[options\nslide=5\n"s},
        {"huge line", std::string(1 << 20, 'z') + "\n"},
        {"over the size cap", "[keep]\nk=v\n" + std::string(5 << 20, ';') + "\n"}};
    for (const auto& [what, junk] : cases) {
        SCOPED_TRACE(what);
        TempDir dir;
        const RegistryKey key("Software\\V\\A\\A", dir.path());
        // Another owner's valid value must survive the rewrite unless the file is too big.
        writeFile(key.file(), "[other]\nmine=1\n" + junk);
        EXPECT_EQ(key.readInt("options", "slide", 2000), 2000);
        ASSERT_TRUE(key.writeInt("options", "slide", 3000));
        const bool capped = junk.size() > (4u << 20);
        EXPECT_EQ(readFile(key.file()), capped ? "[options]\nslide=3000\n"
                                               : "[other]\nmine=1\n\n[options]\nslide=3000\n");
    }
}

TEST(RegistryKey, ConcurrentWritersToOneFileAllLand) {
    TempDir dir;
    constexpr int threads = 4;
    constexpr int perThread = 25;
    std::vector<std::thread> writers;
    for (int t = 0; t < threads; ++t) {
        writers.emplace_back([&, t] {
            // Each thread has its own key object, as separate owners would.
            const RegistryKey key("Software\\V\\A\\A", dir.path());
            for (int i = 0; i < perThread; ++i)
                key.writeInt("t" + std::to_string(t), "k" + std::to_string(i), t * 1000 + i);
        });
    }
    for (auto& writer : writers)
        writer.join();
    const RegistryKey key("Software\\V\\A\\A", dir.path());
    for (int t = 0; t < threads; ++t) {
        for (int i = 0; i < perThread; ++i)
            EXPECT_EQ(key.readInt("t" + std::to_string(t), "k" + std::to_string(i), -1),
                      t * 1000 + i);
    }
}

} // namespace
