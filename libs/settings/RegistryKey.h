#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace lanmira::settings {

// $XDG_CONFIG_HOME when it is set and absolute, else $HOME/.config; empty when neither
// can be found.
std::filesystem::path configHome();

// A per-user registry key kept as an INI file: `Software\A\...\Z` (the leading "Software"
// in any case) is the file `A/.../Z.conf` under the config home. The key's own values are
// the part before the first `[section]`; a subkey `a` is `[a]`, a deeper one `[a\b]`.
// Nothing is cached: each read loads the file, each write loads, changes and saves it.
// Writes to one file from several threads are serialised; failures are silent (false).
// A file that exists but cannot be read is never written, so its settings are not lost.
class RegistryKey {
public:
    explicit RegistryKey(std::string keyPath);
    RegistryKey(std::string keyPath, std::filesystem::path configHome);

    // Empty when the key path names no file.
    std::filesystem::path file() const { return file_; }

    // section "" is the key's own values; otherwise a subkey name.
    int32_t readInt(std::string_view section, std::string_view name, int32_t def) const;
    bool writeInt(std::string_view section, std::string_view name, int32_t value) const;
    std::string readString(std::string_view section, std::string_view name,
                           std::string_view def) const;
    bool writeString(std::string_view section, std::string_view name, std::string_view value) const;
    bool remove(std::string_view section, std::string_view name) const;

private:
    std::filesystem::path file_;
};

} // namespace lanmira::settings
