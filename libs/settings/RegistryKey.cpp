#include "settings/RegistryKey.h"

#include "settings/IniFile.h"
#include "settings/IniText.h"

#include <array>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace lanmira::settings {

namespace fs = std::filesystem;

namespace {

// Library threads write settings too. A load-change-save that overlaps another on the same
// file would lose the other's value, so writers of one file take the same lock. A fixed set
// of locks picked by path never grows; two files sharing a lock only wait for each other.
std::mutex& lockFor(const fs::path& file) {
    static std::array<std::mutex, 16> locks;
    return locks[std::hash<std::string>{}(file.string()) % locks.size()];
}

std::string homeDirectory() {
    if (const char* home = std::getenv("HOME"); home && home[0] == '/')
        return home;
    long size = ::sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(size > 0 ? static_cast<std::size_t>(size) : 16384);
    passwd pw{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &pw, buffer.data(), buffer.size(), &found) == 0 && found &&
        found->pw_dir && found->pw_dir[0] == '/')
        return found->pw_dir;
    return {};
}

// Registry key names may hold characters that mean something in a file path; they must
// never lead out of the config home.
std::string safeComponent(std::string_view name) {
    std::string out(name);
    for (char& c : out) {
        if (c == '/' || c == '\0')
            c = '_';
    }
    if (out.find_first_not_of('.') == std::string::npos)
        out.front() = '_';
    return out;
}

fs::path fileForKey(std::string_view keyPath, const fs::path& home) {
    if (home.empty())
        return {};
    std::vector<std::string> parts;
    while (!keyPath.empty()) {
        const std::size_t sep = keyPath.find('\\');
        const std::string_view part = keyPath.substr(0, sep);
        keyPath.remove_prefix(sep == std::string_view::npos ? keyPath.size() : sep + 1);
        if (!part.empty())
            parts.push_back(safeComponent(part));
    }
    if (!parts.empty() && initext::equalsIgnoringCase(parts.front(), "Software"))
        parts.erase(parts.begin());
    if (parts.empty())
        return {};
    fs::path file = home;
    for (std::size_t i = 0; i + 1 < parts.size(); ++i)
        file /= parts[i];
    return file / (parts.back() + ".conf");
}

} // namespace

fs::path configHome() {
    if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && xdg[0] == '/')
        return xdg;
    const std::string home = homeDirectory();
    return home.empty() ? fs::path() : fs::path(home) / ".config";
}

RegistryKey::RegistryKey(std::string keyPath) : RegistryKey(std::move(keyPath), configHome()) {}

RegistryKey::RegistryKey(std::string keyPath, fs::path configHome)
    : file_(fileForKey(keyPath, configHome.lexically_normal())) {}

int32_t RegistryKey::readInt(std::string_view section, std::string_view name, int32_t def) const {
    if (file_.empty())
        return def;
    const auto text = IniFile::load(file_).value(section, name);
    const auto number = text ? IniFile::toInt(*text) : std::nullopt;
    return number.value_or(def);
}

bool RegistryKey::writeInt(std::string_view section, std::string_view name, int32_t value) const {
    return writeString(section, name, std::to_string(value));
}

std::string RegistryKey::readString(std::string_view section, std::string_view name,
                                    std::string_view def) const {
    if (file_.empty())
        return std::string(def);
    auto text = IniFile::load(file_).value(section, name);
    return text ? std::move(*text) : std::string(def);
}

bool RegistryKey::writeString(std::string_view section, std::string_view name,
                              std::string_view value) const {
    if (file_.empty())
        return false;
    const std::lock_guard lock(lockFor(file_));
    std::optional<IniFile> ini = IniFile::read(file_);
    return ini && ini->setValue(section, name, value) && ini->save(file_);
}

bool RegistryKey::remove(std::string_view section, std::string_view name) const {
    if (file_.empty())
        return false;
    const std::lock_guard lock(lockFor(file_));
    std::optional<IniFile> ini = IniFile::read(file_);
    return ini && ini->remove(section, name) && ini->save(file_);
}

} // namespace lanmira::settings
