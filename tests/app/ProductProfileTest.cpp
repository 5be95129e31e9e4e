#include "app/ProductProfile.h"

#include "../../tools/ProfileWriter.h"

#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <sstream>

namespace lanmira {

void PrintTo(const ProfileValues& v, std::ostream* os) {
    *os << ::testing::PrintToString(std::vector<std::u16string>{
        v.company, v.app, v.url, v.display, v.orbicam, v.orbinam, v.vnupdate.value_or(u"(none)")});
}

void PrintTo(ProfileError error, std::ostream* os) {
    *os << int(error) << " \"" << profileErrorText(error) << '"';
}

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;
using Block = ProfileWriter::Block;
using enum ProfileError;

const fs::path kDefaultKey = fs::path(LANMIRA_SOURCE_DIR) / "tools/default-profile-key.pem";

struct TempDir {
    fs::path path =
        fs::temp_directory_path() / ("lanmira-profile-" + std::to_string(std::random_device{}()));
    TempDir() { fs::create_directories(path); }
    ~TempDir() { fs::remove_all(path); }
};

void writeFile(const fs::path& file, std::span<const std::uint8_t> bytes) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

Bytes bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

Bytes utf16Le(std::u16string_view text, bool mark) {
    Bytes out = mark ? Bytes{0xFF, 0xFE} : Bytes{};
    for (const char16_t unit : text)
        out.insert(out.end(), {std::uint8_t(unit & 0xFF), std::uint8_t(unit >> 8)});
    return out;
}

class ProductProfileTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        std::string error;
        writer_ = ProfileWriter::fromPemFile(kDefaultKey, error);
        ASSERT_TRUE(writer_) << error;
    }
    static void TearDownTestSuite() { writer_.reset(); }

    static Bytes write(std::span<const std::uint8_t> xml) {
        Bytes exml;
        std::string error;
        EXPECT_TRUE(writer_->write(xml, exml, error)) << error;
        return exml;
    }
    static Bytes write(std::string_view xml) { return write(bytesOf(xml)); }
    static Bytes encipher(const Bytes& text) {
        Bytes exml;
        EXPECT_TRUE(writer_->encipher(text, exml));
        return exml;
    }
    static Bytes encipherBlock(const Block& padded) {
        Block out{};
        EXPECT_TRUE(writer_->privateOperation(padded, out));
        return {out.begin(), out.end()};
    }
    static ProfileError decode(std::span<const std::uint8_t> exml, ProfileValues& values) {
        return ProductProfile::decode(exml, programPublicKey(), values);
    }

    static inline std::unique_ptr<ProfileWriter> writer_;
};

TEST_F(ProductProfileTest, BuiltDefaultProfileDecodesWithTheProgramKey) {
    ProfileValues values;
    const fs::path file = fs::path(LANMIRA_BUILD_DIR) / "share/lanmira/lanmira.exml";
    ASSERT_EQ(ProductProfile::readFile(file, programPublicKey(), values), None);
    EXPECT_EQ(values, (ProfileValues{u"Vornalt", u"Lanmira", u"https://vornalt.example/lanmira",
                                     u"Vornalt Lanmira", u"", u"", std::nullopt}));

    // The compiled-in key must be exactly what the writer prints for the default key.
    std::ostringstream header;
    header << std::ifstream(fs::path(LANMIRA_SOURCE_DIR) / "src/app/ProfilePublicKey.h").rdbuf();
    EXPECT_EQ(header.str(), writer_->publicKeyHeader());
}

TEST_F(ProductProfileTest, RoundTripsOemValues) {
    std::string accented127, astral64; // 127 and 128 UTF-16 units, but 254 and 256 bytes
    for (int i = 0; i < 127; ++i)
        accented127 += "\xC3\xA9";
    for (int i = 0; i < 64; ++i)
        astral64 += "\xF0\x9F\x94\xAC";
    const std::string big(200, 'c');
    const std::tuple<const char*, std::string, ProfileError, ProfileValues> cases[] = {
        {"later non-empty values win; only <oem> counts",
         R"(<lanmira><oem company="A" app="X" orbicam="c1"/><note company="N"/>)"
         R"(<oem company="Ōptik 光学 🔬" app="" orbinam="n2"/><OEM company="Upper"/></lanmira>)",
         None,
         {u"Ōptik 光学 🔬", u"X", u"", u"", u"c1", u"n2", {}}},
        {"only url and display are limited, to 127 UTF-16 units",
         R"(<lanmira><oem url="short" display="short"/><oem url=")" + accented127 +
             R"(" display=")" + astral64 + R"(" company=")" + big + R"("/></lanmira>)",
         None,
         {std::u16string(200, u'c'), u"", std::u16string(127, u'é'), u"short", u"", u"", {}}},
        {"no oem; the root carries the update text",
         R"(<lanmira vnupdate="channel=beta"/>)",
         None,
         {u"", u"", u"", u"", u"", u"", u"channel=beta"}},
        {"another root name", R"(<Lanmira><oem company="X"/></Lanmira>)", BadSyntax, {}},
        {"unclosed element", R"(<lanmira><oem company="X"></lanmira>)", LoadXmlError, {}},
        {"two document elements", "<lanmira/><lanmira/>", LoadXmlError, {}},
    };
    for (const auto& [what, xml, error, expected] : cases) {
        SCOPED_TRACE(what);
        ProfileValues values;
        EXPECT_EQ(decode(write(xml), values), error);
        EXPECT_EQ(values, expected);
    }
    EXPECT_EQ(write(utf16Le(u"<lanmira><oem company=\"Ōptik\"/></lanmira>", true)),
              write("<lanmira><oem company=\"Ōptik\"/></lanmira>"))
        << "the writer takes UTF-16 with a mark as it takes UTF-8";
}

TEST(ProductProfileDefaults, UrlAndDisplayOnlyWithTheBuiltInCompany) {
    ProfileValues none, acme{u"Acme", u"", u"", u"", u"m1", u"", {}};
    ProductProfile::applyDefaults(none);
    ProductProfile::applyDefaults(acme);
    EXPECT_EQ(none,
              (ProfileValues{u"Vornalt", u"Lanmira", u"https://vornalt.example/lanmira",
                             u"Vornalt Lanmira", u"orbicam.dll", u"orbinam.dll", std::nullopt}));
    EXPECT_EQ(acme, (ProfileValues{u"Acme", u"Lanmira", u"", u"", u"m1", u"orbinam.dll", {}}));
}

TEST_F(ProductProfileTest, FileLengthAndDecodedTextLimits) {
    // 2 + 2 * 479231 bytes of UTF-16 fill exactly 8192 payloads of 117 bytes.
    const std::string head = "<lanmira><oem app=\"U\"/><!--", tail = "--></lanmira>";
    const Bytes largest = write(head + std::string(479231 - head.size() - tail.size(), 'x') + tail);
    ASSERT_EQ(largest.size(), kProfileMaxFileSize);
    Bytes byteOver = largest;
    byteOver.push_back(0);
    const Bytes small = write("<lanmira/>");

    const std::tuple<const char*, Bytes, ProfileError> cases[] = {
        {"largest.exml", largest, None},
        {"empty.exml", {}, Corrupted},
        {"byte-over.exml", byteOver, Corrupted},
        {"ragged.exml", {small.begin(), small.end() - 1}, Corrupted},
        {"nothing.exml", encipherBlock(ProfileWriter::padType1({})), Corrupted},
        {"six-bytes.exml", encipher(utf16Le(u"<a>", false)), Corrupted},
        {"odd-length.exml", encipher(bytesOf("<lanmira/>!")), Corrupted},
        {"eight-bytes-reach-the-parser.exml", encipher(utf16Le(u"<a/>", false)), BadSyntax},
        {"unmarked-is-utf16le.exml",
         encipher(utf16Le(u"<lanmira><oem app=\"U\"/></lanmira>", false)), None},
    };
    TempDir dir;
    for (const auto& [name, bytes, error] : cases) {
        SCOPED_TRACE(name);
        writeFile(dir.path / name, bytes);
        ProfileValues fromFile, fromMemory;
        EXPECT_EQ(ProductProfile::readFile(dir.path / name, programPublicKey(), fromFile), error);
        EXPECT_EQ(decode(bytes, fromMemory), error);
        EXPECT_EQ(fromFile.app, error == None ? u"U" : u"");
    }
}

TEST_F(ProductProfileTest, ABadBlockAnywhereCorruptsTheProfile) {
    const auto badPadding = [](std::size_t at, std::uint8_t value) {
        Block b = ProfileWriter::padType1({});
        b[at] = value;
        return encipherBlock(b);
    };
    // Deciphers to a valid block unless values at or above the modulus are refused.
    const auto plusModulus = [] {
        const Bytes& modulus = programPublicKey().modulus;
        for (int k = 0; k < 256; ++k) {
            Bytes sum = encipherBlock(ProfileWriter::padType1(Bytes{std::uint8_t(k), 0}));
            unsigned carry = 0;
            for (std::size_t i = sum.size(); i-- > 0; carry >>= 8) {
                carry += sum[i] + modulus[i];
                sum[i] = std::uint8_t(carry);
            }
            if (carry == 0)
                return sum;
        }
        return Bytes{};
    };
    const std::pair<const char*, Bytes> badBlocks[] = {
        {"seven FF", badPadding(9, 0x00)},
        {"block type 2", badPadding(1, 0x02)},
        {"leading 01", badPadding(0, 0x01)},
        {"no zero after the FF run", badPadding(127, 0xFF)},
        {"a valid block plus the modulus", plusModulus()},
    };
    const Bytes good = write("<lanmira><oem company=\"Good\"/></lanmira>");
    for (const auto& [what, bad] : badBlocks) {
        SCOPED_TRACE(what);
        for (const bool badFirst : {true, false}) {
            Bytes exml = badFirst ? bad : good;
            const Bytes& second = badFirst ? good : bad;
            exml.insert(exml.end(), second.begin(), second.end());
            ProfileValues values;
            EXPECT_EQ(decode(exml, values), Corrupted);
        }
    }
}

TEST(ProductProfileKey, ModulusMustBe128Bytes) {
    // With exponent 1 a block below the modulus deciphers to itself, so only the modulus
    // length is left to refuse it.
    const Block padded = ProfileWriter::padType1(utf16Le(u"<lanmira/>", true));
    Bytes zeroLed(128, 0xFF);
    zeroLed[0] = 0x00;
    const std::pair<Bytes, ProfileError> cases[] = {
        {Bytes(128, 0xFF), None}, {Bytes(127, 0xFF), Corrupted}, {zeroLed, Corrupted}};
    for (const auto& [modulus, error] : cases) {
        ProfileValues values;
        EXPECT_EQ(ProductProfile::decode(padded, {modulus, {0x01}}, values), error)
            << modulus.size() << " bytes led by " << int(modulus[0]);
    }
}

TEST(ProductProfileLocate, ParentThenShareThenProgramFolder) {
    TempDir dir;
    const fs::path exe = dir.path / "prefix/bin/lanmira.bin";
    EXPECT_EQ(ProductProfile::locate(exe), dir.path / "prefix/bin/lanmira.exml")
        << "the program folder needs no existence test";
    writeFile(dir.path / "prefix/bin/lanmira.exml", bytesOf("x"));
    writeFile(dir.path / "prefix/share/lanmira/lanmira.exml", bytesOf("x"));
    EXPECT_EQ(ProductProfile::locate(exe), dir.path / "prefix/share/lanmira/lanmira.exml");
    writeFile(dir.path / "prefix/lanmira.exml", bytesOf("x"));
    EXPECT_EQ(ProductProfile::locate(exe), dir.path / "prefix/lanmira.exml");
    EXPECT_EQ(ProductProfile::locate(dir.path / "prefix/bin/"), fs::path());
}

TEST(ProductProfileRead, MissingOrUnopenableFiles) {
    TempDir dir;
    ProfileValues values;
    for (const fs::path& file : {dir.path / "none.exml", dir.path, fs::path()})
        EXPECT_EQ(ProductProfile::readFile(file, programPublicKey(), values), Missing);
}

} // namespace
} // namespace lanmira
