#include "app/ProductProfile.h"

#include "app/ProfilePublicKey.h"

#include <openssl/bn.h>
#include <pugixml.hpp>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <new>
#include <string_view>
#include <unistd.h>

namespace lanmira {

namespace {

// Longer "url" and "display" values are ignored rather than cut.
constexpr std::size_t kShortFieldLimit = 128;

struct BnFree {
    void operator()(BIGNUM* bn) const { BN_free(bn); }
};
struct BnCtxFree {
    void operator()(BN_CTX* ctx) const { BN_CTX_free(ctx); }
};
using BnPtr = std::unique_ptr<BIGNUM, BnFree>;
using BnCtxPtr = std::unique_ptr<BN_CTX, BnCtxFree>;

class FileDescriptor {
public:
    explicit FileDescriptor(int fd) : fd_(fd) {}
    ~FileDescriptor() {
        if (fd_ >= 0)
            ::close(fd_);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int get() const { return fd_; }

private:
    int fd_;
};

bool lengthAcceptable(std::size_t length) {
    return length != 0 && length <= kProfileMaxFileSize;
}

// pugixml hands out UTF-8 that it made itself from the UTF-16 input, so it is well formed;
// widening through its own decoder avoids a second UTF-8 reader here.
std::u16string toUtf16(const char* utf8) {
    const std::wstring wide = pugi::as_wide(utf8);
    std::u16string out;
    out.reserve(wide.size());
    for (const wchar_t wc : wide) {
        const auto cp = static_cast<char32_t>(wc);
        if (cp >= 0x10000 && cp <= 0x10FFFF) {
            out.push_back(static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + ((cp - 0x10000) & 0x3FF)));
        } else if (cp < 0x10000) {
            out.push_back(static_cast<char16_t>(cp));
        } else {
            out.push_back(u'\uFFFD');
        }
    }
    return out;
}

// A missing attribute and an empty one both leave the field alone.
void takeAttribute(const pugi::xml_node& oem, const char* name, std::u16string& field,
                   std::size_t maxUnitsExclusive) {
    const char* value = oem.attribute(name).value();
    if (*value == '\0')
        return;
    std::u16string text = toUtf16(value);
    if (text.size() >= maxUnitsExclusive)
        return;
    field = std::move(text);
}

// pugixml accepts several top-level elements and top-level CDATA; a strict DOM loader
// rejects both, and a profile that relies on them is not one the writer produced.
bool singleDocumentElement(const pugi::xml_document& doc) {
    int elements = 0;
    for (const pugi::xml_node& node : doc.children()) {
        switch (node.type()) {
        case pugi::node_element:
            ++elements;
            break;
        case pugi::node_comment:
        case pugi::node_pi:
        case pugi::node_declaration:
        case pugi::node_doctype:
            break;
        default:
            return false;
        }
    }
    return elements == 1;
}

} // namespace

const char* profileErrorText(ProfileError error) {
    switch (error) {
    case ProfileError::None:
        return "";
    case ProfileError::Missing:
        return "The exml file is missing.";
    case ProfileError::Corrupted:
        return "The exml file is corrupted.";
    case ProfileError::ReadFailed:
        return "Failed to read the exml file.";
    case ProfileError::NoXmlDom:
        return "Failed to parse the exml file. MSXML 3.0 or above is required, you can download "
               "it from Microsoft website.";
    case ProfileError::ParseFailed:
        return "Failed to parse the exml file.";
    case ProfileError::ParseFailedMaybeCorrupted:
        return "Failed to parse the exml file, maybe it's corrupted.";
    case ProfileError::LoadXmlError:
        return "Failed to parse the exml file, loadXML error.";
    case ProfileError::BadSyntax:
        return "Bad syntax in the exml file .";
    }
    return "";
}

const RsaPublicKey& programPublicKey() {
    static const RsaPublicKey key{{kProfilePublicModulus.begin(), kProfilePublicModulus.end()},
                                  {kProfilePublicExponent.begin(), kProfilePublicExponent.end()}};
    return key;
}

std::filesystem::path ProductProfile::locate(const std::filesystem::path& executablePath) {
    if (!executablePath.has_filename())
        return {};
    std::filesystem::path name = executablePath.stem();
    name += ".exml";
    const std::filesystem::path programFolder = executablePath.parent_path();
    const std::filesystem::path parent = programFolder.parent_path();

    std::error_code ec;
    for (const std::filesystem::path& candidate :
         {parent / name, parent / "share" / "lanmira" / name}) {
        if (std::filesystem::exists(candidate, ec))
            return candidate;
    }
    return programFolder / name;
}

ProfileError ProductProfile::readFile(const std::filesystem::path& file, const RsaPublicKey& key,
                                      ProfileValues& out) {
    if (file.empty())
        return ProfileError::Missing;
    // O_NONBLOCK: a FIFO in the profile's place must not hang start-up.
    const FileDescriptor fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (fd.get() < 0)
        return ProfileError::Missing;
    struct stat info {};
    if (::fstat(fd.get(), &info) != 0 || S_ISDIR(info.st_mode))
        return ProfileError::Missing;
    if (info.st_size < 0 || !lengthAcceptable(static_cast<std::uint64_t>(info.st_size)))
        return ProfileError::Corrupted;

    const auto length = static_cast<std::size_t>(info.st_size);
    std::vector<std::uint8_t> bytes;
    try {
        bytes.resize(length);
    } catch (const std::bad_alloc&) {
        return ProfileError::Corrupted;
    }
    std::size_t done = 0;
    while (done < length) {
        const ssize_t got = ::read(fd.get(), bytes.data() + done, length - done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return ProfileError::ReadFailed;
        done += static_cast<std::size_t>(got);
    }
    return decode(bytes, key, out);
}

ProfileError ProductProfile::decode(std::span<const std::uint8_t> fileBytes,
                                    const RsaPublicKey& key, ProfileValues& out) {
    if (!lengthAcceptable(fileBytes.size()))
        return ProfileError::Corrupted;
    std::vector<std::uint8_t> decoded;
    try {
        if (!decryptBlocks(fileBytes, key, decoded))
            return ProfileError::Corrupted;
    } catch (const std::bad_alloc&) {
        return ProfileError::Corrupted;
    }
    return parseDecodedText(decoded, out);
}

bool ProductProfile::decryptBlocks(std::span<const std::uint8_t> fileBytes, const RsaPublicKey& key,
                                   std::vector<std::uint8_t>& payloads) {
    if (!lengthAcceptable(fileBytes.size()) || fileBytes.size() % kProfileBlockSize != 0)
        return false;
    if (key.modulus.size() > kProfileMaxFileSize || key.exponent.size() > kProfileMaxFileSize)
        return false;

    const BnCtxPtr ctx(BN_CTX_new());
    const BnPtr modulus(
        BN_bin2bn(key.modulus.data(), static_cast<int>(key.modulus.size()), nullptr));
    const BnPtr exponent(
        BN_bin2bn(key.exponent.data(), static_cast<int>(key.exponent.size()), nullptr));
    const BnPtr cipher(BN_new());
    const BnPtr plain(BN_new());
    if (!ctx || !modulus || !exponent || !cipher || !plain)
        return false;
    // Leading zero bytes would make a shorter key look like a 1024-bit one.
    if (BN_num_bytes(modulus.get()) != static_cast<int>(kProfileBlockSize))
        return false;

    const std::size_t before = payloads.size();
    payloads.reserve(before + fileBytes.size() / kProfileBlockSize * kProfileMaxPayload);
    std::array<std::uint8_t, kProfileBlockSize> block{};
    for (std::size_t offset = 0; offset < fileBytes.size(); offset += kProfileBlockSize) {
        if (!BN_bin2bn(fileBytes.data() + offset, static_cast<int>(kProfileBlockSize),
                       cipher.get()))
            return false;
        if (BN_cmp(cipher.get(), modulus.get()) >= 0)
            return false;
        if (!BN_mod_exp(plain.get(), cipher.get(), exponent.get(), modulus.get(), ctx.get()))
            return false;
        if (BN_bn2binpad(plain.get(), block.data(), static_cast<int>(block.size())) !=
            static_cast<int>(block.size()))
            return false;
        if (!unpadType1(block, payloads))
            return false;
    }
    return payloads.size() > before;
}

bool ProductProfile::unpadType1(std::span<const std::uint8_t, kProfileBlockSize> block,
                                std::vector<std::uint8_t>& payloadAppend) {
    if (block[0] != 0x00 || block[1] != 0x01)
        return false;
    std::size_t pos = 2;
    while (pos < block.size() && block[pos] == 0xFF)
        ++pos;
    if (pos - 2 < 8 || pos == block.size() || block[pos] != 0x00)
        return false;
    ++pos;
    // At least eight FF bytes already bound the payload to 117 bytes.
    payloadAppend.insert(payloadAppend.end(), block.begin() + static_cast<std::ptrdiff_t>(pos),
                         block.end());
    return true;
}

ProfileError ProductProfile::parseDecodedText(std::span<const std::uint8_t> decoded,
                                              ProfileValues& out) {
    if (decoded.size() < 8 || decoded.size() % 2 != 0)
        return ProfileError::Corrupted;
    // Only the first byte identifies the mark. Profiles are always written with it; text
    // without it is taken as UTF-16LE from its first byte rather than guessed at.
    std::span<const std::uint8_t> text = decoded;
    if (text[0] == 0xFF)
        text = text.subspan(2);

    // pugixml never loads external entities or DTDs, so nothing outside the text is read.
    pugi::xml_document doc;
    const pugi::xml_parse_result result =
        doc.load_buffer(text.data(), text.size(), pugi::parse_default, pugi::encoding_utf16_le);
    if (!result || !singleDocumentElement(doc))
        return ProfileError::LoadXmlError;

    const pugi::xml_node root = doc.child("lanmira");
    if (!root)
        return ProfileError::BadSyntax;
    if (const pugi::xml_attribute update = root.attribute("vnupdate"))
        out.vnupdate = toUtf16(update.value());

    constexpr std::size_t unlimited = std::u16string::npos;
    for (const pugi::xml_node& child : root.children()) {
        if (child.type() != pugi::node_element || std::strcmp(child.name(), "oem") != 0)
            continue;
        takeAttribute(child, "company", out.company, unlimited);
        takeAttribute(child, "app", out.app, unlimited);
        takeAttribute(child, "url", out.url, kShortFieldLimit);
        takeAttribute(child, "display", out.display, kShortFieldLimit);
        takeAttribute(child, "orbicam", out.orbicam, unlimited);
        takeAttribute(child, "orbinam", out.orbinam, unlimited);
    }
    return ProfileError::None;
}

void ProductProfile::applyDefaults(ProfileValues& values) {
    if (values.app.empty())
        values.app = u"Lanmira";
    if (values.company.empty()) {
        values.company = u"Vornalt";
        if (values.url.empty())
            values.url = u"https://vornalt.example/lanmira";
        if (values.display.empty())
            values.display = u"Vornalt Lanmira";
    }
    // Module names the capture library is handed; they keep their ".dll" form on purpose.
    if (values.orbicam.empty())
        values.orbicam = u"orbicam.dll";
    if (values.orbinam.empty())
        values.orbinam = u"orbinam.dll";
}

} // namespace lanmira
