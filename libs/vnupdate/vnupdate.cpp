#include "vnupdate/vnupdate.h"

#include <array>
#include <mutex>
#include <string>
#include <unordered_set>

namespace {

struct Store {
    std::mutex mutex; // guards interned and values
    // Values are interned and never freed, so a pointer handed to one thread cannot dangle
    // when another thread replaces the value. Only a handful of values are ever set.
    std::unordered_set<std::string> interned;
    std::array<const char*, 3> values{"", "", ""};
};

Store& store() {
    static Store s;
    return s;
}

// Caller holds the store's mutex.
const char* intern(Store& s, const char* text) {
    // unordered_set nodes never move, so c_str() stays valid across rehashing.
    return s.interned.emplace(text ? text : "").first->c_str();
}

} // namespace

void vnupdate_init(const char* product, const char* version) {
    Store& s = store();
    std::lock_guard lock(s.mutex);
    s.values[VNUPDATE_PRODUCT] = intern(s, product);
    s.values[VNUPDATE_VERSION] = intern(s, version);
}

void vnupdate_update(const char* updateText) {
    Store& s = store();
    std::lock_guard lock(s.mutex);
    s.values[VNUPDATE_TEXT] = intern(s, updateText);
}

const char* vnupdate_get(int what) {
    Store& s = store();
    std::lock_guard lock(s.mutex);
    if (what < 0 || what >= static_cast<int>(s.values.size()))
        return "";
    return s.values[static_cast<std::size_t>(what)];
}
