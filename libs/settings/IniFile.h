#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lanmira::settings {

// One settings file: values before the first `[section]` header, then sections of
// `key=value` lines. Section and key names match without regard to ASCII case; the first
// spelling and the order of what is already there are kept. Lines that make no sense are
// ignored and left out when the file is written again.
class IniFile {
public:
    // A bigger file is not read; far above any real settings file, it only bounds memory.
    static constexpr std::size_t maxFileSize = std::size_t{64} << 20;

    static IniFile parse(std::string_view text);
    // A missing file reads as empty. nullopt when a file is there but cannot be read
    // (no permission, not a regular file, too large, I/O error): whoever writes must then
    // leave it alone, since replacing it would lose the user's settings.
    static std::optional<IniFile> read(const std::filesystem::path& file);
    // For readers: as read(), with a file that cannot be read taken as empty.
    static IniFile load(const std::filesystem::path& file);

    std::string toString() const;
    // Atomic; false when the file could not be written or would exceed maxFileSize.
    bool save(const std::filesystem::path& file) const;

    // section "" is the part before the first header.
    std::optional<std::string> value(std::string_view section, std::string_view key) const;
    // False when the section name cannot be written (blanks at its ends, control characters).
    bool setValue(std::string_view section, std::string_view key, std::string_view value);
    bool remove(std::string_view section, std::string_view key);

    // Decimal in [-2147483648, 4294967295] with optional blanks around; values above
    // INT32_MAX wrap, as a 32-bit word read as signed does.
    static std::optional<int32_t> toInt(std::string_view text);

private:
    struct Line {
        bool isEntry = false;
        std::string key;      // entries
        std::string value;    // entries
        std::string verbatim; // comments and blank lines
    };
    struct Section {
        std::string name;
        std::vector<Line> lines;
    };

    Section* findSection(std::string_view name);
    const Section* findSection(std::string_view name) const;

    std::vector<Section> sections_{Section{}};
};

} // namespace lanmira::settings
