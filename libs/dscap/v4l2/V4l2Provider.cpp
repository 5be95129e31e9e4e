#include "dscap/v4l2/V4l2Provider.h"

#include "dscap/v4l2/V4l2Camera.h"
#include "dscap/v4l2/V4l2ErrorText.h"
#include "dscap/v4l2/V4l2System.h"

#include <linux/videodev2.h>

#include <cerrno>
#include <cstring>
#include <map>

namespace dscap::v4l2 {
namespace {

constexpr std::string_view kIdPrefix = "v4l2:";

// The card text of a node that captures video by streaming. Other nodes of the same camera
// (metadata) share the card's capabilities, so only the node's own ones count.
bool isCaptureNode(V4l2Device& device, std::string& card, int& error) {
    v4l2_capability cap{};
    if (device.ioctl(VIDIOC_QUERYCAP, &cap) != 0) {
        error = errno;
        return false;
    }
    const std::uint32_t caps =
        (cap.capabilities & V4L2_CAP_DEVICE_CAPS) ? cap.device_caps : cap.capabilities;
    const std::uint32_t needed = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    const auto* text = reinterpret_cast<const char*>(cap.card);
    card.assign(text, strnlen(text, sizeof cap.card));
    return (caps & needed) == needed;
}

class V4l2Provider final : public CameraProvider {
public:
    explicit V4l2Provider(std::shared_ptr<V4l2System> system) : system_(std::move(system)) {}

    std::vector<CameraInfo> list() override {
        std::vector<CameraInfo> cameras;
        for (const VideoNode& node : system_->nodes()) {
            int error = 0;
            auto device = system_->open(node.path, error);
            std::string card;
            if (!device || !isCaptureNode(*device, card, error))
                continue;
            cameras.push_back({std::string(kIdPrefix) + node.stableName,
                               card.empty() ? node.stableName : card, 0});
        }
        // Two cameras of one model must still be told apart in the list.
        std::map<std::string, int> seen;
        for (CameraInfo& c : cameras) {
            const int n = ++seen[c.name];
            if (n > 1)
                c.name += " (" + std::to_string(n) + ")";
        }
        return cameras;
    }

    std::unique_ptr<CameraSource> open(const std::string& id, std::string& error) override {
        if (id.compare(0, kIdPrefix.size(), kIdPrefix) != 0) {
            error = "The camera is not connected.";
            return nullptr;
        }
        const std::string stableName = id.substr(kIdPrefix.size());
        // The node number can change between listing and opening (replugging); the stable
        // name cannot.
        for (const VideoNode& node : system_->nodes()) {
            if (node.stableName != stableName)
                continue;
            int code = 0;
            auto device = system_->open(node.path, code);
            if (!device) {
                error = errorText(code);
                return nullptr;
            }
            std::string card;
            if (!isCaptureNode(*device, card, code)) {
                error = code ? errorText(code) : "The device is not a video camera.";
                return nullptr;
            }
            return V4l2Camera::create(std::move(device), error);
        }
        error = "The camera is not connected.";
        return nullptr;
    }

private:
    std::shared_ptr<V4l2System> system_;
};

} // namespace

std::unique_ptr<CameraProvider> makeV4l2Provider(std::shared_ptr<V4l2System> system) {
    return std::make_unique<V4l2Provider>(std::move(system));
}

} // namespace dscap::v4l2
