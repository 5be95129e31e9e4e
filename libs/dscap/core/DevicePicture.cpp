#include "dscap/core/DevicePicture.h"

#include "imagelib/core/DibHeader.h"

#include <cstdint>
#include <cstring>

namespace dscap {

DevicePicture::Size DevicePicture::publish() {
    Size size;
    size.width = exchange_.back().width();
    size.height = exchange_.back().height();
    exchange_.publish();
    width_ = size.width;
    height_ = size.height;
    if (size.width != sentWidth_ || size.height != sentHeight_) {
        size.changed = true;
        size.first = sentWidth_ == 0;
        sentWidth_ = size.width;
        sentHeight_ = size.height;
    }
    return size;
}

bool DevicePicture::any() {
    return exchange_.peekNewest([](const Image&) {});
}

bool DevicePicture::newestSize(int& width, int& height) {
    return exchange_.peekNewest([&](const Image& picture) {
        width = picture.width();
        height = picture.height();
    });
}

void DevicePicture::reportSize(int width, int height) {
    reportedWidth_ = width;
    reportedHeight_ = height;
}

bool DevicePicture::grab(void* dib) {
    bool ok = false;
    exchange_.peekNewest([&](const Image& picture) {
        // The caller sized the block from the last dscap_video_size; a picture of another
        // size would not fit.
        if (picture.width() != reportedWidth_ || picture.height() != reportedHeight_)
            return;
        const int w = picture.width(), h = picture.height();
        const std::size_t stride = imagelib::dibStride(static_cast<std::uint64_t>(w), 24);
        imagelib::BitmapInfoHeader header{};
        header.size = sizeof header;
        header.width = w;
        header.height = h;
        header.planes = 1;
        header.bitCount = 24;
        header.compression = imagelib::kBiRgb;
        header.sizeImage = static_cast<std::uint32_t>(stride * h);
        auto* out = static_cast<std::uint8_t*>(dib);
        std::memcpy(out, &header, sizeof header);
        std::uint8_t* rows = out + sizeof header;
        const std::size_t used = static_cast<std::size_t>(w) * 3;
        for (int y = 0; y < h; ++y) {
            std::uint8_t* dst = rows + stride * static_cast<std::size_t>(h - 1 - y);
            std::memcpy(dst, picture.row(y), used);
            std::memset(dst + used, 0, stride - used);
        }
        ok = true;
    });
    return ok;
}

bool DevicePicture::draw(dscap_draw_fn paint, void* context) {
    return exchange_.readNewest([&](const Image& picture, bool isNew) {
        if (isNew)
            shownRate_.tick();
        const dscap_image image{picture.data(), picture.width(), picture.height(),
                                picture.stride()};
        paint(context, &image);
    });
}

int DevicePicture::notify() {
    notifyPending_ = false;
    return DSCAP_NOTIFY_REPAINT;
}

void DevicePicture::rates(double& camera, double& shown) {
    camera = cameraRate_.perSecond();
    shown = shownRate_.perSecond();
}

} // namespace dscap
