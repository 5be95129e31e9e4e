#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lanmira {

// A freedesktop `mimeapps.list` held as the lines it was read from. Changing one key leaves
// every other byte as it was: groups, comments, order, blank lines, each line's own line
// end, and lines that are not key-value pairs at all. A settings parser would rewrite the
// file in its own form and lose or mangle what other programs put there.
class MimeAppsList {
public:
    static constexpr std::string_view kDefaultApplications = "Default Applications";

    static MimeAppsList parse(std::string_view text);
    std::string text() const;

    // The trimmed value of `key` in `group`. Desktop readers merge duplicate groups and let
    // a later key win, so the last occurrence counts here too.
    std::optional<std::string> value(std::string_view group, std::string_view key) const;
    // Replaces every occurrence of the key in the group; a new key goes after the last
    // entry of the group's first occurrence, a missing group is added at the end. False
    // when the file already said exactly this.
    bool setValue(std::string_view group, std::string_view key, std::string_view value);
    // Removes every occurrence of the key in the group; false when there was none.
    bool remove(std::string_view group, std::string_view key);

private:
    struct Line {
        std::string content; // without the line end
        std::string end;     // "\n", "\r\n", or "" for a last line without one
    };
    enum class Kind { Other, Group, Entry };
    struct Parsed {
        Kind kind = Kind::Other;
        std::string_view name; // group name or key
        std::string_view value;
    };

    static Parsed classify(const Line& line);
    // Calls `f(index, parsed)` for each entry of `key` inside any occurrence of `group`.
    template <typename F>
    void forEachEntry(std::string_view group, std::string_view key, F&& f) const;
    void insertLine(std::size_t at, std::string content);

    std::vector<Line> m_lines;
    std::string m_newline = "\n"; // what new lines end with: the file's own convention
};

} // namespace lanmira
