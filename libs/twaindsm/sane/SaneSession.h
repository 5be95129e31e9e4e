#pragma once

#include "sane/SaneCapabilities.h"
#include "sane/SaneDevice.h"
#include "sane/ScanPage.h"
#include "twain/twain.h"

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace twaindsm {

class SaneSession;

// The source's own dialog; the plug-in's widget side makes it.
class SourceUi {
public:
    virtual ~SourceUi() = default;
    // The scan thread finished. `error` is empty, or the catalog name of the failure's
    // text, which may hold one %s for `detail` (the scanner's own words).
    virtual void scanFinished(const std::string& error, const std::string& detail) = 0;
};

// What the source needs of a toolkit: its dialog and a way to tell the user of a failure
// when no dialog is shown. Both may be absent (tests, no display).
struct SourceToolkit {
    std::function<std::unique_ptr<SourceUi>(SaneSession&, void* parent)> makeDialog;
    std::function<void(const std::string& error, const std::string& detail, void* parent)>
        reportError;
    // Runs a function on the thread that called ENABLEDS, soon; absent: run it in place.
    std::function<void(std::function<void()>)> post;
    // Runs a call that may take seconds (listing or opening devices, which may ask the
    // network) on another thread, and returns when it is done, the caller's window kept
    // painted meanwhile; absent: runs it in place.
    std::function<void(const std::function<void()>&)> runAside;
};

// One open SANE device as a TWAIN source: states 4 (open) to 7 (transferring), the
// capabilities, the scan thread and the three transfer mechanisms.
class SaneSession {
public:
    enum class State { Open = 4, Enabled = 5, XferReady = 6, Transferring = 7 };

    explicit SaneSession(const SourceToolkit& toolkit)
        : m_toolkit(toolkit), m_caps(m_device, m_settings) {}
    ~SaneSession();

    bool open(const std::string& deviceName, TW_UINT16& condition);
    // Every triplet but identity and status; the condition of a failure goes to `condition`.
    TW_UINT16 entry(TW_UINT32 dg, TW_UINT16 dat, TW_UINT16 msg, TW_MEMREF data,
                    TW_UINT16& condition);
    State state() const { return m_state; }

    // For the dialog.
    SaneDevice& device() { return m_device; }
    SourceSettings& settings() { return m_settings; }
    bool scanning() const { return m_worker.joinable() && !m_scanDone; }
    // Starts scanning the batch with the current settings; false while a scan runs.
    bool startScan();
    // A low-resolution scan of the whole bed for the dialog's preview; `done` runs on the
    // scan thread with the page (empty on failure).
    bool startPreview(std::function<void(ScanPage page)> done);
    // The dialog was cancelled or closed by the user.
    void requestClose();

private:
    TW_UINT16 userInterface(TW_UINT16 msg, TW_USERINTERFACE* ui, TW_UINT16& condition);
    TW_UINT16 processEvent(TW_EVENT* event, TW_UINT16& condition);
    TW_UINT16 pendingTransfers(TW_UINT16 msg, TW_PENDINGXFERS* pending, TW_UINT16& condition);
    TW_UINT16 imageInfo(TW_IMAGEINFO* info, TW_UINT16& condition);
    TW_UINT16 nativeTransfer(TW_HANDLE* handle, TW_UINT16& condition);
    TW_UINT16 memoryTransfer(TW_IMAGEMEMXFER* xfer, TW_UINT16& condition);
    TW_UINT16 fileTransfer(TW_UINT16& condition);
    TW_UINT16 setupFile(TW_UINT16 msg, TW_SETUPFILEXFER* setup, TW_UINT16& condition);
    void setState(State s) { m_state = s; }
    void stopWorker();
    void scanBatch(ScanRequest request, int pages, bool feeder, bool native, std::uint64_t limit);
    void batchFinished();
    bool frontPage(ScanPage*& page);

    const SourceToolkit& m_toolkit;
    SaneDevice m_device;
    SourceSettings m_settings;
    SaneCapabilities m_caps;
    State m_state = State::Open;
    bool m_showUi = false;
    void* m_parent = nullptr;
    std::unique_ptr<SourceUi> m_ui;
    TW_SETUPFILEXFER m_file{};
    std::uint32_t m_rowsSent = 0;

    std::thread m_worker;
    std::atomic<bool> m_scanDone{true};
    // The message PROCESSEVENT hands out next (MSG_XFERREADY, MSG_CLOSEDSREQ or MSG_NULL).
    std::atomic<TW_UINT16> m_event{MSG_NULL};
    // Guards m_pages, m_scanError and m_scanDetail, which the scan thread fills.
    std::mutex m_mutex;
    std::deque<ScanPage> m_pages;
    std::string m_scanError;
    std::string m_scanDetail;
    // Posted completions check this, as the session may be gone when they run.
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

} // namespace twaindsm
