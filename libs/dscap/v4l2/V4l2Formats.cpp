#include "dscap/v4l2/V4l2Formats.h"

#include "dscap/v4l2/FrameDecoder.h"
#include "dscap/v4l2/V4l2System.h"

#include <algorithm>

namespace dscap::v4l2 {
namespace {

constexpr int kMaxEnumerated = 256; // a driver that never says "no more" must not hang us

// Offered where a device gives only limits.
constexpr Resolution kCommonSizes[] = {
    {3840, 2160}, {2592, 1944}, {2560, 1440}, {2048, 1536}, {1920, 1080},
    {1600, 1200}, {1280, 1024}, {1280, 960},  {1280, 720},  {1024, 768},
    {800, 600},   {640, 480},   {320, 240},
};

bool slower(const v4l2_fract& a, const v4l2_fract& b) {
    return std::uint64_t{a.numerator} * b.denominator > std::uint64_t{b.numerator} * a.denominator;
}

bool sameInterval(const v4l2_fract& a, const v4l2_fract& b) {
    return std::uint64_t{a.numerator} * b.denominator == std::uint64_t{b.numerator} * a.denominator;
}

std::vector<v4l2_fract> intervalsOf(V4l2Device& device, std::uint32_t pixelFormat,
                                    Resolution size) {
    std::vector<v4l2_fract> result;
    for (int i = 0; i < kMaxEnumerated; ++i) {
        v4l2_frmivalenum e{};
        e.index = static_cast<__u32>(i);
        e.pixel_format = pixelFormat;
        e.width = static_cast<__u32>(size.width);
        e.height = static_cast<__u32>(size.height);
        if (device.ioctl(VIDIOC_ENUM_FRAMEINTERVALS, &e) != 0 ||
            e.type != V4L2_FRMIVAL_TYPE_DISCRETE)
            break;
        if (e.discrete.numerator != 0 && e.discrete.denominator != 0)
            result.push_back(e.discrete);
    }
    std::sort(result.begin(), result.end(), slower);
    result.erase(std::unique(result.begin(), result.end(), sameInterval), result.end());
    return result;
}

std::vector<Resolution> sizesOf(V4l2Device& device, std::uint32_t pixelFormat) {
    std::vector<Resolution> sizes;
    for (int i = 0; i < kMaxEnumerated; ++i) {
        v4l2_frmsizeenum e{};
        e.index = static_cast<__u32>(i);
        e.pixel_format = pixelFormat;
        if (device.ioctl(VIDIOC_ENUM_FRAMESIZES, &e) != 0)
            break;
        if (e.type == V4L2_FRMSIZE_TYPE_DISCRETE) {
            sizes.push_back({int(e.discrete.width), int(e.discrete.height)});
            continue;
        }
        const auto& s = e.stepwise;
        const std::uint32_t stepW = std::max(1u, s.step_width);
        const std::uint32_t stepH = std::max(1u, s.step_height);
        auto fits = [&](Resolution r) {
            const auto w = static_cast<std::uint32_t>(r.width);
            const auto h = static_cast<std::uint32_t>(r.height);
            return w >= s.min_width && w <= s.max_width && h >= s.min_height && h <= s.max_height &&
                   (w - s.min_width) % stepW == 0 && (h - s.min_height) % stepH == 0;
        };
        sizes.push_back({int(s.max_width), int(s.max_height)});
        for (Resolution r : kCommonSizes) {
            if (fits(r))
                sizes.push_back(r);
        }
        break; // a stepwise range is the only entry
    }
    if (sizes.empty()) {
        // No size enumeration: the size the driver picks for this format is the one offered.
        v4l2_format f{};
        f.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        if (device.ioctl(VIDIOC_G_FMT, &f) == 0) {
            f.fmt.pix.pixelformat = pixelFormat;
            if (device.ioctl(VIDIOC_TRY_FMT, &f) == 0 && f.fmt.pix.pixelformat == pixelFormat)
                sizes.push_back({int(f.fmt.pix.width), int(f.fmt.pix.height)});
        }
    }
    std::erase_if(sizes, [](Resolution r) { return r.width <= 0 || r.height <= 0; });
    return sizes;
}

std::uint64_t area(Resolution r) {
    return std::uint64_t(r.width) * std::uint64_t(r.height);
}

bool larger(Resolution a, Resolution b) {
    return area(a) != area(b) ? area(a) > area(b) : a.width > b.width;
}

} // namespace

void V4l2Formats::query(V4l2Device& device) {
    formats_.clear();
    resolutions_.clear();
    for (int i = 0; i < kMaxEnumerated; ++i) {
        v4l2_fmtdesc d{};
        d.index = static_cast<__u32>(i);
        d.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        if (device.ioctl(VIDIOC_ENUM_FMT, &d) != 0)
            break;
        if (!FrameDecoder::canDecode(d.pixelformat))
            continue;
        Format format{d.pixelformat, {}};
        for (Resolution r : sizesOf(device, d.pixelformat)) {
            if (std::none_of(format.sizes.begin(), format.sizes.end(),
                             [&](const SizeOption& o) { return o.size == r; }))
                format.sizes.push_back({r, intervalsOf(device, d.pixelformat, r)});
        }
        if (format.sizes.empty())
            continue;
        for (const SizeOption& o : format.sizes)
            resolutions_.push_back(o.size);
        formats_.push_back(std::move(format));
    }
    std::sort(resolutions_.begin(), resolutions_.end(), larger);
    resolutions_.erase(std::unique(resolutions_.begin(), resolutions_.end()), resolutions_.end());
}

std::optional<V4l2Formats::Choice> V4l2Formats::choose(int resolutionIndex) const {
    if (resolutionIndex < 0 || resolutionIndex >= int(resolutions_.size()))
        return std::nullopt;
    const Resolution size = resolutions_[std::size_t(resolutionIndex)];
    const Format* jpeg = nullptr;
    const SizeOption* jpegSize = nullptr;
    const Format* other = nullptr;
    const SizeOption* otherSize = nullptr;
    for (const Format& f : formats_) {
        auto it = std::find_if(f.sizes.begin(), f.sizes.end(),
                               [&](const SizeOption& o) { return o.size == size; });
        if (it == f.sizes.end())
            continue;
        if (FrameDecoder::isJpeg(f.pixelFormat)) {
            if (!jpeg) {
                jpeg = &f;
                jpegSize = &*it;
            }
        } else if (!other || FrameDecoder::preference(f.pixelFormat) <
                                 FrameDecoder::preference(other->pixelFormat)) {
            other = &f;
            otherSize = &*it;
        }
    }
    auto fastest = [](const SizeOption* o) {
        return o->intervals.empty() ? v4l2_fract{0, 0} : o->intervals.back();
    };
    auto faster = [](v4l2_fract a, v4l2_fract b) {
        if (a.denominator == 0)
            return false;
        if (b.denominator == 0)
            return true;
        return slower(b, a);
    };
    bool useJpeg = jpeg != nullptr;
    if (jpeg && other) {
        useJpeg = area(size) >= area({1280, 720}) || faster(fastest(jpegSize), fastest(otherSize));
    }
    const Format* f = useJpeg ? jpeg : other;
    const SizeOption* o = useJpeg ? jpegSize : otherSize;
    return Choice{f->pixelFormat, size, o->intervals};
}

bool V4l2Formats::hasSpeeds() const {
    for (int i = 0; i < int(resolutions_.size()); ++i) {
        if (choose(i)->intervals.size() > 1)
            return true;
    }
    return false;
}

bool V4l2Formats::isColour() const {
    return std::any_of(formats_.begin(), formats_.end(), [](const Format& f) {
        return f.pixelFormat != V4L2_PIX_FMT_GREY && f.pixelFormat != V4L2_PIX_FMT_Y16;
    });
}

} // namespace dscap::v4l2
