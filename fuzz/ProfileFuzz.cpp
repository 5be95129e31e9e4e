#include "app/ProductProfile.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

// Random bytes almost never survive the RSA step, so the first byte also lets the input go
// straight to the later stages.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::span<const std::uint8_t> rest(data + 1, size - 1);
    lanmira::ProfileValues values;
    switch (data[0] % 3) {
    case 0:
        lanmira::ProductProfile::decode(rest, lanmira::programPublicKey(), values);
        break;
    case 1:
        if (lanmira::ProductProfile::parseDecodedText(rest, values) == lanmira::ProfileError::None)
            lanmira::ProductProfile::applyDefaults(values);
        break;
    default:
        if (rest.size() >= lanmira::kProfileBlockSize) {
            std::vector<std::uint8_t> payload;
            lanmira::ProductProfile::unpadType1(rest.first<lanmira::kProfileBlockSize>(), payload);
        }
        break;
    }
    return 0;
}
