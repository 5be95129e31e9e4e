#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// The text rules of the settings files: what may stand unquoted, how quoted text is
// escaped, and how names compare.
namespace lanmira::settings::initext {

std::string_view trim(std::string_view text);

// ASCII case folding only: other UTF-8 bytes must match exactly.
bool equalsIgnoringCase(std::string_view a, std::string_view b);
std::string foldCase(std::string_view text);

// Valid UTF-8 without control characters other than tab: anything else in a file is junk.
bool isCleanLine(std::string_view text);

// What a value or a name can be written as without quotes and read back unchanged.
bool isSafeRawValue(std::string_view value);
bool isSafeRawName(std::string_view name);

// `"..."` with backslash escapes; invalid UTF-8 bytes and control characters become \xHH,
// so the written file is always clean text.
std::string quote(std::string_view text);

// Reads a quoted string starting at text[pos] (which must be '"') and moves pos past the
// closing quote; nullopt when it is unterminated or has an unknown escape.
std::optional<std::string> unquote(std::string_view text, std::size_t& pos);

} // namespace lanmira::settings::initext
