#include "settings/IniFile.h"

#include "TestFiles.h"

#include <gtest/gtest.h>

#include <unistd.h>

using lanmira::settings::IniFile;
namespace fs = std::filesystem;

namespace {

TEST(IniFile, NamesMatchWithoutCaseAndKeepTheirFirstSpellingAndPlace) {
    IniFile ini = IniFile::parse("top=1\n; note\n[Options]\nSLIDE=5\nother=1\n\n[Auto]\nSlot=6\n");
    EXPECT_EQ(ini.value("options", "slide"), "5");
    EXPECT_EQ(ini.value("OPTIONS", "Other"), "1");
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
    EXPECT_EQ(ini.value("Auto", "Slot"), std::nullopt);
}

TEST(IniFile, AwkwardStringsRoundTripByteForByte) {
    using namespace std::string_literals;
    const std::string samples[] = {""s,
                                   "plain"s,
                                   " lead"s,
                                   "trail "s,
                                   "\t"s,
                                   "say \"hi\""s,
                                   "C:\\dir\\"s,
                                   "two\nlines"s,
                                   "cr\r"s,
                                   "[x]"s,
                                   ";x"s,
                                   "#x"s,
                                   "a=b"s,
                                   "Grüße 日本 🙂"s,
                                   "bell\x07"s,
                                   "nul\0mid"s,
                                   "bad \xff\xc3 utf8"s,
                                   "\"unterminated"s,
                                   "\\x41"s};
    IniFile ini;
    for (std::size_t i = 0; i < std::size(samples); ++i) {
        ASSERT_TRUE(ini.setValue("s", "v" + std::to_string(i), samples[i]));
        // Awkward names go through the same quoting.
        ASSERT_TRUE(ini.setValue("s", samples[i], std::to_string(i)));
    }
    const std::string text = ini.toString();
    EXPECT_NE(text.find("v1=plain\n"), std::string::npos);
    EXPECT_NE(text.find("v13=Grüße 日本 🙂\n"), std::string::npos) << "UTF-8 stays readable";
    const IniFile back = IniFile::parse(text);
    for (std::size_t i = 0; i < std::size(samples); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(back.value("s", "v" + std::to_string(i)), samples[i]);
        EXPECT_EQ(back.value("s", samples[i]), std::to_string(i));
    }
    EXPECT_EQ(back.toString(), text);
}

TEST(IniFile, IntegersReadAsA32BitWordOrNotAtAll) {
    const std::pair<const char*, std::optional<int32_t>> cases[] = {
        {"0", 0},
        {" 42 ", 42},
        {"\t-7", -7},
        {"2147483647", 2147483647},
        {"2147483648", INT32_MIN},
        {"4294967295", -1},
        {"-2147483648", INT32_MIN},
        {"4294967296", std::nullopt},
        {"-2147483649", std::nullopt},
        {"99999999999999999999999", std::nullopt},
        {"12abc", std::nullopt},
        {"1 2", std::nullopt},
        {"0x10", std::nullopt},
        {"text", std::nullopt},
        {"", std::nullopt},
        {"-", std::nullopt}};
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(IniFile::toInt(text), expected) << '"' << text << '"';
}

TEST(IniFile, JunkLinesAreIgnoredAndLeftOutWhenWritten) {
    using namespace std::string_literals;
    const std::string text = "good=1\n"
                             "no equals sign\n"
                             "bin\x01\x02=\xfe\xff\n"
                             "nul\0=3\n"s
                             "=no name\n"
                             "q=\"open\n"
                             "# kept\r\n"
                             "[Broken\n"
                             "lost=1\n"
                             "[]\n"
                             "lost2=1\n"
                             "[sec]\n"
                             "k=v\n"
                             "K=duplicate\n"
                             "[SEC]\n"
                             "more=2\n";
    const IniFile ini = IniFile::parse(text);
    EXPECT_EQ(ini.value("", "good"), "1");
    EXPECT_EQ(ini.value("", "lost"), std::nullopt) << "a broken header must not adopt its lines";
    EXPECT_EQ(ini.value("sec", "k"), "v");
    EXPECT_EQ(ini.value("sec", "more"), "2");
    EXPECT_EQ(ini.toString(), "good=1\n# kept\n\n[sec]\nk=v\nmore=2\n");
}

TEST(IniFile, OversizedFilesReadAsEmptyAndAreNeverWritten) {
    TempDir dir;
    const fs::path file = dir.path() / "big.conf";
    {
        std::ofstream out(file, std::ios::binary);
        out << "a=1\n" << std::string(IniFile::maxFileSize, '#') << "\n";
    }
    EXPECT_EQ(IniFile::load(file).value("", "a"), std::nullopt);

    IniFile ini;
    ini.setValue("", "a", "1");
    ASSERT_TRUE(ini.save(file));
    ini.setValue("", "huge", std::string(IniFile::maxFileSize, 'x'));
    EXPECT_FALSE(ini.save(file));
    EXPECT_EQ(readFile(file), "a=1\n");
}

TEST(IniFile, SavesLeaveNoTemporariesAndFailuresKeepTheOldFile) {
    TempDir dir;
    IniFile ini;
    ini.setValue("", "k", "new");
    ASSERT_TRUE(ini.save(dir.path() / "sub" / "x.conf"));
    EXPECT_EQ(folderEntries(dir.path() / "sub"), std::vector<std::string>{"x.conf"});
    fs::remove_all(dir.path() / "sub");

    const fs::path asFolder = dir.path() / "folder.conf";
    fs::create_directory(asFolder);
    std::ofstream(asFolder / "inside") << "old";
    EXPECT_FALSE(ini.save(asFolder));
    EXPECT_EQ(readFile(asFolder / "inside"), "old");

    const fs::path underFile = dir.path() / "plain" / "x.conf";
    std::ofstream(dir.path() / "plain") << "old";
    EXPECT_FALSE(ini.save(underFile));
    EXPECT_EQ(readFile(dir.path() / "plain"), "old");
    EXPECT_EQ(folderEntries(dir.path()), (std::vector<std::string>{"folder.conf", "plain"}));
}

TEST(IniFile, FailedSaveInReadOnlyFolderLeavesOldFile) {
    if (::geteuid() == 0)
        GTEST_SKIP() << "root writes into read-only folders, so this failure cannot be made";
    TempDir dir;
    const fs::path file = dir.path() / "x.conf";
    std::ofstream(file) << "k=old\n";
    fs::permissions(dir.path(), fs::perms::owner_read | fs::perms::owner_exec);
    IniFile ini;
    ini.setValue("", "k", "new");
    EXPECT_FALSE(ini.save(file));
    EXPECT_EQ(readFile(file), "k=old\n");
    EXPECT_EQ(folderEntries(dir.path()), std::vector<std::string>{"x.conf"});
}

} // namespace
