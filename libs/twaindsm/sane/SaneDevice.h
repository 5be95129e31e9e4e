#pragma once

#include "sane/ScanPage.h"

#include <sane/sane.h>

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace twaindsm {

struct SaneDeviceInfo {
    std::string name;   // "test:0"
    std::string vendor; // "Noname"
    std::string model;  // "frontend-tester"
    std::string type;   // "virtual device"
};

// What one scan asks of the scanner. Lengths in millimetres from the top left corner.
struct ScanRequest {
    ScanPage::Kind kind = ScanPage::Kind::Rgb;
    double dpi = 300;
    double left = 0, top = 0, width = 0, height = 0; // width/height 0: all the bed
};

// One SANE device, opened by name. Options are set by their well-known names; every call
// but cancel() belongs to one thread at a time (the source's, or its scan thread's).
class SaneDevice {
public:
    enum class Result { Ok, NoMorePages, Cancelled, TooLarge, Failed };

    SaneDevice() = default;
    ~SaneDevice();
    SaneDevice(const SaneDevice&) = delete;
    SaneDevice& operator=(const SaneDevice&) = delete;

    // The devices SANE reaches now (initialising SANE for as long as the process lives).
    static std::vector<SaneDeviceInfo> list();

    bool open(const std::string& name, std::string& error);
    void close();
    bool isOpen() const { return m_handle != nullptr; }
    const std::string& name() const { return m_name; }

    bool supports(ScanPage::Kind kind) const;
    // Allowed resolutions: a list, or min/max when `list` is empty.
    struct Resolutions {
        std::vector<double> list;
        double min = 0, max = 0;
    };
    Resolutions resolutions() const;
    double nearestResolution(double dpi) const;
    // The bed's size in millimetres (the largest bottom-right corner).
    double bedWidth() const;
    double bedHeight() const;
    bool hasFeeder() const;

    // Applies `name=value` pairs separated by ';' (extra options an advanced user or a test
    // asks for through $LANMIRA_SANE_OPTIONS). Unknown names are skipped.
    void applyExtraOptions(const std::string& pairs);

    // Sets mode, depth, resolution and area; false with a reason when the device refuses.
    bool configure(const ScanRequest& request, std::string& error);
    // Scans one page. Refuses, before allocating, a page of more than `memoryLimit` bytes.
    // With `asBitmap`, a page of known length arrives as its packed bitmap (`page.dib`),
    // built row by row as the scanner delivers, with no copy of the whole page beside it.
    Result scanPage(ScanPage& page, std::uint64_t memoryLimit, std::string& error,
                    bool asBitmap = false);
    // Ends the batch after the last page, or stops a scan from another thread. A stop
    // holds until the next batch begins, so a page started just after it is not scanned.
    void cancel();
    void beginBatch() { m_cancelled = false; }

private:
    int findOption(const char* name) const;
    bool setNumber(const char* name, double value);
    bool setString(const char* name, const std::string& value);
    std::optional<double> maxOf(const char* name) const;
    std::vector<std::string> stringList(const char* name) const;
    std::string modeFor(ScanPage::Kind kind, int& depth) const;
    Result scanIntoBitmap(ScanPage& page, const SANE_Parameters& p, std::string& error);
    // One read of up to `want` bytes at buffer + filled, which grows by what came. Ok to go
    // on (`end` set once the page is complete), else how the scan stopped.
    Result readSome(std::uint8_t* buffer, std::size_t& filled, std::size_t want, bool& end,
                    std::string& error);

    SANE_Handle m_handle = nullptr;
    std::string m_name;
    std::atomic<bool> m_cancelled{false};
    std::vector<std::uint8_t> m_readBuffer; // the scan thread's
};

// Bytes the scan thread may take for one page: half the memory available now (a page is
// turned into a bitmap once more), or $LANMIRA_SANE_MEMORY_LIMIT when set.
std::uint64_t scanMemoryLimit();

} // namespace twaindsm
