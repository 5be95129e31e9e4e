#include "settings/IniFile.h"

#include "TestFiles.h"

#include <sys/resource.h>

#include <gtest/gtest.h>

#include <array>
#include <csignal>

using lanmira::settings::IniFile;
namespace fs = std::filesystem;
using namespace std::string_literals;

namespace {

TEST(IniFile, NamesMatchWithoutCaseAndKeepTheirFirstSpellingAndPlace) {
    IniFile ini = IniFile::parse("top=1\n; note\n[Options]\nSLIDE=5\nother=1\n\n[Auto]\nSlot=6\n");
    EXPECT_EQ(ini.value("options", "slide"), "5");
    EXPECT_EQ(ini.value("", "TOP"), "1");
    EXPECT_EQ(ini.value("options", "top"), std::nullopt);

    ASSERT_TRUE(ini.setValue("options", "slide", "7"));
    ASSERT_TRUE(ini.setValue("OPTIONS", "Prompt", "0"));
    ASSERT_TRUE(ini.setValue("titleext", "ext", "jpg"));
    ASSERT_TRUE(ini.setValue("", "new", "x"));
    EXPECT_EQ(ini.toString(), "top=1\n; note\nnew=x\n\n[Options]\nSLIDE=7\nother=1\nPrompt=0\n\n"
                              "[Auto]\nSlot=6\n\n[titleext]\next=jpg\n");

    EXPECT_TRUE(ini.remove("AUTO", "slot"));
    EXPECT_FALSE(ini.remove("auto", "slot"));
}

TEST(IniFile, AwkwardStringsRoundTripByteForByte) {
    const auto samples = std::to_array<std::string>(
        {"", "plain", " lead", "trail ", "\t", "say \"hi\"", "C:\\dir\\", "two\nlines", "cr\r",
         "[x]", ";x", "#x", "a=b", "Grüße 日本 🙂", "bell\x07", "nul\0mid"s,
         "bad \xff\xc3 utf8", "\"unterminated", "\\x41"});
    IniFile ini;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        ASSERT_TRUE(ini.setValue("s", "v" + std::to_string(i), samples[i]));
        // Awkward names go through the same quoting.
        ASSERT_TRUE(ini.setValue("s", samples[i], std::to_string(i)));
    }
    const std::string text = ini.toString();
    EXPECT_NE(text.find("v13=Grüße 日本 🙂\n"), std::string::npos) << "UTF-8 stays readable";
    const IniFile back = IniFile::parse(text);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(back.value("s", "v" + std::to_string(i)), samples[i]);
        EXPECT_EQ(back.value("s", samples[i]), std::to_string(i));
    }
    EXPECT_EQ(back.toString(), text);
}

TEST(IniFile, IntegersReadAsA32BitWordOrNotAtAll) {
    const std::pair<const char*, int32_t> numbers[] = {{" 42 ", 42},
                                                       {"\t-7", -7},
                                                       {"2147483647", INT32_MAX},
                                                       {"2147483648", INT32_MIN},
                                                       {"4294967295", -1},
                                                       {"-2147483648", INT32_MIN}};
    for (const auto& [text, value] : numbers)
        EXPECT_EQ(IniFile::toInt(text), value) << '"' << text << '"';
    for (const char* text :
         {"4294967296", "-2147483649", "99999999999999999999999", "12abc", "1 2", "0x10", "", "-"})
        EXPECT_EQ(IniFile::toInt(text), std::nullopt) << '"' << text << '"';
}

TEST(IniFile, GarbageReadsAsNothingAndIsLeftOutWhenRewritten) {
    TempDir dir;
    const fs::path file = dir.path / "x.conf";
    writeFile(file, "good=1\nno equals sign\n\x89PNG\r\n\x1a\nbin\x01\x02=\xfe\xff\nnul\0=3\n"s
                    "=no name\nq=\"open\n# kept\r\n"
                    "[options\nslide=5\n[]\nlost=1\n"
                    "[sec]\nk=v\nK=duplicate\n[SEC]\nmore=2\n");
    IniFile ini = IniFile::load(file);
    EXPECT_EQ(ini.value("options", "slide"), std::nullopt);
    EXPECT_EQ(ini.value("", "slide"), std::nullopt) << "a broken header must not adopt its lines";
    EXPECT_EQ(ini.value("sec", "k"), "v");
    ASSERT_TRUE(ini.setValue("options", "slide", "3000"));
    ASSERT_TRUE(ini.save(file));
    EXPECT_EQ(readFile(file), "good=1\n# kept\n\n[sec]\nk=v\nmore=2\n\n[options]\nslide=3000\n");
}

TEST(IniFile, TheLongestLegalNameSaves) {
    TempDir dir;
    const fs::path file = dir.path / (std::string(250, 'n') + ".conf");
    IniFile ini;
    ini.setValue("", "k", "v");
    ASSERT_TRUE(ini.save(file));
    ASSERT_TRUE(ini.save(file));
    EXPECT_EQ(readFile(file), "k=v\n");
    EXPECT_EQ(folderEntries(dir.path).size(), 1u);
}

TEST(IniFile, FailedSavesKeepTheOldFileAndLeaveNoTemporaries) {
    TempDir dir;
    const fs::path file = dir.path / "sub" / "x.conf";
    IniFile ini;
    ini.setValue("", "k", "old");
    ASSERT_TRUE(ini.save(file));
    ini.setValue("", "k", std::string(IniFile::maxFileSize, 'n'));
    EXPECT_FALSE(ini.save(file)) << "a file the reader would refuse is never written";

    // A full disk, made with a file size limit since root ignores folder permissions.
    ini.setValue("", "k", std::string(200, 'n'));
    rlimit old{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &old), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = old;
    small.rlim_cur = 64;
    ::setrlimit(RLIMIT_FSIZE, &small);
    const bool saved = ini.save(file);
    ::setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, handler);
    EXPECT_FALSE(saved);
    EXPECT_EQ(readFile(file), "k=old\n");
    EXPECT_EQ(folderEntries(file.parent_path()), std::vector<std::string>{"x.conf"});

    const fs::path asFolder = dir.path / "folder.conf";
    writeFile(asFolder / "inside", "old");
    EXPECT_FALSE(ini.save(asFolder));
    EXPECT_EQ(folderEntries(dir.path), (std::vector<std::string>{"folder.conf", "sub"}));
    EXPECT_EQ(readFile(asFolder / "inside"), "old");
}

} // namespace
