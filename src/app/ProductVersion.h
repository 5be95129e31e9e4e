#pragma once

// The product's fixed names, as the update library and the About box receive them.
#define LANMIRA_PRODUCT_NAME "Lanmira"
#define LANMIRA_VERSION_TEXT "1.1.4004"

namespace lanmira {
// The single-instance lock's name; every copy of the program uses the same one.
inline constexpr char kInstanceName[] = "{810EFB86-FD56-4a06-B8F3-10C301DD7B48}";
} // namespace lanmira
