#include "app/ProductProfile.h"

#include "../../tools/ProfileWriter.h"

#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>

namespace lanmira {

void PrintTo(const ProfileValues& v, std::ostream* os) {
    *os << ::testing::PrintToString(std::vector<std::u16string>{
        v.company, v.app, v.url, v.display, v.orbicam, v.orbinam, v.vnupdate.value_or(u"(none)")});
}

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;
using Block = ProfileWriter::Block;

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
    for (const char16_t unit : text) {
        out.push_back(std::uint8_t(unit & 0xFF));
        out.push_back(std::uint8_t(unit >> 8));
    }
    return out;
}

std::string pemOf(EVP_PKEY* key) {
    std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new(BIO_s_mem()), BIO_free);
    PEM_write_bio_PrivateKey(bio.get(), key, nullptr, nullptr, 0, nullptr, nullptr);
    char* data = nullptr;
    const long size = BIO_get_mem_data(bio.get(), &data);
    return std::string(data, std::size_t(size));
}

class ProductProfileTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        std::string error;
        writer_ = ProfileWriter::fromPemFile(kDefaultKey, error);
        ASSERT_TRUE(writer_) << error;
    }
    static void TearDownTestSuite() { writer_.reset(); }

    static Bytes write(std::string_view xml) {
        Bytes exml;
        std::string error;
        EXPECT_TRUE(writer_->write(bytesOf(xml), exml, error)) << error;
        return exml;
    }
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
    ASSERT_EQ(ProductProfile::readFile(file, programPublicKey(), values), ProfileError::None);
    EXPECT_EQ(values, (ProfileValues{u"Vornalt",
                                     u"Lanmira",
                                     u"https://vornalt.example/lanmira",
                                     u"Vornalt Lanmira",
                                     u"",
                                     u"",
                                     {}}));

    // The compiled-in key must be exactly what the writer prints for the default key.
    std::ostringstream header;
    header << std::ifstream(fs::path(LANMIRA_SOURCE_DIR) / "src/app/ProfilePublicKey.h").rdbuf();
    EXPECT_EQ(header.str(), writer_->publicKeyHeader());
}

TEST_F(ProductProfileTest, RoundTripsOemValues) {
    const std::string u127(127, 'u'), u128(128, 'u'), big(5000, 'c');
    std::string accented127, astral64; // 127 and 128 UTF-16 units
    for (int i = 0; i < 127; ++i)
        accented127 += "\xC3\xA9";
    for (int i = 0; i < 64; ++i)
        astral64 += "\xF0\x9F\x94\xAC";
    const std::u16string c5000(5000, u'c');
    struct Case {
        const char* what;
        std::string xml;
        ProfileError error;
        ProfileValues expected;
    };
    const Case cases[] = {
        {"later non-empty values replace earlier ones",
         R"(<lanmira><oem company="A" app="X" orbicam="c1"/><note company="N"/>)"
         R"(<oem company="B" app="" orbinam="n2"/></lanmira>)",
         ProfileError::None,
         {u"B", u"X", u"", u"", u"c1", u"n2", {}}},
        {"element names compare case-sensitively",
         R"(<lanmira><OEM company="Upper"/><Oem app="Mixed"/></lanmira>)",
         ProfileError::None,
         {}},
        {"url and display stop at 128 units",
         R"(<lanmira><oem url="short" display="short"/><oem url=")" + u127 + R"(" display=")" +
             u128 + R"("/></lanmira>)",
         ProfileError::None,
         {u"", u"", std::u16string(127, u'u'), u"short", u"", u"", {}}},
        {"the limit counts UTF-16 units, not bytes",
         "<lanmira><oem url=\"" + accented127 + "\" display=\"" + astral64 + "\"/></lanmira>",
         ProfileError::None,
         {u"", u"", std::u16string(127, u'é'), u"", u"", u"", {}}},
        {"company, app and modules of any length",
         R"(<lanmira><oem company=")" + big + R"(" app=")" + big + R"(" orbinam=")" + big +
             R"("/></lanmira>)",
         ProfileError::None,
         {c5000, c5000, u"", u"", u"", c5000, {}}},
        {"non-ASCII text and the root's update text",
         "<lanmira vnupdate=\"channel=beta\"><oem company=\"Ōptik 光学 \xF0\x9F\x94\xAC\"/>"
         "</lanmira>",
         ProfileError::None,
         {u"Ōptik 光学 🔬", u"", u"", u"", u"", u"", u"channel=beta"}},
        {"another root name",
         R"(<Lanmira><oem company="X"/></Lanmira>)",
         ProfileError::BadSyntax,
         {}},
        {"unclosed element",
         R"(<lanmira><oem company="X"></lanmira>)",
         ProfileError::LoadXmlError,
         {}},
        {"two document elements", "<lanmira/><lanmira/>", ProfileError::LoadXmlError, {}},
        {"no element at all", "<!-- nothing -->", ProfileError::LoadXmlError, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ProfileValues values;
        EXPECT_EQ(decode(write(c.xml), values), c.error);
        EXPECT_EQ(values, c.expected);
    }
}

TEST(ProductProfileDefaults, FillOnlyWhatIsUnset) {
    const std::u16string url = u"https://vornalt.example/lanmira", display = u"Vornalt Lanmira";
    const std::pair<ProfileValues, ProfileValues> cases[] = {
        {{}, {u"Vornalt", u"Lanmira", url, display, u"orbicam.dll", u"orbinam.dll", {}}},
        {{u"Acme", u"", u"", u"", u"", u"", {}},
         {u"Acme", u"Lanmira", u"", u"", u"orbicam.dll", u"orbinam.dll", {}}},
        {{u"", u"Scope", u"u", u"", u"", u"", u"x"},
         {u"Vornalt", u"Scope", u"u", display, u"orbicam.dll", u"orbinam.dll", u"x"}},
        {{u"Acme", u"Scope", u"u", u"d", u"m1", u"m2", {}},
         {u"Acme", u"Scope", u"u", u"d", u"m1", u"m2", {}}},
    };
    for (const auto& [in, expected] : cases) {
        ProfileValues v = in;
        ProductProfile::applyDefaults(v);
        EXPECT_EQ(v, expected);
    }
}

TEST_F(ProductProfileTest, FileLengthLimits) {
    // 2 + 2 * 479231 bytes of UTF-16 fill exactly 8192 payloads of 117 bytes.
    const std::string head = "<lanmira><oem company=\"Big\"/><!--", tail = "--></lanmira>";
    const Bytes largest = write(head + std::string(479231 - head.size() - tail.size(), 'x') + tail);
    ASSERT_EQ(largest.size(), kProfileMaxFileSize);
    Bytes byteOver = largest, blockOver = largest;
    byteOver.push_back(0);
    blockOver.insert(blockOver.end(), largest.begin(), largest.begin() + 128);
    const Bytes small = write("<lanmira/>");

    const std::tuple<const char*, Bytes, ProfileError> cases[] = {
        {"largest.exml", largest, ProfileError::None},
        {"empty.exml", {}, ProfileError::Corrupted},
        {"byte-over.exml", byteOver, ProfileError::Corrupted},
        {"block-over.exml", blockOver, ProfileError::Corrupted},
        {"ragged.exml", {small.begin(), small.end() - 1}, ProfileError::Corrupted},
    };
    TempDir dir;
    for (const auto& [name, bytes, error] : cases) {
        SCOPED_TRACE(name);
        writeFile(dir.path / name, bytes);
        ProfileValues fromFile, fromMemory;
        EXPECT_EQ(ProductProfile::readFile(dir.path / name, programPublicKey(), fromFile), error);
        EXPECT_EQ(decode(bytes, fromMemory), error);
        EXPECT_EQ(fromFile.company, error == ProfileError::None ? u"Big" : u"");
    }
}

TEST(ProductProfileUnpad, Type1Blocks) {
    const auto block = [](std::uint8_t b0, std::uint8_t b1, std::size_t ffCount, bool separator) {
        Block b;
        b.fill(0x5A);
        b[0] = b0;
        b[1] = b1;
        std::fill_n(b.begin() + 2, ffCount, 0xFF);
        if (separator)
            b[2 + ffCount] = 0x00;
        return b;
    };
    const std::tuple<const char*, Block, int> cases[] = {
        // payload size, -1: rejected
        {"eight FF, 117-byte payload", block(0, 1, 8, true), 117},
        {"long FF run, short payload", block(0, 1, 120, true), 5},
        {"empty payload", block(0, 1, 125, true), 0},
        {"seven FF, 118-byte payload", block(0, 1, 7, true), -1},
        {"type 2", block(0, 2, 8, true), -1},
        {"leading 01", block(1, 1, 8, true), -1},
        {"no separator", block(0, 1, 126, false), -1},
        {"separator is not zero", block(0, 1, 8, false), -1},
    };
    for (const auto& [what, b, size] : cases) {
        SCOPED_TRACE(what);
        Bytes payload{0xEE};
        EXPECT_EQ(ProductProfile::unpadType1(b, payload), size >= 0);
        if (size >= 0) {
            EXPECT_EQ(payload.size(), std::size_t(size) + 1) << "payload must be appended";
        }
    }
}

TEST_F(ProductProfileTest, ABadBlockAnywhereCorruptsTheProfile) {
    const Bytes good = write("<lanmira><oem company=\"Good\"/></lanmira>");
    Block sevenFf = ProfileWriter::padType1({});
    sevenFf[9] = 0x00;
    const Bytes badBlocks[] = {encipherBlock(sevenFf), Bytes(128, 0xFF),
                               programPublicKey().modulus};
    for (const Bytes& bad : badBlocks) {
        for (const bool badFirst : {true, false}) {
            Bytes exml = badFirst ? bad : good;
            const Bytes& second = badFirst ? good : bad;
            exml.insert(exml.end(), second.begin(), second.end());
            ProfileValues values;
            EXPECT_EQ(decode(exml, values), ProfileError::Corrupted);
        }
    }
}

TEST_F(ProductProfileTest, DecodedTextRules) {
    const std::tuple<const char*, Bytes, ProfileError> cases[] = {
        {"six bytes", utf16Le(u"<a>", false), ProfileError::Corrupted},
        {"odd length", bytesOf("<lanmira/>!"), ProfileError::Corrupted},
        {"eight unmarked bytes reach the parser", utf16Le(u"<a/>", false), ProfileError::BadSyntax},
        {"unmarked text is UTF-16LE", utf16Le(u"<lanmira><oem app=\"U\"/></lanmira>", false),
         ProfileError::None},
        {"marked text", utf16Le(u"<lanmira><oem app=\"U\"/></lanmira>", true), ProfileError::None},
    };
    for (const auto& [what, text, error] : cases) {
        SCOPED_TRACE(what);
        ProfileValues values;
        EXPECT_EQ(decode(encipher(text), values), error);
        EXPECT_EQ(values.app, error == ProfileError::None ? u"U" : u"");
    }
    ProfileValues values;
    EXPECT_EQ(decode(encipherBlock(ProfileWriter::padType1({})), values), ProfileError::Corrupted)
        << "a profile that decodes to nothing";
}

TEST(ProductProfileKey, ModulusMustBe128Bytes) {
    // A 1016-bit key enciphers 128-byte type-1 blocks that would otherwise unpad cleanly.
    std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(EVP_RSA_gen(1016), EVP_PKEY_free);
    const auto param = [&](const char* name) {
        BIGNUM* bn = nullptr;
        EVP_PKEY_get_bn_param(key.get(), name, &bn);
        Bytes out(std::size_t(BN_num_bytes(bn)));
        BN_bn2bin(bn, out.data());
        BN_free(bn);
        return out;
    };
    const Block padded = ProfileWriter::padType1(utf16Le(u"<lanmira/>", true));
    std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)> ctx(
        EVP_PKEY_CTX_new(key.get(), nullptr), EVP_PKEY_CTX_free);
    ASSERT_GT(EVP_PKEY_decrypt_init(ctx.get()), 0);
    ASSERT_GT(EVP_PKEY_CTX_set_rsa_padding(ctx.get(), RSA_NO_PADDING), 0);
    Bytes exml(128);
    std::size_t length = 127;
    ASSERT_GT(EVP_PKEY_decrypt(ctx.get(), exml.data() + 1, &length, padded.data() + 1, 127), 0);

    const Bytes modulus = param(OSSL_PKEY_PARAM_RSA_N);
    ASSERT_EQ(modulus.size(), 127u);
    Bytes zeroLed{0x00};
    zeroLed.insert(zeroLed.end(), modulus.begin(), modulus.end());
    for (const Bytes& n : {modulus, zeroLed}) {
        ProfileValues values;
        EXPECT_EQ(ProductProfile::decode(exml, {n, param(OSSL_PKEY_PARAM_RSA_E)}, values),
                  ProfileError::Corrupted);
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
        EXPECT_EQ(ProductProfile::readFile(file, programPublicKey(), values),
                  ProfileError::Missing);
    EXPECT_STREQ(profileErrorText(ProfileError::BadSyntax), "Bad syntax in the exml file .");
}

TEST_F(ProductProfileTest, WriterInputEncodingsGiveTheSameProfile) {
    const std::u16string xml = u"<lanmira><oem company=\"Ōptik\"/></lanmira>";
    Bytes bigEndian{0xFE, 0xFF};
    for (const char16_t unit : xml)
        bigEndian.insert(bigEndian.end(), {std::uint8_t(unit >> 8), std::uint8_t(unit & 0xFF)});
    const Bytes expected = write("<lanmira><oem company=\"Ōptik\"/></lanmira>");
    Bytes exml;
    std::string error;
    for (const Bytes& input : {bytesOf("\xEF\xBB\xBF<lanmira><oem company=\"Ōptik\"/></lanmira>"),
                               utf16Le(xml, true), bigEndian}) {
        ASSERT_TRUE(writer_->write(input, exml, error)) << error;
        EXPECT_EQ(exml, expected);
    }
    for (const Bytes& refused :
         {bytesOf("<lanmira a=\"\xC3\"/>"), bytesOf(std::string(479231, ' ') + "<"), Bytes{}})
        EXPECT_FALSE(writer_->write(refused, exml, error));
}

TEST(ProfileWriterTool, WritesAtomicallyAndRefusesOtherKeySizes) {
    TempDir dir;
    writeFile(dir.path / "in.xml", bytesOf("<lanmira><oem company=\"Tool\"/></lanmira>"));
    std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> big(EVP_RSA_gen(2048), EVP_PKEY_free);
    writeFile(dir.path / "big.pem", bytesOf(pemOf(big.get())));
    const auto run = [&](const fs::path& key, const char* out) {
        const std::string command = "'" LANMIRA_BUILD_DIR "/tools/lanmira-profile-writer' --key '" +
                                    key.string() + "' '" + (dir.path / "in.xml").string() + "' '" +
                                    (dir.path / out).string() + "' 2>/dev/null";
        return std::system(command.c_str());
    };

    EXPECT_NE(run(dir.path / "big.pem", "big.exml"), 0);
    EXPECT_FALSE(fs::exists(dir.path / "big.exml"));
    ASSERT_EQ(run(kDefaultKey, "out.exml"), 0);
    ProfileValues values;
    EXPECT_EQ(ProductProfile::readFile(dir.path / "out.exml", programPublicKey(), values),
              ProfileError::None);
    EXPECT_EQ(values.company, u"Tool");
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path), fs::directory_iterator()), 3)
        << "no temporary file may be left behind";
}

} // namespace
} // namespace lanmira
