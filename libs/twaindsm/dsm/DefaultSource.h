#pragma once

#include <filesystem>
#include <string>

namespace twaindsm {

// The source the user chose last, by product name, kept in
// $XDG_CONFIG_HOME/twaindsm/default-source so that it outlives the program.
class DefaultSource {
public:
    static std::filesystem::path file();
    static std::string read();
    // Written through a temporary file, so a crash never leaves half a name.
    static void write(const std::string& productName);
};

} // namespace twaindsm
