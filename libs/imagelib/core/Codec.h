#pragma once

#include "imagelib/core/Dib.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace imagelib {

struct DecodeRequest {
    int page = 0;
    // Non-zero: the caller wants a thumbnail of this box and accepts a reduced decode that
    // still covers at least twice the box in both directions.
    int boxWidth = 0;
    int boxHeight = 0;
};

struct DecodeResult {
    DibBuffer dib;
    int pageCount = 1;
    // The file's own picture, whatever size was decoded.
    int fullWidth = 0;
    int fullHeight = 0;
    int fullBitCount = 0;
    std::string error; // a clear English sentence when dib is empty
};

struct SaveRequest {
    std::uint32_t option1 = 0; // the format's first option value (see iopt.h)
    std::uint32_t option2 = 0; // the second
    bool appendPage = false;   // multi-page formats: add a page to what the file holds
};

// One file format's reader and writer. Decoders read from memory and distrust every
// field: sizes are checked against limits and against the data before allocating.
class Codec {
public:
    virtual ~Codec() = default;

    virtual std::uint32_t format() const = 0;
    // Whether the first bytes of a file look like this format.
    virtual bool probe(std::span<const std::uint8_t> head) const = 0;
    virtual DecodeResult decode(std::span<const std::uint8_t> bytes,
                                const DecodeRequest& request) const = 0;

    virtual bool canSave(const DibView& /*dib*/) const { return false; }
    // Writes to `fd`, a fresh temporary file beside the target; for an appended page it
    // already holds the target's bytes, with the file offset at its end. The descriptor
    // stays the caller's: give libraries that close what they are given a dup() of it.
    virtual bool save(const DibView& dib, const SaveRequest& request, int fd,
                      std::string& error) const;
};

// Every codec the library has, in format-number order.
const std::vector<const Codec*>& allCodecs();
const Codec* codecForFormat(std::uint32_t format);
// The codec whose signature the bytes carry, or nullptr.
const Codec* codecForBytes(std::span<const std::uint8_t> bytes);

} // namespace imagelib
