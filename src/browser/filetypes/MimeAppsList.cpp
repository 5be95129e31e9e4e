#include "browser/filetypes/MimeAppsList.h"

namespace lanmira {

namespace {

std::string_view trim(std::string_view s) {
    const auto first = s.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return {};
    const auto last = s.find_last_not_of(" \t");
    return s.substr(first, last - first + 1);
}

} // namespace

MimeAppsList MimeAppsList::parse(std::string_view text) {
    MimeAppsList list;
    bool newlineKnown = false;
    while (!text.empty()) {
        const auto nl = text.find('\n');
        Line line;
        if (nl == std::string_view::npos) {
            line.content = std::string(text);
            text = {};
        } else {
            std::string_view content = text.substr(0, nl);
            if (!content.empty() && content.back() == '\r') {
                content.remove_suffix(1);
                line.end = "\r\n";
            } else {
                line.end = "\n";
            }
            line.content = std::string(content);
            text.remove_prefix(nl + 1);
            if (!newlineKnown) {
                list.m_newline = line.end;
                newlineKnown = true;
            }
        }
        list.m_lines.push_back(std::move(line));
    }
    return list;
}

std::string MimeAppsList::text() const {
    std::string out;
    std::size_t size = 0;
    for (const Line& line : m_lines)
        size += line.content.size() + line.end.size();
    out.reserve(size);
    for (const Line& line : m_lines) {
        out += line.content;
        out += line.end;
    }
    return out;
}

MimeAppsList::Parsed MimeAppsList::classify(const Line& line) {
    const std::string_view s = trim(line.content);
    if (s.empty() || s.front() == '#')
        return {};
    if (s.front() == '[') {
        if (s.back() != ']')
            return {};
        return {Kind::Group, s.substr(1, s.size() - 2), {}};
    }
    const auto eq = s.find('=');
    if (eq == std::string_view::npos)
        return {};
    return {Kind::Entry, trim(s.substr(0, eq)), trim(s.substr(eq + 1))};
}

template <typename F>
void MimeAppsList::forEachEntry(std::string_view group, std::string_view key, F&& f) const {
    bool inGroup = false;
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const Parsed p = classify(m_lines[i]);
        if (p.kind == Kind::Group)
            inGroup = p.name == group;
        else if (inGroup && p.kind == Kind::Entry && p.name == key)
            f(i, p);
    }
}

std::optional<std::string> MimeAppsList::value(std::string_view group, std::string_view key) const {
    std::optional<std::string> found;
    forEachEntry(group, key, [&](std::size_t, const Parsed& p) { found = std::string(p.value); });
    return found;
}

void MimeAppsList::insertLine(std::size_t at, std::string content) {
    std::string end = m_newline;
    // After an unterminated last line, that line gets its end and the new last line goes
    // without one: the file keeps ending as it did, and removing the line again restores it.
    if (at > 0 && m_lines[at - 1].end.empty()) {
        m_lines[at - 1].end = m_newline;
        end.clear();
    }
    m_lines.insert(m_lines.begin() + static_cast<std::ptrdiff_t>(at),
                   Line{std::move(content), std::move(end)});
}

bool MimeAppsList::setValue(std::string_view group, std::string_view key, std::string_view value) {
    std::string entry;
    entry.reserve(key.size() + value.size() + 1);
    entry.append(key).append("=").append(value);

    std::vector<std::size_t> found;
    forEachEntry(group, key, [&](std::size_t i, const Parsed&) { found.push_back(i); });
    if (!found.empty()) {
        bool changed = false;
        for (std::size_t i : found) {
            if (m_lines[i].content != entry) {
                m_lines[i].content = entry;
                changed = true;
            }
        }
        return changed;
    }

    // After the last non-blank line of the group's first occurrence, so the blank line that
    // separates it from the next group stays where it is.
    std::optional<std::size_t> header;
    std::size_t insertAt = 0;
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const Parsed p = classify(m_lines[i]);
        if (p.kind == Kind::Group) {
            if (header)
                break;
            if (p.name == group) {
                header = i;
                insertAt = i + 1;
            }
        } else if (header && !trim(m_lines[i].content).empty()) {
            insertAt = i + 1;
        }
    }
    if (header) {
        insertLine(insertAt, std::move(entry));
        return true;
    }

    if (!m_lines.empty() && !trim(m_lines.back().content).empty())
        insertLine(m_lines.size(), {});
    std::string headerLine;
    headerLine.append("[").append(group).append("]");
    insertLine(m_lines.size(), std::move(headerLine));
    insertLine(m_lines.size(), std::move(entry));
    return true;
}

bool MimeAppsList::remove(std::string_view group, std::string_view key) {
    std::vector<std::size_t> found;
    forEachEntry(group, key, [&](std::size_t i, const Parsed&) { found.push_back(i); });
    for (auto it = found.rbegin(); it != found.rend(); ++it) {
        // A removed last line without a line end passes that state on to its predecessor,
        // so the file keeps ending as it did.
        if (*it + 1 == m_lines.size() && m_lines[*it].end.empty() && *it > 0)
            m_lines[*it - 1].end.clear();
        m_lines.erase(m_lines.begin() + static_cast<std::ptrdiff_t>(*it));
    }
    return !found.empty();
}

} // namespace lanmira
