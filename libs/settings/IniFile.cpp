#include "settings/IniFile.h"

#include "settings/AtomicWrite.h"
#include "settings/IniText.h"
#include "settings/UniqueFd.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <iterator>
#include <unistd.h>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace lanmira::settings {

namespace {

using namespace initext;

struct Entry {
    std::string key;
    std::string value;
};

std::optional<std::string> parseHeader(std::string_view line) {
    if (line.size() < 2 || line.back() != ']')
        return std::nullopt;
    const std::string_view name = trim(line.substr(1, line.size() - 2));
    if (name.empty())
        return std::nullopt;
    return std::string(name);
}

// `key=value`, either side raw or quoted.
std::optional<Entry> parseEntry(std::string_view line) {
    Entry entry;
    std::size_t pos = 0;
    if (line.front() == '"') {
        auto key = unquote(line, pos);
        if (!key)
            return std::nullopt;
        while (pos < line.size() && (line[pos] == ' ' || line[pos] == '\t'))
            ++pos;
        if (pos == line.size() || line[pos] != '=')
            return std::nullopt;
        entry.key = std::move(*key);
    } else {
        pos = line.find('=');
        if (pos == std::string_view::npos)
            return std::nullopt;
        const std::string_view key = trim(line.substr(0, pos));
        if (key.empty())
            return std::nullopt;
        entry.key = std::string(key);
    }
    const std::string_view rest = trim(line.substr(pos + 1));
    if (rest.empty() || rest.front() != '"') {
        entry.value = std::string(rest);
        return entry;
    }
    std::size_t end = 0;
    auto value = unquote(rest, end);
    if (!value || end != rest.size())
        return std::nullopt;
    entry.value = std::move(*value);
    return entry;
}

bool isValidSectionName(std::string_view name) {
    return name.empty() ||
           (trim(name) == name && isCleanLine(name) && name.find('\t') == std::string_view::npos);
}

bool isBlankLine(std::string_view line) {
    return trim(line).empty();
}

} // namespace

IniFile IniFile::parse(std::string_view text) {
    IniFile ini;
    // Indexes of what is already there, so a large file of junk still parses in linear time.
    std::unordered_map<std::string, std::size_t> sectionIndex;
    std::vector<std::unordered_set<std::string>> keysSeen(1);
    std::size_t current = 0;
    // After a header that cannot be read, its lines belong to no known section; putting
    // them into the previous one would hand its owner values that are not its own.
    bool orphaned = false;
    while (!text.empty()) {
        const std::size_t eol = text.find('\n');
        std::string_view line = text.substr(0, eol);
        text.remove_prefix(eol == std::string_view::npos ? text.size() : eol + 1);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        if (!isCleanLine(line))
            continue;
        const std::string_view body = trim(line);
        if (body.empty() || body.front() == ';' || body.front() == '#') {
            if (!orphaned)
                ini.sections_[current].lines.push_back(Line{false, {}, {}, std::string(line)});
            continue;
        }
        if (body.front() == '[') {
            const auto name = parseHeader(body);
            orphaned = !name;
            if (name) {
                const auto [it, added] =
                    sectionIndex.try_emplace(foldCase(*name), ini.sections_.size());
                if (added) {
                    ini.sections_.push_back(Section{*name, {}});
                    keysSeen.emplace_back();
                }
                current = it->second;
            }
            continue;
        }
        auto entry = parseEntry(body);
        // The first of duplicate keys wins, as it is the one a write would change.
        if (!entry || orphaned || !keysSeen[current].insert(foldCase(entry->key)).second)
            continue;
        ini.sections_[current].lines.push_back(
            Line{true, std::move(entry->key), std::move(entry->value), {}});
    }
    return ini;
}

std::optional<IniFile> IniFile::read(const std::filesystem::path& file) {
    // Non-blocking, so a FIFO or a device put in the file's place cannot hang the caller.
    UniqueFd fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    if (!fd)
        return errno == ENOENT ? std::optional<IniFile>(IniFile{}) : std::nullopt;
    struct stat st {};
    if (::fstat(fd.get(), &st) != 0 || !S_ISREG(st.st_mode) ||
        static_cast<std::uintmax_t>(st.st_size) > maxFileSize)
        return std::nullopt;
    // The size may change while we read; never take in more than the cap.
    std::string text(static_cast<std::size_t>(st.st_size) + 1, '\0');
    std::size_t got = 0;
    for (;;) {
        if (got == text.size()) {
            if (text.size() > maxFileSize)
                return std::nullopt;
            text.resize(std::min(text.size() * 2, maxFileSize + 1));
        }
        const ssize_t n = ::read(fd.get(), text.data() + got, text.size() - got);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return std::nullopt;
        if (n == 0)
            break;
        got += static_cast<std::size_t>(n);
    }
    text.resize(got);
    return parse(text);
}

IniFile IniFile::load(const std::filesystem::path& file) {
    return read(file).value_or(IniFile{});
}

std::string IniFile::toString() const {
    std::string out;
    bool lastBlank = true;
    const auto emit = [&](std::string_view line) {
        out.append(line);
        out += '\n';
        lastBlank = isBlankLine(line);
    };
    for (const Section& section : sections_) {
        if (!section.name.empty()) {
            if (!lastBlank)
                emit({});
            emit("[" + section.name + "]");
        }
        for (const Line& line : section.lines) {
            if (!line.isEntry) {
                emit(line.verbatim);
                continue;
            }
            const std::string key = isSafeRawName(line.key) ? line.key : quote(line.key);
            const std::string value = isSafeRawValue(line.value) ? line.value : quote(line.value);
            emit(key + "=" + value);
        }
    }
    return out;
}

bool IniFile::save(const std::filesystem::path& file) const {
    const std::string text = toString();
    // A file the reader would refuse is worse than keeping the old one.
    if (text.size() > maxFileSize)
        return false;
    return writeFileAtomically(file, text);
}

std::optional<std::string> IniFile::value(std::string_view section, std::string_view key) const {
    if (const Section* s = findSection(section)) {
        for (const Line& line : s->lines) {
            if (line.isEntry && equalsIgnoringCase(line.key, key))
                return line.value;
        }
    }
    return std::nullopt;
}

bool IniFile::setValue(std::string_view section, std::string_view key, std::string_view value) {
    if (!isValidSectionName(section))
        return false;
    Section* s = findSection(section);
    if (!s)
        s = &sections_.emplace_back(Section{std::string(section), {}});
    for (Line& line : s->lines) {
        if (line.isEntry && equalsIgnoringCase(line.key, key)) {
            line.value = std::string(value);
            return true;
        }
    }
    // After the last non-blank line, so the blank line that separates sections stays last.
    auto at = s->lines.end();
    while (at != s->lines.begin() && !std::prev(at)->isEntry &&
           isBlankLine(std::prev(at)->verbatim))
        --at;
    s->lines.insert(at, Line{true, std::string(key), std::string(value), {}});
    return true;
}

bool IniFile::remove(std::string_view section, std::string_view key) {
    Section* s = findSection(section);
    if (!s)
        return false;
    const auto it = std::find_if(s->lines.begin(), s->lines.end(), [&](const Line& line) {
        return line.isEntry && equalsIgnoringCase(line.key, key);
    });
    if (it == s->lines.end())
        return false;
    s->lines.erase(it);
    return true;
}

std::optional<int32_t> IniFile::toInt(std::string_view text) {
    text = trim(text);
    bool negative = false;
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }
    if (text.empty())
        return std::nullopt;
    const uint64_t limit = negative ? uint64_t{2147483648u} : uint64_t{4294967295u};
    uint64_t magnitude = 0;
    for (const char c : text) {
        if (c < '0' || c > '9')
            return std::nullopt;
        magnitude = magnitude * 10 + static_cast<uint64_t>(c - '0');
        if (magnitude > limit)
            return std::nullopt;
    }
    const uint32_t word = negative ? static_cast<uint32_t>(0u - static_cast<uint32_t>(magnitude))
                                   : static_cast<uint32_t>(magnitude);
    return static_cast<int32_t>(word);
}

IniFile::Section* IniFile::findSection(std::string_view name) {
    return const_cast<Section*>(std::as_const(*this).findSection(name));
}

const IniFile::Section* IniFile::findSection(std::string_view name) const {
    // The top part (index 0) is only ever reached by the empty name.
    const auto it = std::find_if(sections_.begin(), sections_.end(), [&](const Section& s) {
        return equalsIgnoringCase(s.name, name);
    });
    return it == sections_.end() ? nullptr : &*it;
}

} // namespace lanmira::settings
