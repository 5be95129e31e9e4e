#pragma once

#include "app/ProductProfile.h"

#include <openssl/types.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lanmira {

// Writes enciphered product profiles with a vendor's private key.
class ProfileWriter {
public:
    using Block = std::array<std::uint8_t, kProfileBlockSize>;

    // Null, with `error` set, unless the PEM holds a 1024-bit RSA private key.
    static std::unique_ptr<ProfileWriter> fromPem(std::string_view pem, std::string& error);
    static std::unique_ptr<ProfileWriter> fromPemFile(const std::filesystem::path& file,
                                                      std::string& error);
    ~ProfileWriter();

    // XML file contents (UTF-8, or UTF-16 with a byte-order mark) to ".exml" bytes.
    bool write(std::span<const std::uint8_t> xml, std::vector<std::uint8_t>& exml,
               std::string& error) const;
    // The text as it is, cut into payloads of at most 117 bytes, padded and enciphered.
    bool encipher(std::span<const std::uint8_t> text, std::vector<std::uint8_t>& exml) const;
    // The raw private-key operation; `in` must be below the modulus.
    bool privateOperation(const Block& in, Block& out) const;

    std::vector<std::uint8_t> modulus() const;
    std::vector<std::uint8_t> publicExponent() const;
    // A complete ProfilePublicKey.h carrying this key's public half.
    std::string publicKeyHeader() const;

    // 00 01 FF.. 00 payload; `payload` must be at most 117 bytes.
    static Block padType1(std::span<const std::uint8_t> payload);
    // The text the profile carries: UTF-16LE led by the mark FF FE.
    static bool toMarkedUtf16Le(std::span<const std::uint8_t> xml, std::vector<std::uint8_t>& text,
                                std::string& error);

private:
    struct KeyFree {
        void operator()(EVP_PKEY* key) const;
    };
    explicit ProfileWriter(std::unique_ptr<EVP_PKEY, KeyFree> key);

    std::unique_ptr<EVP_PKEY, KeyFree> key_;
};

} // namespace lanmira
