#pragma once

// The update library. There is no network on the target machines, so it only keeps the
// product name, the version and the profile's update text for the About box.

enum {
    VNUPDATE_PRODUCT = 0,
    VNUPDATE_VERSION = 1,
    VNUPDATE_TEXT = 2,
};

void vnupdate_init(const char* product, const char* version);

// `updateText` is the profile's UTF-8 text, kept byte for byte.
void vnupdate_update(const char* updateText);

// The stored value, "" when unset or when `what` is unknown. The pointer stays valid for
// the life of the process, even after a later init or update replaces the value.
const char* vnupdate_get(int what);
