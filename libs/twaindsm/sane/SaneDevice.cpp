#include "sane/SaneDevice.h"

#include "sane/PageConvert.h"

#include <sane/saneopts.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <mutex>
#include <sched.h>

namespace twaindsm {

namespace {

// SANE is initialised once and left initialised: backends keep threads and handles that
// must not be torn down while a dialog may still ask for the device list.
void initSane() {
    static std::once_flag once;
    std::call_once(once, [] {
        SANE_Int version = 0;
        sane_init(&version, nullptr);
    });
}

constexpr std::size_t kReadChunk = 1 << 20;

double toDouble(SANE_Value_Type type, SANE_Word w) {
    return type == SANE_TYPE_FIXED ? SANE_UNFIX(w) : static_cast<double>(w);
}

SANE_Word fromDouble(SANE_Value_Type type, double v) {
    return type == SANE_TYPE_FIXED ? SANE_FIX(v) : static_cast<SANE_Word>(std::lround(v));
}

bool contains(const std::string& text, const char* word) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower.find(word) != std::string::npos;
}

// Keeps the calling thread, and the reader a backend starts from it (a forked process or a
// thread, which inherit the mask), on the core it is on until the scan is read. Backends
// hand the page over through a pipe a few tens of kilobytes at a time; on one core each
// hand-over is a plain switch, across two it wakes the idle one, hundreds of times a page.
class OneCore {
public:
    OneCore() {
        CPU_ZERO(&m_saved);
        const int core = ::sched_getcpu();
        if (core < 0 || ::sched_getaffinity(0, sizeof m_saved, &m_saved) != 0)
            return;
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(core, &one);
        m_pinned = ::sched_setaffinity(0, sizeof one, &one) == 0;
    }
    ~OneCore() {
        if (m_pinned)
            ::sched_setaffinity(0, sizeof m_saved, &m_saved);
    }
    OneCore(const OneCore&) = delete;
    OneCore& operator=(const OneCore&) = delete;

private:
    cpu_set_t m_saved;
    bool m_pinned = false;
};

} // namespace

std::uint64_t scanMemoryLimit() {
    if (const char* env = std::getenv("LANMIRA_SANE_MEMORY_LIMIT"))
        if (const auto v = std::strtoull(env, nullptr, 10); v > 0)
            return v;
    std::ifstream meminfo("/proc/meminfo");
    std::string key;
    std::uint64_t kb = 0;
    while (meminfo >> key >> kb) {
        if (key == "MemAvailable:")
            return kb * 1024 / 2;
        meminfo.ignore(256, '\n');
    }
    return std::uint64_t(1) << 30;
}

SaneDevice::~SaneDevice() {
    close();
}

std::vector<SaneDeviceInfo> SaneDevice::list() {
    initSane();
    const SANE_Device** devices = nullptr;
    std::vector<SaneDeviceInfo> out;
    if (sane_get_devices(&devices, SANE_FALSE) != SANE_STATUS_GOOD || !devices)
        return out;
    for (const SANE_Device** d = devices; *d; ++d)
        out.push_back({(*d)->name ? (*d)->name : "", (*d)->vendor ? (*d)->vendor : "",
                       (*d)->model ? (*d)->model : "", (*d)->type ? (*d)->type : ""});
    return out;
}

bool SaneDevice::open(const std::string& name, std::string& error) {
    close();
    initSane();
    const SANE_Status status = sane_open(name.c_str(), &m_handle);
    if (status != SANE_STATUS_GOOD) {
        m_handle = nullptr;
        error = sane_strstatus(status);
        return false;
    }
    m_name = name;
    return true;
}

void SaneDevice::close() {
    if (m_handle) {
        sane_cancel(m_handle);
        sane_close(m_handle);
    }
    m_handle = nullptr;
    m_name.clear();
}

int SaneDevice::findOption(const char* name) const {
    if (!m_handle)
        return -1;
    for (SANE_Int i = 1;; ++i) {
        const SANE_Option_Descriptor* d = sane_get_option_descriptor(m_handle, i);
        if (!d)
            return -1;
        if (d->name && std::strcmp(d->name, name) == 0 && SANE_OPTION_IS_ACTIVE(d->cap))
            return i;
    }
}

bool SaneDevice::setNumber(const char* name, double value) {
    const int index = findOption(name);
    if (index < 0)
        return false;
    const SANE_Option_Descriptor* d = sane_get_option_descriptor(m_handle, index);
    if (!SANE_OPTION_IS_SETTABLE(d->cap) ||
        (d->type != SANE_TYPE_INT && d->type != SANE_TYPE_FIXED) || d->size < 1)
        return false;
    std::vector<SANE_Word> words(static_cast<std::size_t>(d->size) / sizeof(SANE_Word) + 1,
                                 fromDouble(d->type, value));
    return sane_control_option(m_handle, index, SANE_ACTION_SET_VALUE, words.data(), nullptr) ==
           SANE_STATUS_GOOD;
}

bool SaneDevice::setString(const char* name, const std::string& value) {
    const int index = findOption(name);
    if (index < 0)
        return false;
    const SANE_Option_Descriptor* d = sane_get_option_descriptor(m_handle, index);
    if (!SANE_OPTION_IS_SETTABLE(d->cap))
        return false;
    if (d->type == SANE_TYPE_BOOL) {
        SANE_Bool b = value == "yes" || value == "1" || value == "true";
        return sane_control_option(m_handle, index, SANE_ACTION_SET_VALUE, &b, nullptr) ==
               SANE_STATUS_GOOD;
    }
    if (d->type == SANE_TYPE_INT || d->type == SANE_TYPE_FIXED)
        return setNumber(name, std::strtod(value.c_str(), nullptr));
    if (d->type != SANE_TYPE_STRING)
        return false;
    std::vector<char> buf(
        std::max<std::size_t>(static_cast<std::size_t>(d->size), value.size() + 1));
    std::memcpy(buf.data(), value.c_str(), value.size() + 1);
    return sane_control_option(m_handle, index, SANE_ACTION_SET_VALUE, buf.data(), nullptr) ==
           SANE_STATUS_GOOD;
}

std::optional<double> SaneDevice::maxOf(const char* name) const {
    const int index = findOption(name);
    if (index < 0)
        return std::nullopt;
    const SANE_Option_Descriptor* d = sane_get_option_descriptor(m_handle, index);
    if (d->constraint_type == SANE_CONSTRAINT_RANGE)
        return toDouble(d->type, d->constraint.range->max);
    if (d->constraint_type == SANE_CONSTRAINT_WORD_LIST) {
        double best = 0;
        for (SANE_Int i = 1; i <= d->constraint.word_list[0]; ++i)
            best = std::max(best, toDouble(d->type, d->constraint.word_list[i]));
        return best;
    }
    return std::nullopt;
}

std::vector<std::string> SaneDevice::stringList(const char* name) const {
    std::vector<std::string> out;
    const int index = findOption(name);
    if (index < 0)
        return out;
    const SANE_Option_Descriptor* d = sane_get_option_descriptor(m_handle, index);
    if (d->constraint_type == SANE_CONSTRAINT_STRING_LIST)
        for (const SANE_String_Const* s = d->constraint.string_list; *s; ++s)
            out.emplace_back(*s);
    return out;
}

std::string SaneDevice::modeFor(ScanPage::Kind kind, int& depth) const {
    const auto modes = stringList(SANE_NAME_SCAN_MODE);
    const auto has = [&](const char* m) {
        return std::find(modes.begin(), modes.end(), m) != modes.end();
    };
    depth = kind == ScanPage::Kind::BlackWhite ? 1 : 8;
    switch (kind) {
    case ScanPage::Kind::Rgb:
        return has(SANE_VALUE_SCAN_MODE_COLOR) ? SANE_VALUE_SCAN_MODE_COLOR : std::string();
    case ScanPage::Kind::Gray:
        return has(SANE_VALUE_SCAN_MODE_GRAY) ? SANE_VALUE_SCAN_MODE_GRAY : std::string();
    case ScanPage::Kind::BlackWhite:
        if (has(SANE_VALUE_SCAN_MODE_LINEART))
            return SANE_VALUE_SCAN_MODE_LINEART;
        // Scanners without a line-art mode often give grey at one bit per sample.
        return has(SANE_VALUE_SCAN_MODE_GRAY) ? SANE_VALUE_SCAN_MODE_GRAY : std::string();
    }
    return {};
}

bool SaneDevice::supports(ScanPage::Kind kind) const {
    int depth = 0;
    const std::string mode = modeFor(kind, depth);
    if (mode.empty())
        return false;
    if (kind != ScanPage::Kind::BlackWhite || mode == SANE_VALUE_SCAN_MODE_LINEART)
        return true;
    const int index = findOption(SANE_NAME_BIT_DEPTH);
    if (index < 0)
        return false;
    const SANE_Option_Descriptor* d = sane_get_option_descriptor(m_handle, index);
    if (d->constraint_type != SANE_CONSTRAINT_WORD_LIST)
        return false;
    for (SANE_Int i = 1; i <= d->constraint.word_list[0]; ++i)
        if (d->constraint.word_list[i] == 1)
            return true;
    return false;
}

SaneDevice::Resolutions SaneDevice::resolutions() const {
    Resolutions r;
    const int index = findOption(SANE_NAME_SCAN_RESOLUTION);
    if (index < 0)
        return r;
    const SANE_Option_Descriptor* d = sane_get_option_descriptor(m_handle, index);
    if (d->constraint_type == SANE_CONSTRAINT_RANGE) {
        r.min = toDouble(d->type, d->constraint.range->min);
        r.max = toDouble(d->type, d->constraint.range->max);
    } else if (d->constraint_type == SANE_CONSTRAINT_WORD_LIST) {
        for (SANE_Int i = 1; i <= d->constraint.word_list[0]; ++i)
            r.list.push_back(toDouble(d->type, d->constraint.word_list[i]));
        if (!r.list.empty()) {
            r.min = *std::min_element(r.list.begin(), r.list.end());
            r.max = *std::max_element(r.list.begin(), r.list.end());
        }
    }
    return r;
}

double SaneDevice::nearestResolution(double dpi) const {
    const Resolutions r = resolutions();
    if (r.list.empty())
        return r.max > 0 ? std::clamp(dpi, r.min, r.max) : dpi;
    double best = r.list.front();
    for (double v : r.list)
        if (std::abs(v - dpi) < std::abs(best - dpi))
            best = v;
    return best;
}

double SaneDevice::bedWidth() const {
    return maxOf(SANE_NAME_SCAN_BR_X).value_or(0);
}
double SaneDevice::bedHeight() const {
    return maxOf(SANE_NAME_SCAN_BR_Y).value_or(0);
}

bool SaneDevice::hasFeeder() const {
    const int index = findOption(SANE_NAME_SCAN_SOURCE);
    if (index < 0)
        return false;
    const SANE_Option_Descriptor* d = sane_get_option_descriptor(m_handle, index);
    if (d->type != SANE_TYPE_STRING)
        return false;
    std::vector<char> value(static_cast<std::size_t>(d->size) + 1, '\0');
    if (sane_control_option(m_handle, index, SANE_ACTION_GET_VALUE, value.data(), nullptr) !=
        SANE_STATUS_GOOD)
        return false;
    const std::string source(value.data());
    return contains(source, "feeder") || contains(source, "adf");
}

void SaneDevice::applyExtraOptions(const std::string& pairs) {
    std::size_t start = 0;
    while (start < pairs.size()) {
        std::size_t end = pairs.find(';', start);
        if (end == std::string::npos)
            end = pairs.size();
        const std::string one = pairs.substr(start, end - start);
        if (const auto eq = one.find('='); eq != std::string::npos)
            setString(one.substr(0, eq).c_str(), one.substr(eq + 1));
        start = end + 1;
    }
}

bool SaneDevice::configure(const ScanRequest& request, std::string& error) {
    int depth = 8;
    const std::string mode = modeFor(request.kind, depth);
    if (mode.empty() || !setString(SANE_NAME_SCAN_MODE, mode)) {
        error = "The scanner does not offer this colour mode.";
        return false;
    }
    // Not every scanner has a depth option; those that have none give what the mode says.
    setNumber(SANE_NAME_BIT_DEPTH, depth);
    if (!setNumber(SANE_NAME_SCAN_RESOLUTION, nearestResolution(request.dpi))) {
        error = "The scanner refused the resolution.";
        return false;
    }
    setNumber(SANE_NAME_SCAN_Y_RESOLUTION, nearestResolution(request.dpi));
    const double bedW = bedWidth(), bedH = bedHeight();
    const double w = request.width > 0 ? request.width : bedW;
    const double h = request.height > 0 ? request.height : bedH;
    setNumber(SANE_NAME_SCAN_TL_X, request.left);
    setNumber(SANE_NAME_SCAN_TL_Y, request.top);
    setNumber(SANE_NAME_SCAN_BR_X, bedW > 0 ? std::min(bedW, request.left + w) : request.left + w);
    setNumber(SANE_NAME_SCAN_BR_Y, bedH > 0 ? std::min(bedH, request.top + h) : request.top + h);
    return true;
}

SaneDevice::Result SaneDevice::scanPage(ScanPage& page, std::uint64_t memoryLimit,
                                        std::string& error, bool asBitmap) {
    if (m_cancelled)
        return Result::Cancelled;
    const OneCore oneCore;
    SANE_Status status = sane_start(m_handle);
    if (status == SANE_STATUS_NO_DOCS)
        return Result::NoMorePages;
    if (status == SANE_STATUS_CANCELLED)
        return Result::Cancelled;
    if (status != SANE_STATUS_GOOD) {
        error = sane_strstatus(status);
        return Result::Failed;
    }
    SANE_Parameters p{};
    if ((status = sane_get_parameters(m_handle, &p)) != SANE_STATUS_GOOD) {
        error = sane_strstatus(status);
        return Result::Failed;
    }
    if (!p.last_frame || (p.format != SANE_FRAME_GRAY && p.format != SANE_FRAME_RGB) ||
        (p.depth != 1 && p.depth != 8 && p.depth != 16) || p.pixels_per_line <= 0 ||
        p.bytes_per_line <= 0) {
        error = "The scanner delivers its picture in a form this program does not read.";
        return Result::Failed;
    }
    const bool known = p.lines > 0;
    const std::uint64_t expected =
        known ? std::uint64_t(p.bytes_per_line) * std::uint64_t(p.lines) : 0;
    if (expected > memoryLimit) {
        sane_cancel(m_handle);
        return Result::TooLarge;
    }
    page.kind = p.depth == 1                 ? ScanPage::Kind::BlackWhite
                : p.format == SANE_FRAME_RGB ? ScanPage::Kind::Rgb
                                             : ScanPage::Kind::Gray;
    if (asBitmap && known && p.depth != 16)
        return scanIntoBitmap(page, p, error);
    std::vector<std::uint8_t> raw;
    raw.resize(known ? expected : kReadChunk);
    std::size_t filled = 0;
    for (;;) {
        if (filled == raw.size()) {
            if (known)
                break;
            // A hand scanner does not know its length: grow, but never past the limit.
            if (raw.size() * 2 > memoryLimit) {
                sane_cancel(m_handle);
                return Result::TooLarge;
            }
            raw.resize(raw.size() * 2);
        }
        bool end = false;
        const Result r =
            readSome(raw.data(), filled, std::min(raw.size() - filled, kReadChunk), end, error);
        if (r != Result::Ok)
            return r;
        if (end)
            break;
    }
    const std::uint32_t lines = static_cast<std::uint32_t>(filled / std::size_t(p.bytes_per_line));
    if (lines == 0) {
        error = "The scanner delivered no picture.";
        return Result::Failed;
    }
    page.width = p.pixels_per_line;
    page.height = static_cast<std::int32_t>(lines);
    const int samples = p.format == SANE_FRAME_RGB ? 3 : 1;
    if (p.depth == 16) {
        // Eight bits are all a bitmap keeps: take each sample's high byte.
        const std::size_t perLine = std::size_t(p.pixels_per_line) * samples;
        for (std::uint32_t y = 0; y < lines; ++y) {
            const std::uint8_t* src = raw.data() + std::size_t(y) * std::size_t(p.bytes_per_line);
            std::uint8_t* dst = raw.data() + std::size_t(y) * perLine;
            for (std::size_t i = 0; i < perLine; ++i) {
                std::uint16_t v;
                std::memcpy(&v, src + 2 * i, 2);
                dst[i] = static_cast<std::uint8_t>(v >> 8);
            }
        }
        page.bytesPerLine = static_cast<std::uint32_t>(perLine);
        raw.resize(perLine * lines);
    } else {
        page.bytesPerLine = static_cast<std::uint32_t>(p.bytes_per_line);
        raw.resize(std::size_t(p.bytes_per_line) * lines);
    }
    page.data = std::move(raw);
    return Result::Ok;
}

SaneDevice::Result SaneDevice::readSome(std::uint8_t* buffer, std::size_t& filled, std::size_t want,
                                        bool& end, std::string& error) {
    SANE_Int got = 0;
    const SANE_Status status =
        sane_read(m_handle, buffer + filled, static_cast<SANE_Int>(want), &got);
    filled += static_cast<std::size_t>(std::max(got, 0));
    end = status == SANE_STATUS_EOF;
    if (end)
        return Result::Ok;
    if (status == SANE_STATUS_CANCELLED || m_cancelled)
        return Result::Cancelled;
    if (status != SANE_STATUS_GOOD) {
        error = sane_strstatus(status);
        sane_cancel(m_handle);
        return Result::Failed;
    }
    return Result::Ok;
}

SaneDevice::Result SaneDevice::scanIntoBitmap(ScanPage& page, const SANE_Parameters& p,
                                              std::string& error) {
    page.width = p.pixels_per_line;
    page.height = p.lines;
    page.bytesPerLine = static_cast<std::uint32_t>(p.bytes_per_line);
    std::unique_ptr<void, decltype(&std::free)> dib(PageConvert::allocDib(page), &std::free);
    if (!dib) {
        sane_cancel(m_handle);
        return Result::TooLarge;
    }
    // Whole rows at a time through a buffer that stays warm from page to page.
    const std::size_t bpl = std::size_t(p.bytes_per_line);
    const std::size_t rowsPerRead = std::max<std::size_t>(1, kReadChunk / bpl);
    m_readBuffer.resize(rowsPerRead * bpl);
    std::int32_t y = 0;
    bool end = false;
    while (!end && y < page.height) {
        std::size_t filled = 0;
        while (!end && filled < m_readBuffer.size()) {
            const Result r =
                readSome(m_readBuffer.data(), filled, m_readBuffer.size() - filled, end, error);
            if (r != Result::Ok)
                return r;
        }
        for (std::size_t at = 0; at + bpl <= filled && y < page.height; at += bpl)
            PageConvert::putRow(page, dib.get(), y++, m_readBuffer.data() + at);
    }
    if (y == 0) {
        error = "The scanner delivered no picture.";
        return Result::Failed;
    }
    PageConvert::shortenDib(page, dib.get(), y);
    page.dib.reset(dib.release());
    return Result::Ok;
}

void SaneDevice::cancel() {
    m_cancelled = true;
    if (m_handle)
        sane_cancel(m_handle);
}

} // namespace twaindsm
