// Settings files are edited by hand: whatever they hold must parse without harm, and what
// the writer makes of them must read back as the same settings.
#include "settings/IniFile.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    lanmira::settings::IniFile ini = lanmira::settings::IniFile::parse(text);
    const std::string once = ini.toString();
    const std::string twice = lanmira::settings::IniFile::parse(once).toString();
    if (once != twice)
        std::abort();

    // Use the input's first line as a key: lookups, writes and removals must hold up too.
    const std::string_view key = text.substr(0, text.find('\n'));
    (void)ini.value("options", key);
    if (ini.setValue("options", key, text)) {
        const auto back = lanmira::settings::IniFile::parse(ini.toString()).value("options", key);
        if (!back || *back != text)
            std::abort();
    }
    ini.remove("options", key);
    (void)lanmira::settings::IniFile::toInt(text);
    return 0;
}
