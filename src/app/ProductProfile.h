#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace lanmira {

// Byte layout of the enciphered ".exml" file, shared with the profile writer.
inline constexpr std::size_t kProfileBlockSize = 128;
inline constexpr std::size_t kProfileMaxPayload = kProfileBlockSize - 11;
inline constexpr std::size_t kProfileMaxFileSize = 1048576;

enum class ProfileError {
    None,
    Missing,
    Corrupted,
    ReadFailed,
    NoXmlDom,
    ParseFailed,
    ParseFailedMaybeCorrupted,
    LoadXmlError,
    BadSyntax
};

// The fixed English message for an error; empty for None.
const char* profileErrorText(ProfileError error);

// UTF-16 exactly as read from the XML; empty means "not given".
struct ProfileValues {
    std::u16string company, app, url, display, orbicam, orbinam;
    std::optional<std::u16string> vnupdate;

    bool operator==(const ProfileValues&) const = default;
};

// Big-endian magnitudes.
struct RsaPublicKey {
    std::vector<std::uint8_t> modulus;
    std::vector<std::uint8_t> exponent;
};

// The key the program checks profiles against.
const RsaPublicKey& programPublicKey();

class ProductProfile {
public:
    // "<executable stem>.exml" in the program folder's parent, else in <parent>/share/lanmira
    // (the installed layout), else in the program folder without checking that it exists.
    // Empty when the path names no file.
    static std::filesystem::path locate(const std::filesystem::path& executablePath);

    // Opens, reads and decodes a profile file; `out` keeps what was set before for values
    // the profile does not give.
    static ProfileError readFile(const std::filesystem::path& file, const RsaPublicKey& key,
                                 ProfileValues& out);
    static ProfileError decode(std::span<const std::uint8_t> fileBytes, const RsaPublicKey& key,
                               ProfileValues& out);

    // Appends the payloads of all blocks; false when the length, the key or any block is bad,
    // or when nothing was decoded.
    static bool decryptBlocks(std::span<const std::uint8_t> fileBytes, const RsaPublicKey& key,
                              std::vector<std::uint8_t>& payloads);
    static bool unpadType1(std::span<const std::uint8_t, kProfileBlockSize> block,
                           std::vector<std::uint8_t>& payloadAppend);
    // The decoded UTF-16LE text, optionally led by the mark FF FE.
    static ProfileError parseDecodedText(std::span<const std::uint8_t> decoded, ProfileValues& out);

    // Built-in values for whatever the profile left empty.
    static void applyDefaults(ProfileValues& values);
};

} // namespace lanmira
