#include "sane/SaneSession.h"

#include "sane/PageConvert.h"

#include <cstdlib>
#include <cstring>

namespace twaindsm {

namespace {

constexpr double kPreviewDpi = 30;
constexpr TW_UINT32 kPreferredStrip = 1u << 20;

TW_UINT16 failWith(TW_UINT16& condition, TW_UINT16 code) {
    condition = code;
    return TWRC_FAILURE;
}

} // namespace

SaneSession::~SaneSession() {
    stopWorker();
    m_ui.reset();
}

bool SaneSession::open(const std::string& deviceName, TW_UINT16& condition) {
    std::string error;
    if (!m_device.open(deviceName, error)) {
        condition = TWCC_CHECKDEVICEONLINE;
        return false;
    }
    if (const char* extra = std::getenv("LANMIRA_SANE_OPTIONS"))
        m_device.applyExtraOptions(extra);
    for (auto kind : {ScanPage::Kind::Rgb, ScanPage::Kind::Gray, ScanPage::Kind::BlackWhite})
        if (m_device.supports(kind)) {
            m_settings.kind = kind;
            break;
        }
    m_settings.dpi = m_device.nearestResolution(m_settings.dpi);
    std::snprintf(m_file.FileName, sizeof m_file.FileName, "TWAIN.BMP");
    m_file.Format = TWFF_BMP;
    m_state = State::Open;
    return true;
}

void SaneSession::stopWorker() {
    if (m_worker.joinable()) {
        if (!m_scanDone)
            m_device.cancel();
        m_worker.join();
    }
}

TW_UINT16 SaneSession::entry(TW_UINT32 dg, TW_UINT16 dat, TW_UINT16 msg, TW_MEMREF data,
                             TW_UINT16& condition) {
    if (!data && dat != DAT_NULL && dat != DAT_IMAGEFILEXFER)
        return failWith(condition, TWCC_BADVALUE);
    if (dg == DG_CONTROL) {
        switch (dat) {
        case DAT_CAPABILITY:
            return m_caps.handle(msg, *static_cast<TW_CAPABILITY*>(data), m_state == State::Open,
                                 condition);
        case DAT_USERINTERFACE:
            return userInterface(msg, static_cast<TW_USERINTERFACE*>(data), condition);
        case DAT_EVENT:
            if (msg != MSG_PROCESSEVENT)
                return failWith(condition, TWCC_BADPROTOCOL);
            return processEvent(static_cast<TW_EVENT*>(data), condition);
        case DAT_PENDINGXFERS:
            return pendingTransfers(msg, static_cast<TW_PENDINGXFERS*>(data), condition);
        case DAT_SETUPMEMXFER: {
            if (msg != MSG_GET)
                return failWith(condition, TWCC_BADPROTOCOL);
            auto* setup = static_cast<TW_SETUPMEMXFER*>(data);
            setup->MinBufSize = 1;
            setup->MaxBufSize = 0xFFFFFFFFu;
            setup->Preferred = kPreferredStrip;
            return TWRC_SUCCESS;
        }
        case DAT_SETUPFILEXFER:
            return setupFile(msg, static_cast<TW_SETUPFILEXFER*>(data), condition);
        case DAT_XFERGROUP:
            if (msg != MSG_GET)
                return failWith(condition, TWCC_BADPROTOCOL);
            *static_cast<TW_UINT32*>(data) = DG_IMAGE;
            return TWRC_SUCCESS;
        default:
            return failWith(condition, TWCC_BADPROTOCOL);
        }
    }
    if (dg == DG_IMAGE && msg == MSG_GET) {
        switch (dat) {
        case DAT_IMAGEINFO:
            return imageInfo(static_cast<TW_IMAGEINFO*>(data), condition);
        case DAT_IMAGENATIVEXFER:
            return nativeTransfer(static_cast<TW_HANDLE*>(data), condition);
        case DAT_IMAGEMEMXFER:
            return memoryTransfer(static_cast<TW_IMAGEMEMXFER*>(data), condition);
        case DAT_IMAGEFILEXFER:
            return fileTransfer(condition);
        default:
            break;
        }
    }
    return failWith(condition, TWCC_BADPROTOCOL);
}

TW_UINT16 SaneSession::userInterface(TW_UINT16 msg, TW_USERINTERFACE* ui, TW_UINT16& condition) {
    if (msg == MSG_ENABLEDS) {
        if (m_state != State::Open)
            return failWith(condition, TWCC_SEQERROR);
        m_showUi = ui->ShowUI != 0;
        m_parent = ui->hParent;
        m_event = MSG_NULL;
        setState(State::Enabled);
        if (m_showUi && m_toolkit.makeDialog) {
            m_ui = m_toolkit.makeDialog(*this, m_parent);
            return TWRC_SUCCESS;
        }
        // Without our dialog the scan starts at once; the application hears of it through
        // its event calls.
        m_showUi = false;
        if (!startScan()) {
            setState(State::Open);
            return failWith(condition, TWCC_BUMMER);
        }
        return ui->ShowUI ? TWRC_CHECKSTATUS : TWRC_SUCCESS;
    }
    if (msg == MSG_DISABLEDS) {
        if (m_state != State::Enabled)
            return failWith(condition, TWCC_SEQERROR);
        // The scan thread is ended first: without a toolkit to post through, it reports a
        // finished batch itself and may still be looking at the dialog.
        stopWorker();
        m_ui.reset();
        {
            std::lock_guard lock(m_mutex);
            m_pages.clear();
        }
        m_event = MSG_NULL;
        setState(State::Open);
        return TWRC_SUCCESS;
    }
    return failWith(condition, TWCC_BADPROTOCOL);
}

TW_UINT16 SaneSession::processEvent(TW_EVENT* event, TW_UINT16& condition) {
    if (m_state < State::Enabled)
        return failWith(condition, TWCC_SEQERROR);
    event->TWMessage = MSG_NULL;
    if (m_state != State::Enabled)
        return TWRC_NOTDSEVENT;
    const TW_UINT16 pending = m_event.exchange(MSG_NULL);
    if (pending == MSG_XFERREADY)
        setState(State::XferReady);
    if (pending == MSG_NULL)
        return TWRC_NOTDSEVENT;
    event->TWMessage = pending;
    return TWRC_DSEVENT;
}

bool SaneSession::frontPage(ScanPage*& page) {
    std::lock_guard lock(m_mutex);
    page = m_pages.empty() ? nullptr : &m_pages.front();
    return page != nullptr;
}

TW_UINT16 SaneSession::pendingTransfers(TW_UINT16 msg, TW_PENDINGXFERS* pending,
                                        TW_UINT16& condition) {
    std::size_t left = 0;
    if (msg == MSG_GET) {
        if (m_state < State::Open)
            return failWith(condition, TWCC_SEQERROR);
        std::lock_guard lock(m_mutex);
        pending->Count = static_cast<TW_UINT16>(m_state >= State::XferReady ? m_pages.size() : 0);
        return TWRC_SUCCESS;
    }
    if (msg == MSG_ENDXFER) {
        if (m_state != State::Transferring && m_state != State::XferReady)
            return failWith(condition, TWCC_SEQERROR);
        std::lock_guard lock(m_mutex);
        if (!m_pages.empty())
            m_pages.pop_front();
        left = m_pages.size();
    } else if (msg == MSG_RESET) {
        if (m_state != State::XferReady)
            return failWith(condition, TWCC_SEQERROR);
        std::lock_guard lock(m_mutex);
        m_pages.clear();
    } else {
        return failWith(condition, TWCC_BADPROTOCOL);
    }
    m_rowsSent = 0;
    pending->Count = static_cast<TW_UINT16>(left);
    pending->Reserved = 0;
    if (left > 0) {
        setState(State::XferReady);
    } else {
        setState(State::Enabled);
        // The batch is delivered: the source is done and asks to be closed.
        m_event = MSG_CLOSEDSREQ;
    }
    return TWRC_SUCCESS;
}

TW_UINT16 SaneSession::imageInfo(TW_IMAGEINFO* info, TW_UINT16& condition) {
    ScanPage* page = nullptr;
    if (m_state < State::XferReady || !frontPage(page))
        return failWith(condition, TWCC_SEQERROR);
    std::memset(info, 0, sizeof *info);
    TW_FIX32 dpi{static_cast<TW_INT16>(page->dpi),
                 static_cast<TW_UINT16>((page->dpi - static_cast<int>(page->dpi)) * 65536)};
    info->XResolution = info->YResolution = dpi;
    info->ImageWidth = page->width;
    info->ImageLength = page->height;
    info->SamplesPerPixel = page->kind == ScanPage::Kind::Rgb ? 3 : 1;
    for (int i = 0; i < info->SamplesPerPixel; ++i)
        info->BitsPerSample[i] = page->kind == ScanPage::Kind::BlackWhite ? 1 : 8;
    info->BitsPerPixel = static_cast<TW_INT16>(page->bitsPerPixel());
    info->Planar = 0;
    info->PixelType = static_cast<TW_INT16>(SaneCapabilities::pixelTypeOf(page->kind));
    info->Compression = TWCP_NONE;
    return TWRC_SUCCESS;
}

TW_UINT16 SaneSession::nativeTransfer(TW_HANDLE* handle, TW_UINT16& condition) {
    ScanPage* page = nullptr;
    if (m_state != State::XferReady || !frontPage(page))
        return failWith(condition, TWCC_SEQERROR);
    void* dib = page->dib ? page->dib.release() : PageConvert::toDib(*page);
    if (!dib)
        return failWith(condition, TWCC_LOWMEMORY);
    *handle = dib;
    setState(State::Transferring);
    return TWRC_XFERDONE;
}

TW_UINT16 SaneSession::memoryTransfer(TW_IMAGEMEMXFER* xfer, TW_UINT16& condition) {
    ScanPage* page = nullptr;
    if ((m_state != State::XferReady && m_state != State::Transferring) || !frontPage(page))
        return failWith(condition, TWCC_SEQERROR);
    const std::uint32_t rowBytes = PageConvert::rowBytes(*page);
    const std::uint32_t missing = static_cast<std::uint32_t>(page->height) - m_rowsSent;
    if (!xfer->Memory.TheMem || rowBytes == 0 || xfer->Memory.Length < rowBytes ||
        (xfer->Memory.Flags & TWMF_POINTER) == 0)
        return failWith(condition, TWCC_BADVALUE);
    const std::uint32_t rows = std::min(xfer->Memory.Length / rowBytes, missing);
    PageConvert::copyRows(*page, m_rowsSent, rows, static_cast<std::uint8_t*>(xfer->Memory.TheMem));
    xfer->Compression = TWCP_NONE;
    xfer->BytesPerRow = rowBytes;
    xfer->Columns = static_cast<TW_UINT32>(page->width);
    xfer->Rows = rows;
    xfer->XOffset = 0;
    xfer->YOffset = m_rowsSent;
    xfer->BytesWritten = rows * rowBytes;
    m_rowsSent += rows;
    setState(State::Transferring);
    return m_rowsSent >= static_cast<std::uint32_t>(page->height) ? TWRC_XFERDONE : TWRC_SUCCESS;
}

TW_UINT16 SaneSession::setupFile(TW_UINT16 msg, TW_SETUPFILEXFER* setup, TW_UINT16& condition) {
    switch (msg) {
    case MSG_GET:
    case MSG_GETDEFAULT:
        *setup = m_file;
        return TWRC_SUCCESS;
    case MSG_SET:
        if (m_state > State::XferReady)
            return failWith(condition, TWCC_SEQERROR);
        if (setup->Format != TWFF_BMP && setup->Format != TWFF_TIFF && setup->Format != TWFF_PNG &&
            setup->Format != TWFF_JFIF && setup->Format != TWFF_TIFFMULTI)
            return failWith(condition, TWCC_BADVALUE);
        m_file = *setup;
        m_file.FileName[sizeof m_file.FileName - 1] = '\0';
        return TWRC_SUCCESS;
    default:
        return failWith(condition, TWCC_BADPROTOCOL);
    }
}

TW_UINT16 SaneSession::fileTransfer(TW_UINT16& condition) {
    ScanPage* page = nullptr;
    if (m_state != State::XferReady || !frontPage(page))
        return failWith(condition, TWCC_SEQERROR);
    std::string error;
    if (!PageConvert::toFile(*page, m_file.FileName, m_file.Format, error))
        return failWith(condition, TWCC_FILEWRITEERROR);
    setState(State::Transferring);
    return TWRC_XFERDONE;
}

bool SaneSession::startScan() {
    if (m_state != State::Enabled || scanning())
        return false;
    stopWorker();
    ScanRequest request;
    request.kind = m_settings.kind;
    request.dpi = m_settings.dpi;
    request.left = m_settings.left;
    request.top = m_settings.top;
    request.width = m_settings.width;
    request.height = m_settings.height;
    std::string error;
    if (!m_device.configure(request, error))
        return false;
    // A flatbed gives one page per scan; a feeder as many as were asked for (-1: all).
    const bool feeder = m_device.hasFeeder();
    const int pages = feeder ? m_settings.xferCount : 1;
    m_device.beginBatch();
    m_scanDone = false;
    {
        std::lock_guard lock(m_mutex);
        m_pages.clear();
        m_scanError.clear();
    }
    m_worker = std::thread(&SaneSession::scanBatch, this, request, pages, feeder,
                           m_settings.mechanism == TWSX_NATIVE, scanMemoryLimit());
    return true;
}

void SaneSession::scanBatch(ScanRequest request, int pages, bool feeder, bool native,
                            std::uint64_t limit) {
    std::string error, detail;
    int taken = 0;
    while (pages < 0 || taken < pages) {
        ScanPage page;
        page.dpi = request.dpi;
        const SaneDevice::Result r = m_device.scanPage(page, limit, detail, native);
        if (r == SaneDevice::Result::Ok) {
            // A large page takes a while to turn around; better here than on the thread
            // that asks for it.
            if (native && !page.dib) {
                page.dib.reset(PageConvert::toDib(page));
                if (page.dib)
                    std::vector<std::uint8_t>().swap(page.data);
            }
            std::lock_guard lock(m_mutex);
            m_pages.push_back(std::move(page));
            ++taken;
            if (!feeder)
                break;
            continue;
        }
        if (r == SaneDevice::Result::NoMorePages && taken == 0)
            error = "ids_lanmira_scan_feederempty";
        else if (r == SaneDevice::Result::TooLarge)
            error = "ids_lanmira_scan_toolarge";
        else if (r == SaneDevice::Result::Failed)
            error = "ids_lanmira_scan_failed";
        break;
    }
    m_device.cancel();
    {
        std::lock_guard lock(m_mutex);
        // Pages already scanned are still delivered after a later page fails.
        m_scanError = taken > 0 ? std::string() : error;
        m_scanDetail = detail;
    }
    m_scanDone = true;
    if (m_toolkit.post) {
        std::weak_ptr<bool> alive = m_alive;
        m_toolkit.post([this, alive] {
            if (alive.lock())
                batchFinished();
        });
    } else {
        batchFinished();
    }
}

void SaneSession::batchFinished() {
    std::string error, detail;
    bool any = false;
    {
        std::lock_guard lock(m_mutex);
        error = m_scanError;
        detail = m_scanDetail;
        any = !m_pages.empty();
    }
    if (m_state != State::Enabled)
        return;
    if (m_ui)
        m_ui->scanFinished(any ? std::string() : error, detail);
    if (any) {
        m_event = MSG_XFERREADY;
        return;
    }
    // With the dialog open the user may try again; without it, the source gives up.
    if (m_ui)
        return;
    if (!error.empty() && m_toolkit.reportError)
        m_toolkit.reportError(error, detail, m_parent);
    m_event = MSG_CLOSEDSREQ;
}

bool SaneSession::startPreview(std::function<void(ScanPage)> done) {
    if (m_state != State::Enabled || scanning())
        return false;
    stopWorker();
    ScanRequest request;
    request.kind = m_device.supports(ScanPage::Kind::Rgb) ? ScanPage::Kind::Rgb : m_settings.kind;
    request.dpi = m_device.nearestResolution(kPreviewDpi);
    std::string error;
    if (!m_device.configure(request, error))
        return false;
    m_device.beginBatch();
    m_scanDone = false;
    m_worker = std::thread([this, request, done = std::move(done)] {
        ScanPage page;
        page.dpi = request.dpi;
        std::string failure;
        const auto r = m_device.scanPage(page, scanMemoryLimit(), failure);
        m_device.cancel();
        if (r != SaneDevice::Result::Ok)
            page = ScanPage{};
        m_scanDone = true;
        done(std::move(page));
    });
    return true;
}

void SaneSession::requestClose() {
    if (m_state != State::Enabled)
        return;
    if (scanning())
        m_device.cancel();
    m_event = MSG_CLOSEDSREQ;
}

} // namespace twaindsm
