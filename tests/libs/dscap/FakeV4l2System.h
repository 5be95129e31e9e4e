#pragma once

// A scripted stand-in for the kernel's video devices, for tests and benchmarks of the V4L2
// backend: nodes with their stable names, formats with sizes and frame intervals, controls
// with ranges and menus, frames supplied as bytes, faults and unplugging. Every call is
// thread-safe: the library reads frames on its own thread while the test scripts the device.
//
//   auto system = std::make_shared<FakeV4l2System>();
//   system->addNode(FakeV4l2System::webcam("/dev/video0", "usb-Acme_Cam-video-index0"));
//   auto provider = makeV4l2Provider(system);
//
// Without frames set for a format and size, the device sends a ramp picture.

#include "dscap/v4l2/V4l2System.h"

#include <linux/videodev2.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace dscap::v4l2 {

using Bytes = std::vector<std::uint8_t>;

// Seconds per frame: {1, 30} is 30 frames a second.
struct FakeInterval {
    std::uint32_t numerator = 1;
    std::uint32_t denominator = 30;
    friend bool operator==(const FakeInterval&, const FakeInterval&) = default;
};

struct FakeFrameSize {
    int width = 0;
    int height = 0;
    std::vector<FakeInterval> intervals; // in the device's order
};

struct FakeStepwise {
    int minWidth = 0;
    int maxWidth = 0;
    int stepWidth = 1;
    int minHeight = 0;
    int maxHeight = 0;
    int stepHeight = 1;
};

struct FakeFormat {
    std::uint32_t pixelFormat = 0; // V4L2_PIX_FMT_*
    std::vector<FakeFrameSize> sizes;
    std::optional<FakeStepwise> stepwise; // offered instead of sizes when set
};

struct FakeControl {
    std::uint32_t id = 0; // V4L2_CID_*
    std::uint32_t type = V4L2_CTRL_TYPE_INTEGER;
    std::string name;
    std::int32_t min = 0;
    std::int32_t max = 0;
    std::int32_t def = 0;
    std::uint32_t flags = 0;
    // Offered menu entries (index, label); indices in min..max that are missing are gaps.
    std::vector<std::pair<std::int32_t, std::string>> menu;
    // Non-zero: the device keeps only multiples of this (a sensor that counts whole lines),
    // so a value read back can differ from the one written.
    std::int32_t granularity = 0;
};

struct FakeNode {
    std::string path = "/dev/video0";
    std::string stableName; // the by-id or by-path name; the path when empty
    std::string card = "Fake Camera";
    // The whole device's capabilities, and the node's own (nullopt: a driver that reports
    // no V4L2_CAP_DEVICE_CAPS).
    std::uint32_t capabilities = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    std::optional<std::uint32_t> deviceCaps = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    std::vector<FakeFormat> formats;
    std::vector<FakeControl> controls;
    int openError = 0; // errno that opening fails with (EBUSY, EACCES, ...)
};

// What is done to one delivered frame.
enum class FakeFault {
    Corrupt,   // the bytes after the first two are noise
    Short,     // half the bytes
    ErrorFlag, // V4L2_BUF_FLAG_ERROR set
    Empty,     // bytesused 0
};

struct FakeControlWrite {
    std::uint32_t id = 0;
    std::int32_t value = 0; // as the library asked, before the device's clamping
    friend bool operator==(const FakeControlWrite&, const FakeControlWrite&) = default;
};

struct FakeStreamState {
    std::uint32_t pixelFormat = 0;
    int width = 0;
    int height = 0;
    FakeInterval interval;
    bool streaming = false;
    int buffers = 0;       // allocated with REQBUFS
    int mappedBuffers = 0; // mmap minus munmap
    int openHandles = 0;
};

class FakeV4l2System final : public V4l2System {
public:
    FakeV4l2System();
    ~FakeV4l2System() override;
    FakeV4l2System(const FakeV4l2System&) = delete;
    FakeV4l2System& operator=(const FakeV4l2System&) = delete;

    // A typical USB camera: YUYV at 640x480 (30, 15, 10 fps), 800x600 (10, 5) and 1920x1080
    // (5); MJPEG at 1920x1080, 1280x720, 800x600 and 640x480 (30, 15); H.264 (which cannot be
    // decoded) at 3840x2160 and 1920x1080; the usual UVC controls (brightness -64..64,
    // contrast 0..64, saturation 0..128, hue -40..40, gamma 72..500, gain 0..100, white
    // balance 2800..6500 K with its automatic switch, power line, flips, the exposure menu
    // with manual and aperture priority, exposure 1..5000 x 100 us) and extras (sharpness,
    // backlight compensation, dynamic frame rate, focus and autofocus).
    static FakeNode webcam(std::string path, std::string stableName,
                           std::string card = "Fake Camera");

    // --- scripting the nodes ---
    void addNode(FakeNode node);
    // The camera replugged at another node: same stable name, new path.
    void moveNode(const std::string& stableName, const std::string& newPath);
    void setOpenError(const std::string& path, int error);
    // Frames sent at that format and size, in turn, repeating.
    void setFrames(const std::string& path, std::uint32_t pixelFormat, int width, int height,
                   std::vector<Bytes> frames);
    // The fault for the frame of that number (0 = the node's first delivered frame).
    void setFrameFault(const std::string& path, std::uint64_t frame, FakeFault fault);
    // Paced (the default): frames come at the current frame interval, as from a device.
    // Unpaced: a frame is ready whenever a buffer is queued (benchmarks).
    void setPaced(bool paced);
    // The next call of that ioctl fails with the error.
    void failIoctlOnce(const std::string& path, unsigned long request, int error);
    // The device is gone: every ioctl fails with ENODEV, wait reports an error, and the node
    // leaves the list.
    void unplug(const std::string& path);

    // --- checking what the library did ---
    std::vector<FakeControlWrite> controlWrites(const std::string& path) const;
    void clearControlWrites(const std::string& path);
    std::int32_t controlValue(const std::string& path, std::uint32_t id) const;
    FakeStreamState state(const std::string& path) const;

    // --- making frames from packed BGR rows (width * 3 bytes each) ---
    static Bytes makeMjpeg(const std::uint8_t* bgr, int width, int height, int quality = 80);
    static Bytes makeYuyv(const std::uint8_t* bgr, int width, int height);

    // V4l2System
    std::vector<VideoNode> nodes() override;
    std::unique_ptr<V4l2Device> open(const std::string& path, int& error) override;

    struct Shared; // the devices' and the system's common state

private:
    std::shared_ptr<Shared> shared_;
};

} // namespace dscap::v4l2
