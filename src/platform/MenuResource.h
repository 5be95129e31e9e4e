#pragma once

#include <string>
#include <vector>

namespace lanmira {

// A menu as data: the structure lives in code, its texts in the catalogs under the menu's
// name (items by command id, popups by key). Tests walk these tables to prove that every
// text exists.
struct MenuEntry {
    enum class Kind { Item, Popup, Separator };
    Kind kind = Kind::Item;
    int id = 0;      // items
    std::string key; // popups
    std::vector<MenuEntry> children;

    static MenuEntry item(int id) { return {Kind::Item, id, {}, {}}; }
    static MenuEntry separator() { return {Kind::Separator, 0, {}, {}}; }
    static MenuEntry popup(std::string key, std::vector<MenuEntry> children) {
        return {Kind::Popup, 0, std::move(key), std::move(children)};
    }
};

struct MenuResource {
    std::string name; // e.g. "IDR_BROWSER"
    std::vector<MenuEntry> entries;
};

} // namespace lanmira
