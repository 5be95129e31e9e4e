#pragma once

#include <filesystem>
#include <string_view>

namespace lanmira::settings {

// Replaces `file` with `data` through a synced temporary file in the same folder and a
// rename, so a reader or a crash sees the old content or the new one, never a mix.
// Missing parent folders are created. On failure the old file is untouched, no temporary
// file is left behind and false is returned.
bool writeFileAtomically(const std::filesystem::path& file, std::string_view data);

} // namespace lanmira::settings
