#include "FakeV4l2System.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <map>
#include <mutex>
#include <stdexcept>
#include <tuple>
#include <turbojpeg.h>

namespace dscap::v4l2 {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::uint32_t kOffsetStride = 1u << 26; // buffer i is mapped at i * stride
constexpr std::uint32_t kMaxBuffers = 8;

using FrameKey = std::tuple<std::uint32_t, int, int>;

struct NodeState {
    FakeNode script;
    bool gone = false;
    std::map<std::uint32_t, std::int32_t> values;
    std::vector<FakeControlWrite> writes;
    std::map<unsigned long, int> failOnce; // request -> errno
    std::map<FrameKey, std::vector<Bytes>> frames;
    std::map<FrameKey, Bytes> defaultFrames;
    std::map<std::uint64_t, FakeFault> faults;

    std::uint32_t pixelFormat = 0;
    int width = 0;
    int height = 0;
    FakeInterval interval;

    std::vector<Bytes> buffers;
    std::vector<bool> queued;
    std::vector<std::uint32_t> queue; // in queueing order
    int owner = 0;                    // the handle that allocated the buffers
    int mapped = 0;
    bool streaming = false;
    Clock::time_point due;
    std::uint64_t delivered = 0;
    int openHandles = 0;
};

bool isJpeg(std::uint32_t pixelFormat) {
    return pixelFormat == V4L2_PIX_FMT_MJPEG;
}

// Packed two bytes a pixel (YUYV) unless compressed.
std::uint32_t bytesFor(std::uint32_t pixelFormat, int width, int height) {
    const auto pixels = static_cast<std::uint32_t>(width * height);
    return isJpeg(pixelFormat) ? pixels * 3 + 4096 : pixels * 2;
}

// Blue across, green down, red constant: every corner differs, so flips and swapped
// channels show.
Bytes defaultFrame(std::uint32_t pixelFormat, int width, int height) {
    Bytes bgr(std::size_t(width) * height * 3);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint8_t* p = &bgr[(std::size_t(y) * width + x) * 3];
            p[0] = std::uint8_t(x * 255 / std::max(1, width - 1));
            p[1] = std::uint8_t(y * 255 / std::max(1, height - 1));
            p[2] = 128;
        }
    }
    if (isJpeg(pixelFormat))
        return FakeV4l2System::makeMjpeg(bgr.data(), width, height);
    return FakeV4l2System::makeYuyv(bgr.data(), width, height);
}

template <typename T, typename Match> const T* findIn(const std::vector<T>& items, Match match) {
    const auto it = std::find_if(items.begin(), items.end(), match);
    return it == items.end() ? nullptr : &*it;
}

const FakeFormat* findFormat(const FakeNode& node, std::uint32_t pixelFormat) {
    return findIn(node.formats, [&](const FakeFormat& f) { return f.pixelFormat == pixelFormat; });
}

const FakeFrameSize* findSize(const FakeFormat& f, int width, int height) {
    return findIn(f.sizes,
                  [&](const FakeFrameSize& s) { return s.width == width && s.height == height; });
}

const FakeControl* findControl(const FakeNode& node, std::uint32_t id) {
    return findIn(node.controls, [&](const FakeControl& c) { return c.id == id; });
}

std::chrono::nanoseconds durationOf(FakeInterval i) {
    return std::chrono::nanoseconds(std::int64_t{1'000'000'000} * i.numerator /
                                    std::max(1u, i.denominator));
}

void copyText(__u8* to, std::size_t size, const std::string& text) {
    std::memset(to, 0, size);
    std::memcpy(to, text.data(), std::min(size - 1, text.size()));
}

// The size a driver settles on for a request: the format's size nearest in area.
void settleFormat(NodeState& n, v4l2_pix_format& pix) {
    const FakeFormat* f = findFormat(n.script, pix.pixelformat);
    if (!f)
        f = &n.script.formats.front();
    int w = int(pix.width);
    int h = int(pix.height);
    if (f->stepwise) {
        const FakeStepwise& s = *f->stepwise;
        w = std::clamp(w, s.minWidth, s.maxWidth);
        h = std::clamp(h, s.minHeight, s.maxHeight);
        w -= (w - s.minWidth) % std::max(1, s.stepWidth);
        h -= (h - s.minHeight) % std::max(1, s.stepHeight);
    } else if (!findSize(*f, w, h) && !f->sizes.empty()) {
        const auto distance = [&](const FakeFrameSize& s) {
            return std::labs(long(s.width) * s.height - long(w) * h);
        };
        const FakeFrameSize& best =
            *std::min_element(f->sizes.begin(), f->sizes.end(), [&](const auto& a, const auto& b) {
                return distance(a) < distance(b);
            });
        w = best.width;
        h = best.height;
    }
    pix.pixelformat = f->pixelFormat;
    pix.width = __u32(w);
    pix.height = __u32(h);
    pix.field = V4L2_FIELD_NONE;
    pix.bytesperline = isJpeg(f->pixelFormat) ? 0 : bytesFor(f->pixelFormat, w, 1);
    pix.sizeimage = bytesFor(f->pixelFormat, w, h);
    pix.colorspace = V4L2_COLORSPACE_SRGB;
}

std::vector<FakeInterval> intervalsAt(const NodeState& n) {
    if (const FakeFormat* f = findFormat(n.script, n.pixelFormat)) {
        if (const FakeFrameSize* s = findSize(*f, n.width, n.height))
            return s->intervals;
    }
    return {};
}

void selectFormat(NodeState& n, std::uint32_t pixelFormat, int width, int height) {
    v4l2_pix_format pix{};
    pix.pixelformat = pixelFormat;
    pix.width = __u32(width);
    pix.height = __u32(height);
    settleFormat(n, pix);
    n.pixelFormat = pix.pixelformat;
    n.width = int(pix.width);
    n.height = int(pix.height);
    const auto intervals = intervalsAt(n);
    if (!intervals.empty())
        n.interval = intervals.front();
}

void stopStreaming(NodeState& n) {
    n.streaming = false;
    n.queue.clear();
    std::fill(n.queued.begin(), n.queued.end(), false);
}

void releaseBuffers(NodeState& n) {
    stopStreaming(n);
    if (n.mapped == 0) {
        n.buffers.clear();
        n.queued.clear();
    }
    n.owner = 0;
}

} // namespace

struct FakeV4l2System::Shared {
    mutable std::mutex mutex; // guards every field below and every NodeState
    std::condition_variable changed;
    std::vector<std::shared_ptr<NodeState>> nodes; // gone ones stay for inspection
    bool paced = true;
    int nextHandle = 1;

    NodeState& at(const std::string& path) {
        std::shared_ptr<NodeState> found;
        for (const auto& n : nodes) {
            if (n->script.path == path && (!found || found->gone))
                found = n;
        }
        if (!found)
            throw std::invalid_argument("no fake video node " + path);
        return *found;
    }

    int ioctl(NodeState& n, int handle, unsigned long request, void* arg);
    int deliver(NodeState& n, v4l2_buffer& b);
};

namespace {

class FakeDevice final : public V4l2Device {
public:
    FakeDevice(std::shared_ptr<FakeV4l2System::Shared> shared, std::shared_ptr<NodeState> node,
               int handle)
        : shared_(std::move(shared)), node_(std::move(node)), handle_(handle) {}

    ~FakeDevice() override {
        std::lock_guard lock(shared_->mutex);
        --node_->openHandles;
        if (node_->owner == handle_)
            releaseBuffers(*node_);
    }

    int ioctl(unsigned long request, void* arg) override {
        std::lock_guard lock(shared_->mutex);
        const int error = shared_->ioctl(*node_, handle_, request, arg);
        if (error == 0)
            return 0;
        errno = error;
        return -1;
    }

    void* mmap(std::size_t length, std::uint32_t offset) override {
        std::lock_guard lock(shared_->mutex);
        NodeState& n = *node_;
        const std::size_t index = offset / kOffsetStride;
        errno = n.gone ? ENODEV : EINVAL;
        if (n.gone || offset % kOffsetStride != 0 || index >= n.buffers.size() ||
            length > n.buffers[index].size())
            return nullptr;
        ++n.mapped;
        return n.buffers[index].data();
    }

    void munmap(void* /*address*/, std::size_t /*length*/) override {
        std::lock_guard lock(shared_->mutex);
        if (--node_->mapped == 0 && node_->owner == 0)
            node_->buffers.clear();
    }

    WaitResult wait(int timeoutMs) override {
        std::unique_lock lock(shared_->mutex);
        NodeState& n = *node_;
        const auto deadline = Clock::now() + std::chrono::milliseconds(std::max(0, timeoutMs));
        for (;;) {
            if (n.gone || !n.streaming || n.queue.empty()) {
                errno = n.gone ? ENODEV : EINVAL;
                return WaitResult::Error;
            }
            const auto now = Clock::now();
            if (!shared_->paced || now >= n.due)
                return WaitResult::Ready;
            if (now >= deadline)
                return WaitResult::Timeout;
            shared_->changed.wait_until(lock, std::min(n.due, deadline));
        }
    }

private:
    std::shared_ptr<FakeV4l2System::Shared> shared_;
    std::shared_ptr<NodeState> node_;
    int handle_;
};

} // namespace

int FakeV4l2System::Shared::deliver(NodeState& n, v4l2_buffer& b) {
    if (n.queue.empty() || (paced && Clock::now() < n.due))
        return EAGAIN;
    const std::uint32_t index = n.queue.front();
    n.queue.erase(n.queue.begin());
    n.queued[index] = false;

    const FrameKey key{n.pixelFormat, n.width, n.height};
    const Bytes* frame = nullptr;
    if (auto it = n.frames.find(key); it != n.frames.end() && !it->second.empty())
        frame = &it->second[n.delivered % it->second.size()];
    if (!frame) {
        auto [it, added] = n.defaultFrames.try_emplace(key);
        if (added)
            it->second = defaultFrame(n.pixelFormat, n.width, n.height);
        frame = &it->second;
    }
    Bytes& buffer = n.buffers[index];
    std::size_t used = std::min(frame->size(), buffer.size());
    std::memcpy(buffer.data(), frame->data(), used);

    b = {};
    b.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    b.memory = V4L2_MEMORY_MMAP;
    b.index = index;
    b.sequence = static_cast<__u32>(n.delivered);
    b.flags = V4L2_BUF_FLAG_MAPPED | V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC | V4L2_BUF_FLAG_DONE;
    if (auto f = n.faults.find(n.delivered); f != n.faults.end()) {
        switch (f->second) {
        case FakeFault::Corrupt: {
            std::uint32_t noise = 12345;
            for (std::size_t i = 2; i < used; ++i) {
                noise = noise * 1103515245u + 12345u;
                buffer[i] = std::uint8_t(noise >> 16);
            }
            break;
        }
        case FakeFault::Short:
            used /= 2;
            break;
        case FakeFault::ErrorFlag:
            b.flags |= V4L2_BUF_FLAG_ERROR;
            break;
        case FakeFault::Empty:
            used = 0;
            break;
        }
    }
    b.bytesused = static_cast<__u32>(used);
    b.length = static_cast<__u32>(buffer.size());
    b.m.offset = index * kOffsetStride;
    timespec t{};
    clock_gettime(CLOCK_MONOTONIC, &t);
    b.timestamp.tv_sec = t.tv_sec;
    b.timestamp.tv_usec = t.tv_nsec / 1000;

    ++n.delivered;
    // A device whose reader falls behind drops frames rather than bursting to catch up.
    n.due = std::max(n.due + durationOf(n.interval), Clock::now());
    return 0;
}

int FakeV4l2System::Shared::ioctl(NodeState& n, int handle, unsigned long request, void* arg) {
    if (n.gone)
        return ENODEV;
    if (auto it = n.failOnce.find(request); it != n.failOnce.end()) {
        const int error = it->second;
        n.failOnce.erase(it);
        return error;
    }
    // Another handle (a listing, a second program) must not touch the streaming one's buffers.
    const bool owned = n.owner == 0 || n.owner == handle;

    switch (request) {
    case VIDIOC_QUERYCAP: {
        auto& cap = *static_cast<v4l2_capability*>(arg);
        cap = {};
        copyText(cap.driver, sizeof cap.driver, "uvcvideo");
        copyText(cap.card, sizeof cap.card, n.script.card);
        cap.version = 0x060100;
        cap.capabilities = n.script.capabilities;
        if (n.script.deviceCaps) {
            cap.capabilities |= V4L2_CAP_DEVICE_CAPS;
            cap.device_caps = *n.script.deviceCaps;
        }
        return 0;
    }
    case VIDIOC_ENUM_FMT: {
        auto& d = *static_cast<v4l2_fmtdesc*>(arg);
        if (d.type != V4L2_BUF_TYPE_VIDEO_CAPTURE || d.index >= n.script.formats.size())
            return EINVAL;
        const std::uint32_t format = n.script.formats[d.index].pixelFormat;
        d.pixelformat = format;
        const bool compressed = isJpeg(format) || format == V4L2_PIX_FMT_H264;
        d.flags = compressed ? V4L2_FMT_FLAG_COMPRESSED : 0;
        return 0;
    }
    case VIDIOC_ENUM_FRAMESIZES: {
        auto& e = *static_cast<v4l2_frmsizeenum*>(arg);
        const FakeFormat* f = findFormat(n.script, e.pixel_format);
        if (!f)
            return EINVAL;
        if (f->stepwise) {
            if (e.index != 0)
                return EINVAL;
            const FakeStepwise& s = *f->stepwise;
            e.type = V4L2_FRMSIZE_TYPE_STEPWISE;
            e.stepwise = {__u32(s.minWidth),  __u32(s.maxWidth),  __u32(s.stepWidth),
                          __u32(s.minHeight), __u32(s.maxHeight), __u32(s.stepHeight)};
            return 0;
        }
        if (e.index >= f->sizes.size())
            return EINVAL;
        e.type = V4L2_FRMSIZE_TYPE_DISCRETE;
        e.discrete = {__u32(f->sizes[e.index].width), __u32(f->sizes[e.index].height)};
        return 0;
    }
    case VIDIOC_ENUM_FRAMEINTERVALS: {
        auto& e = *static_cast<v4l2_frmivalenum*>(arg);
        const FakeFormat* f = findFormat(n.script, e.pixel_format);
        const FakeFrameSize* s = f ? findSize(*f, int(e.width), int(e.height)) : nullptr;
        if (!s || e.index >= s->intervals.size())
            return EINVAL;
        e.type = V4L2_FRMIVAL_TYPE_DISCRETE;
        e.discrete = {s->intervals[e.index].numerator, s->intervals[e.index].denominator};
        return 0;
    }
    case VIDIOC_G_FMT:
    case VIDIOC_TRY_FMT:
    case VIDIOC_S_FMT: {
        auto& f = *static_cast<v4l2_format*>(arg);
        if (f.type != V4L2_BUF_TYPE_VIDEO_CAPTURE || n.script.formats.empty())
            return EINVAL;
        if (request == VIDIOC_G_FMT) {
            f.fmt.pix = {};
            f.fmt.pix.pixelformat = n.pixelFormat;
            f.fmt.pix.width = __u32(n.width);
            f.fmt.pix.height = __u32(n.height);
        }
        if (request == VIDIOC_S_FMT && (!n.buffers.empty() || n.streaming))
            return EBUSY;
        settleFormat(n, f.fmt.pix);
        if (request == VIDIOC_S_FMT)
            selectFormat(n, f.fmt.pix.pixelformat, int(f.fmt.pix.width), int(f.fmt.pix.height));
        return 0;
    }
    case VIDIOC_G_PARM:
    case VIDIOC_S_PARM: {
        auto& p = *static_cast<v4l2_streamparm*>(arg);
        if (p.type != V4L2_BUF_TYPE_VIDEO_CAPTURE)
            return EINVAL;
        if (request == VIDIOC_S_PARM) {
            if (n.streaming)
                return EBUSY;
            // The nearest interval the size offers.
            const v4l2_fract asked = p.parm.capture.timeperframe;
            const double wanted = double(asked.numerator) / std::max(1u, asked.denominator);
            double best = 1e30;
            for (const FakeInterval& i : intervalsAt(n)) {
                const double d = std::abs(double(i.numerator) / i.denominator - wanted);
                if (d < best) {
                    best = d;
                    n.interval = i;
                }
            }
        }
        p.parm.capture = {};
        p.parm.capture.capability = V4L2_CAP_TIMEPERFRAME;
        p.parm.capture.timeperframe = {n.interval.numerator, n.interval.denominator};
        return 0;
    }
    case VIDIOC_REQBUFS: {
        auto& r = *static_cast<v4l2_requestbuffers*>(arg);
        if (r.type != V4L2_BUF_TYPE_VIDEO_CAPTURE || r.memory != V4L2_MEMORY_MMAP)
            return EINVAL;
        if (!owned || n.streaming || n.mapped > 0)
            return EBUSY;
        n.queue.clear();
        r.count = std::min(r.count, kMaxBuffers);
        n.buffers.assign(r.count, Bytes(bytesFor(n.pixelFormat, n.width, n.height)));
        n.queued.assign(r.count, false);
        n.owner = r.count ? handle : 0;
        return 0;
    }
    case VIDIOC_QUERYBUF:
    case VIDIOC_QBUF: {
        auto& b = *static_cast<v4l2_buffer*>(arg);
        if (b.type != V4L2_BUF_TYPE_VIDEO_CAPTURE || b.memory != V4L2_MEMORY_MMAP ||
            b.index >= n.buffers.size())
            return EINVAL;
        if (!owned)
            return EBUSY;
        if (request == VIDIOC_QBUF) {
            if (n.queued[b.index])
                return EINVAL;
            n.queued[b.index] = true;
            n.queue.push_back(b.index);
            changed.notify_all();
        }
        b.length = static_cast<__u32>(n.buffers[b.index].size());
        b.m.offset = b.index * kOffsetStride;
        b.flags = V4L2_BUF_FLAG_MAPPED | (n.queued[b.index] ? V4L2_BUF_FLAG_QUEUED : 0);
        return 0;
    }
    case VIDIOC_DQBUF: {
        auto& b = *static_cast<v4l2_buffer*>(arg);
        if (b.type != V4L2_BUF_TYPE_VIDEO_CAPTURE || b.memory != V4L2_MEMORY_MMAP)
            return EINVAL;
        if (!owned)
            return EBUSY;
        return n.streaming ? deliver(n, b) : EINVAL;
    }
    case VIDIOC_STREAMON:
    case VIDIOC_STREAMOFF: {
        if (*static_cast<int*>(arg) != V4L2_BUF_TYPE_VIDEO_CAPTURE)
            return EINVAL;
        if (!owned)
            return EBUSY;
        if (request == VIDIOC_STREAMOFF) {
            stopStreaming(n);
            return 0;
        }
        if (n.buffers.empty())
            return EINVAL;
        n.streaming = true;
        n.due = Clock::now() + durationOf(n.interval);
        changed.notify_all();
        return 0;
    }
    case VIDIOC_QUERYCTRL: {
        auto& q = *static_cast<v4l2_queryctrl*>(arg);
        const bool next = (q.id & V4L2_CTRL_FLAG_NEXT_CTRL) != 0;
        const std::uint32_t id = q.id & ~(V4L2_CTRL_FLAG_NEXT_CTRL | V4L2_CTRL_FLAG_NEXT_COMPOUND);
        // Controls are kept sorted by id, as the enumeration needs.
        const FakeControl* found = findIn(
            n.script.controls, [&](const FakeControl& c) { return next ? c.id > id : c.id == id; });
        if (!found)
            return EINVAL;
        q = {};
        q.id = found->id;
        q.type = found->type;
        copyText(q.name, sizeof q.name, found->name);
        q.minimum = found->min;
        q.maximum = found->max;
        q.step = 1;
        q.default_value = found->def;
        q.flags = found->flags;
        return 0;
    }
    case VIDIOC_QUERYMENU: {
        auto& m = *static_cast<v4l2_querymenu*>(arg);
        const FakeControl* c = findControl(n.script, m.id);
        const auto* entry =
            c ? findIn(c->menu, [&](const auto& e) { return std::uint32_t(e.first) == m.index; })
              : nullptr;
        if (!entry)
            return EINVAL;
        copyText(m.name, sizeof m.name, entry->second);
        return 0;
    }
    case VIDIOC_G_CTRL:
    case VIDIOC_S_CTRL: {
        auto& v = *static_cast<v4l2_control*>(arg);
        const FakeControl* c = findControl(n.script, v.id);
        if (!c)
            return EINVAL;
        if (request == VIDIOC_G_CTRL) {
            v.value = n.values[v.id];
            return 0;
        }
        n.writes.push_back({v.id, v.value});
        std::int32_t value = std::clamp(v.value, c->min, c->max);
        if (c->type == V4L2_CTRL_TYPE_MENU &&
            std::none_of(c->menu.begin(), c->menu.end(),
                         [&](const auto& e) { return e.first == value; }))
            return EINVAL;
        if (c->granularity > 0)
            value = std::max(c->min, value / c->granularity * c->granularity);
        n.values[v.id] = v.value = value;
        return 0;
    }
    default:
        return ENOTTY;
    }
}

FakeV4l2System::FakeV4l2System() : shared_(std::make_shared<Shared>()) {}

FakeV4l2System::~FakeV4l2System() = default;

void FakeV4l2System::addNode(FakeNode node) {
    auto n = std::make_shared<NodeState>();
    if (node.stableName.empty())
        node.stableName = node.path;
    std::sort(node.controls.begin(), node.controls.end(),
              [](const FakeControl& a, const FakeControl& b) { return a.id < b.id; });
    n->script = std::move(node);
    for (const FakeControl& c : n->script.controls)
        n->values[c.id] = c.def;
    if (!n->script.formats.empty()) {
        const FakeFormat& f = n->script.formats.front();
        if (f.stepwise)
            selectFormat(*n, f.pixelFormat, f.stepwise->maxWidth, f.stepwise->maxHeight);
        else if (!f.sizes.empty())
            selectFormat(*n, f.pixelFormat, f.sizes.front().width, f.sizes.front().height);
    }
    std::lock_guard lock(shared_->mutex);
    shared_->nodes.push_back(std::move(n));
}

void FakeV4l2System::moveNode(const std::string& stableName, const std::string& newPath) {
    std::lock_guard lock(shared_->mutex);
    for (const auto& n : shared_->nodes) {
        if (n->script.stableName == stableName && !n->gone)
            n->script.path = newPath;
    }
}

void FakeV4l2System::setOpenError(const std::string& path, int error) {
    std::lock_guard lock(shared_->mutex);
    shared_->at(path).script.openError = error;
}

void FakeV4l2System::setFrames(const std::string& path, std::uint32_t pixelFormat, int width,
                               int height, std::vector<Bytes> frames) {
    std::lock_guard lock(shared_->mutex);
    shared_->at(path).frames[{pixelFormat, width, height}] = std::move(frames);
}

void FakeV4l2System::setFrameFault(const std::string& path, std::uint64_t frame, FakeFault fault) {
    std::lock_guard lock(shared_->mutex);
    shared_->at(path).faults[frame] = fault;
}

void FakeV4l2System::setPaced(bool paced) {
    std::lock_guard lock(shared_->mutex);
    shared_->paced = paced;
    shared_->changed.notify_all();
}

void FakeV4l2System::failIoctlOnce(const std::string& path, unsigned long request, int error) {
    std::lock_guard lock(shared_->mutex);
    shared_->at(path).failOnce[request] = error;
}

void FakeV4l2System::unplug(const std::string& path) {
    std::lock_guard lock(shared_->mutex);
    shared_->at(path).gone = true;
    shared_->changed.notify_all();
}

std::vector<FakeControlWrite> FakeV4l2System::controlWrites(const std::string& path) const {
    std::lock_guard lock(shared_->mutex);
    return shared_->at(path).writes;
}

void FakeV4l2System::clearControlWrites(const std::string& path) {
    std::lock_guard lock(shared_->mutex);
    shared_->at(path).writes.clear();
}

std::int32_t FakeV4l2System::controlValue(const std::string& path, std::uint32_t id) const {
    std::lock_guard lock(shared_->mutex);
    return shared_->at(path).values[id];
}

FakeStreamState FakeV4l2System::state(const std::string& path) const {
    std::lock_guard lock(shared_->mutex);
    const NodeState& n = shared_->at(path);
    return {n.pixelFormat,         n.width,  n.height,     n.interval, n.streaming,
            int(n.buffers.size()), n.mapped, n.openHandles};
}

std::vector<VideoNode> FakeV4l2System::nodes() {
    std::lock_guard lock(shared_->mutex);
    std::vector<VideoNode> result;
    for (const auto& n : shared_->nodes) {
        if (!n->gone)
            result.push_back({n->script.path, n->script.stableName});
    }
    return result;
}

std::unique_ptr<V4l2Device> FakeV4l2System::open(const std::string& path, int& error) {
    std::lock_guard lock(shared_->mutex);
    for (const auto& n : shared_->nodes) {
        if (n->script.path != path || n->gone)
            continue;
        error = n->script.openError;
        if (error)
            return nullptr;
        ++n->openHandles;
        return std::make_unique<FakeDevice>(shared_, n, shared_->nextHandle++);
    }
    error = ENOENT;
    return nullptr;
}

Bytes FakeV4l2System::makeMjpeg(const std::uint8_t* bgr, int width, int height, int quality) {
    tjhandle handle = tjInitCompress();
    unsigned char* out = nullptr;
    unsigned long size = 0;
    const int r = tjCompress2(handle, bgr, width, width * 3, height, TJPF_BGR, &out, &size,
                              TJSAMP_422, quality, 0);
    Bytes bytes;
    if (r == 0)
        bytes.assign(out, out + size);
    tjFree(out);
    tjDestroy(handle);
    return bytes;
}

Bytes FakeV4l2System::makeYuyv(const std::uint8_t* bgr, int width, int height) {
    // BT.601 with full-range luma, the way libv4lconvert reads it back.
    auto y = [](int b, int g, int r) {
        return std::uint8_t(std::clamp((77 * r + 150 * g + 29 * b + 128) >> 8, 0, 255));
    };
    auto u = [](int b, int g, int r) {
        return std::uint8_t(std::clamp(((-43 * r - 85 * g + 128 * b + 128) >> 8) + 128, 0, 255));
    };
    auto v = [](int b, int g, int r) {
        return std::uint8_t(std::clamp(((128 * r - 107 * g - 21 * b + 128) >> 8) + 128, 0, 255));
    };
    Bytes out(std::size_t(width) * height * 2);
    for (int row = 0; row < height; ++row) {
        const std::uint8_t* p = bgr + std::size_t(row) * width * 3;
        std::uint8_t* q = out.data() + std::size_t(row) * width * 2;
        for (int x = 0; x + 1 < width; x += 2, p += 6, q += 4) {
            const int b = (p[0] + p[3]) / 2;
            const int g = (p[1] + p[4]) / 2;
            const int r = (p[2] + p[5]) / 2;
            q[0] = y(p[0], p[1], p[2]);
            q[1] = u(b, g, r);
            q[2] = y(p[3], p[4], p[5]);
            q[3] = v(b, g, r);
        }
    }
    return out;
}

FakeNode FakeV4l2System::webcam(std::string path, std::string stableName, std::string card) {
    FakeNode node;
    node.path = std::move(path);
    node.stableName = std::move(stableName);
    node.card = std::move(card);
    const FakeInterval fps30{1, 30}, fps15{1, 15}, fps10{1, 10}, fps5{1, 5};
    node.formats = {
        {V4L2_PIX_FMT_YUYV,
         {{640, 480, {fps30, fps15, fps10}}, {800, 600, {fps10, fps5}}, {1920, 1080, {fps5}}},
         std::nullopt},
        {V4L2_PIX_FMT_MJPEG,
         {{1920, 1080, {fps30, fps15}},
          {1280, 720, {fps30, fps15}},
          {800, 600, {fps30, fps15}},
          {640, 480, {fps30, fps15}}},
         std::nullopt},
        {V4L2_PIX_FMT_H264, {{3840, 2160, {fps30}}, {1920, 1080, {fps30}}}, std::nullopt},
    };
    auto add = [&](std::uint32_t id, std::uint32_t type, const char* name, std::int32_t min,
                   std::int32_t max, std::int32_t def, std::uint32_t flags = 0,
                   std::vector<std::pair<std::int32_t, std::string>> menu = {}) {
        node.controls.push_back({id, type, name, min, max, def, flags, std::move(menu), 0});
    };
    const auto integer = V4L2_CTRL_TYPE_INTEGER;
    const auto boolean = V4L2_CTRL_TYPE_BOOLEAN;
    const auto inactive = V4L2_CTRL_FLAG_INACTIVE;
    add(V4L2_CID_BRIGHTNESS, integer, "Brightness", -64, 64, 0);
    add(V4L2_CID_CONTRAST, integer, "Contrast", 0, 64, 32);
    add(V4L2_CID_SATURATION, integer, "Saturation", 0, 128, 64);
    add(V4L2_CID_HUE, integer, "Hue", -40, 40, 0);
    add(V4L2_CID_GAMMA, integer, "Gamma", 72, 500, 100);
    add(V4L2_CID_GAIN, integer, "Gain", 0, 100, 0);
    add(V4L2_CID_AUTO_WHITE_BALANCE, boolean, "White Balance, Automatic", 0, 1, 1);
    add(V4L2_CID_WHITE_BALANCE_TEMPERATURE, integer, "White Balance Temperature", 2800, 6500, 4600,
        inactive);
    add(V4L2_CID_POWER_LINE_FREQUENCY, V4L2_CTRL_TYPE_MENU, "Power Line Frequency", 0, 2, 1, 0,
        {{0, "Disabled"}, {1, "50 Hz"}, {2, "60 Hz"}});
    add(V4L2_CID_SHARPNESS, integer, "Sharpness", 0, 6, 3);
    add(V4L2_CID_BACKLIGHT_COMPENSATION, integer, "Backlight Compensation", 0, 2, 1);
    add(V4L2_CID_HFLIP, boolean, "Horizontal Flip", 0, 1, 0);
    add(V4L2_CID_VFLIP, boolean, "Vertical Flip", 0, 1, 0);
    // UVC offers manual and aperture priority only; 0 and 2 are gaps in the menu.
    add(V4L2_CID_EXPOSURE_AUTO, V4L2_CTRL_TYPE_MENU, "Auto Exposure", 0, 3, 3, 0,
        {{1, "Manual Mode"}, {3, "Aperture Priority Mode"}});
    add(V4L2_CID_EXPOSURE_ABSOLUTE, integer, "Exposure Time, Absolute", 1, 5000, 156, inactive);
    add(V4L2_CID_EXPOSURE_AUTO_PRIORITY, boolean, "Exposure, Dynamic Framerate", 0, 1, 0);
    add(V4L2_CID_FOCUS_ABSOLUTE, integer, "Focus, Absolute", 0, 1023, 0, inactive);
    add(V4L2_CID_FOCUS_AUTO, boolean, "Focus, Automatic Continuous", 0, 1, 1);
    return node;
}

} // namespace dscap::v4l2
