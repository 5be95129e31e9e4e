#include "ProfileWriter.h"

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iconv.h>
#include <iterator>
#include <limits>
#include <sstream>

namespace lanmira {

namespace {

constexpr int kKeyBits = 1024;

struct BioFree {
    void operator()(BIO* bio) const { BIO_free(bio); }
};
struct BnFree {
    void operator()(BIGNUM* bn) const { BN_free(bn); }
};
struct PkeyCtxFree {
    void operator()(EVP_PKEY_CTX* ctx) const { EVP_PKEY_CTX_free(ctx); }
};

class Iconv {
public:
    Iconv(const char* to, const char* from) : cd_(iconv_open(to, from)) {}
    ~Iconv() {
        if (valid())
            iconv_close(cd_);
    }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;
    bool valid() const { return cd_ != reinterpret_cast<iconv_t>(-1); }
    iconv_t get() const { return cd_; }

private:
    iconv_t cd_;
};

std::string opensslError() {
    const unsigned long code = ERR_get_error();
    ERR_clear_error();
    if (code == 0)
        return "unknown OpenSSL error";
    char text[256];
    ERR_error_string_n(code, text, sizeof text);
    return text;
}

std::vector<std::uint8_t> bignumParam(const EVP_PKEY* key, const char* name) {
    BIGNUM* raw = nullptr;
    if (!EVP_PKEY_get_bn_param(key, name, &raw))
        return {};
    const std::unique_ptr<BIGNUM, BnFree> value(raw);
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(BN_num_bytes(value.get())));
    BN_bn2bin(value.get(), bytes.data());
    return bytes;
}

void appendArray(std::ostringstream& out, const char* name,
                 const std::vector<std::uint8_t>& bytes) {
    out << "inline constexpr std::array<std::uint8_t, " << bytes.size() << "> " << name << "{";
    constexpr std::size_t perLine = 16;
    const bool multiLine = bytes.size() > perLine;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (multiLine && i % perLine == 0)
            out << "\n    ";
        char hex[5];
        std::snprintf(hex, sizeof hex, "0x%02x", bytes[i]);
        out << hex;
        if (i + 1 < bytes.size())
            out << ((multiLine && i % perLine == perLine - 1) ? "," : ", ");
    }
    out << "};\n";
}

} // namespace

void ProfileWriter::KeyFree::operator()(EVP_PKEY* key) const {
    EVP_PKEY_free(key);
}

ProfileWriter::ProfileWriter(std::unique_ptr<EVP_PKEY, KeyFree> key) : key_(std::move(key)) {}

ProfileWriter::~ProfileWriter() = default;

std::unique_ptr<ProfileWriter> ProfileWriter::fromPem(std::string_view pem, std::string& error) {
    const std::unique_ptr<BIO, BioFree> bio(BIO_new_mem_buf(
        pem.data(),
        static_cast<int>(std::min<std::size_t>(pem.size(), std::numeric_limits<int>::max()))));
    if (!bio) {
        error = opensslError();
        return nullptr;
    }
    // Without a callback OpenSSL would prompt on the terminal for a pass phrase.
    auto noPassphrase = [](char*, int, int, void*) { return -1; };
    std::unique_ptr<EVP_PKEY, KeyFree> key(
        PEM_read_bio_PrivateKey(bio.get(), nullptr, noPassphrase, nullptr));
    if (!key) {
        ERR_clear_error();
        error = "no unencrypted PEM private key found";
        return nullptr;
    }
    if (!EVP_PKEY_is_a(key.get(), "RSA")) {
        error = "the key is not an RSA key";
        return nullptr;
    }
    if (EVP_PKEY_get_bits(key.get()) != kKeyBits) {
        error = "the key has a " + std::to_string(EVP_PKEY_get_bits(key.get())) +
                "-bit modulus; product profiles need a 1024-bit RSA key";
        return nullptr;
    }
    return std::unique_ptr<ProfileWriter>(new ProfileWriter(std::move(key)));
}

std::unique_ptr<ProfileWriter> ProfileWriter::fromPemFile(const std::filesystem::path& file,
                                                          std::string& error) {
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        error = "cannot open " + file.string();
        return nullptr;
    }
    const std::string pem{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    auto writer = fromPem(pem, error);
    if (!writer)
        error = file.string() + ": " + error;
    return writer;
}

bool ProfileWriter::write(std::span<const std::uint8_t> xml, std::vector<std::uint8_t>& exml,
                          std::string& error) const {
    std::vector<std::uint8_t> text;
    if (!toMarkedUtf16Le(xml, text, error))
        return false;
    constexpr std::size_t maxText = kProfileMaxFileSize / kProfileBlockSize * kProfileMaxPayload;
    if (text.size() > maxText) {
        error = "the XML is " + std::to_string(text.size()) +
                " bytes as UTF-16; a profile holds at most " + std::to_string(maxText);
        return false;
    }
    if (!encipher(text, exml)) {
        error = "the RSA private-key operation failed: " + opensslError();
        return false;
    }
    return true;
}

bool ProfileWriter::encipher(std::span<const std::uint8_t> text,
                             std::vector<std::uint8_t>& exml) const {
    exml.clear();
    if (text.empty())
        return false;
    exml.reserve((text.size() + kProfileMaxPayload - 1) / kProfileMaxPayload * kProfileBlockSize);
    Block out{};
    for (std::size_t offset = 0; offset < text.size(); offset += kProfileMaxPayload) {
        const auto payload =
            text.subspan(offset, std::min(kProfileMaxPayload, text.size() - offset));
        if (!privateOperation(padType1(payload), out))
            return false;
        exml.insert(exml.end(), out.begin(), out.end());
    }
    return true;
}

bool ProfileWriter::privateOperation(const Block& in, Block& out) const {
    const std::unique_ptr<EVP_PKEY_CTX, PkeyCtxFree> ctx(
        EVP_PKEY_CTX_new_from_pkey(nullptr, key_.get(), nullptr));
    if (!ctx || EVP_PKEY_decrypt_init(ctx.get()) <= 0 ||
        EVP_PKEY_CTX_set_rsa_padding(ctx.get(), RSA_NO_PADDING) <= 0)
        return false;
    std::size_t outLength = out.size();
    if (EVP_PKEY_decrypt(ctx.get(), out.data(), &outLength, in.data(), in.size()) <= 0)
        return false;
    if (outLength != out.size())
        return false;
    return true;
}

std::vector<std::uint8_t> ProfileWriter::modulus() const {
    return bignumParam(key_.get(), OSSL_PKEY_PARAM_RSA_N);
}

std::vector<std::uint8_t> ProfileWriter::publicExponent() const {
    return bignumParam(key_.get(), OSSL_PKEY_PARAM_RSA_E);
}

std::string ProfileWriter::publicKeyHeader() const {
    std::ostringstream out;
    out << "#pragma once\n\n"
           "#include <array>\n"
           "#include <cstdint>\n\n"
           "namespace lanmira {\n\n"
           "// Public half of the key that product profiles are checked against. Written by\n"
           "//   lanmira-profile-writer --key KEY.pem --print-public-key > "
           "src/app/ProfilePublicKey.h\n"
           "// from the private key whose profiles this build is to accept.\n";
    appendArray(out, "kProfilePublicModulus", modulus());
    appendArray(out, "kProfilePublicExponent", publicExponent());
    out << "\n} // namespace lanmira\n";
    return out.str();
}

ProfileWriter::Block ProfileWriter::padType1(std::span<const std::uint8_t> payload) {
    Block block{};
    const std::size_t length = std::min(payload.size(), kProfileMaxPayload);
    const std::size_t separator = block.size() - length - 1;
    block[0] = 0x00;
    block[1] = 0x01;
    std::fill(block.begin() + 2, block.begin() + static_cast<std::ptrdiff_t>(separator), 0xFF);
    block[separator] = 0x00;
    std::copy_n(payload.begin(), length,
                block.begin() + static_cast<std::ptrdiff_t>(separator) + 1);
    return block;
}

bool ProfileWriter::toMarkedUtf16Le(std::span<const std::uint8_t> xml,
                                    std::vector<std::uint8_t>& text, std::string& error) {
    text.assign({0xFF, 0xFE});
    const auto startsWith = [&](std::initializer_list<std::uint8_t> mark) {
        return xml.size() >= mark.size() && std::equal(mark.begin(), mark.end(), xml.begin());
    };
    if (startsWith({0xFF, 0xFE}) || startsWith({0xFE, 0xFF})) {
        const bool bigEndian = xml[0] == 0xFE;
        const auto units = xml.subspan(2);
        if (units.size() % 2 != 0) {
            error = "the UTF-16 XML has an odd number of bytes";
            return false;
        }
        for (std::size_t i = 0; i < units.size(); i += 2) {
            text.push_back(units[bigEndian ? i + 1 : i]);
            text.push_back(units[bigEndian ? i : i + 1]);
        }
    } else {
        if (startsWith({0xEF, 0xBB, 0xBF}))
            xml = xml.subspan(3);
        const Iconv converter("UTF-16LE", "UTF-8");
        if (!converter.valid()) {
            error = "no UTF-8 to UTF-16 converter available";
            return false;
        }
        // Every UTF-8 sequence yields at most two bytes of UTF-16 per input byte.
        text.resize(2 + 2 * xml.size());
        auto* in = const_cast<char*>(reinterpret_cast<const char*>(xml.data()));
        std::size_t inLeft = xml.size();
        auto* out = reinterpret_cast<char*>(text.data() + 2);
        std::size_t outLeft = text.size() - 2;
        if (iconv(converter.get(), &in, &inLeft, &out, &outLeft) == static_cast<std::size_t>(-1)) {
            error =
                "the XML is not valid UTF-8 (at byte " + std::to_string(xml.size() - inLeft) + ")";
            return false;
        }
        text.resize(text.size() - outLeft);
    }
    if (text.size() == 2) {
        error = "the XML is empty";
        return false;
    }
    return true;
}

} // namespace lanmira
