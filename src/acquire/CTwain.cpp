#include "acquire/CTwain.h"

#include "acquire/TwainManagerLibrary.h"
#include "i18n/i18n.h"

#include <QApplication>
#include <QMessageBox>
#include <QTimer>
#include <QWidget>

#include <cstdlib>
#include <cstring>

namespace lanmira {

namespace {

// How often the pump asks the source for news while it is enabled.
constexpr int kPumpMs = 4;

void copyText(char* out, std::size_t size, const char* text) {
    std::memset(out, 0, size);
    std::strncpy(out, text, size - 1);
}

bool transferStarted(TW_UINT16 rc) {
    return rc == TWRC_SUCCESS || rc == TWRC_CANCEL || rc == TWRC_XFERDONE;
}

} // namespace

CTwain::CTwain(QWidget* owner) : m_owner(owner) {
    m_app.Id = 0;
    m_app.Version.MajorNum = 1;
    m_app.Version.MinorNum = 0;
    m_app.Version.Language = TWLG_USA;
    m_app.Version.Country = TWCY_USA;
    m_app.ProtocolMajor = 1;
    m_app.ProtocolMinor = 8;
    m_app.SupportedGroups = DG_CONTROL | DG_IMAGE;
    copyText(m_app.Manufacturer, sizeof m_app.Manufacturer, "Harnet");
    copyText(m_app.ProductFamily, sizeof m_app.ProductFamily, "CTwain application");
    copyText(m_app.ProductName, sizeof m_app.ProductName, "TWAIN Application");
}

CTwain::~CTwain() {
    // The source's dialog and scan thread must end before the window they report to.
    if (m_state > State::ManagerUnloaded)
        ReturnToState(State::ManagerUnloaded);
}

QWidget* CTwain::ownerWindow() const {
    if (m_owner)
        return m_owner;
    return QApplication::activeWindow();
}

void CTwain::setState(State s) {
    m_state = s;
    if (s >= State::SourceEnabled)
        startPump();
    else if (m_pumpTimer)
        m_pumpTimer->stop();
    OnStateChange(s);
}

TW_UINT16 CTwain::call(TW_UINT32 dg, TW_UINT16 dat, TW_UINT16 msg, TW_MEMREF data, bool toSource) {
    DSMENTRYPROC entry = TwainManagerLibrary::entry();
    if (!entry) {
        m_returnCode = TWRC_FAILURE;
        return m_returnCode;
    }
    m_returnCode = entry(&m_app, toSource ? &m_source : nullptr, dg, dat, msg, data);
    if (m_returnCode == TWRC_FAILURE && m_state >= State::SourceOpen &&
        !(dat == DAT_EVENT && msg == MSG_PROCESSEVENT))
        m_lastCondition = ConditionCode();
    return m_returnCode;
}

TW_UINT16 CTwain::ConditionCode() {
    if (m_state < State::ManagerOpen)
        return TWCC_SEQERROR;
    DSMENTRYPROC entry = TwainManagerLibrary::entry();
    TW_STATUS status{};
    const bool toSource = m_state >= State::SourceOpen;
    if (!entry || entry(&m_app, toSource ? &m_source : nullptr, DG_CONTROL, DAT_STATUS, MSG_GET,
                        &status) != TWRC_SUCCESS)
        return TWCC_BUMMER;
    return status.ConditionCode;
}

bool CTwain::loadManager() {
    if (!TwainManagerLibrary::load())
        return false;
    setState(State::ManagerLoaded);
    return true;
}

bool CTwain::openManager() {
    m_ui.hParent = ownerWindow();
    if (call(DG_CONTROL, DAT_PARENT, MSG_OPENDSM, m_ui.hParent, false) != TWRC_SUCCESS)
        return false;
    setState(State::ManagerOpen);
    return true;
}

bool CTwain::openSource() {
    // A cleared identity makes the manager open its default source.
    std::memset(&m_source, 0, sizeof m_source);
    if (call(DG_CONTROL, DAT_IDENTITY, MSG_OPENDS, &m_source, false) != TWRC_SUCCESS)
        return false;
    setState(State::SourceOpen);
    return true;
}

bool CTwain::enableSource() {
    SetCapability(ICAP_XFERMECH, TWTY_UINT16, m_mechanism);
    m_ui.hParent = ownerWindow();
    const TW_UINT16 rc = call(DG_CONTROL, DAT_USERINTERFACE, MSG_ENABLEDS, &m_ui);
    if (rc != TWRC_SUCCESS && rc != TWRC_CHECKSTATUS)
        return false;
    setState(State::SourceEnabled);
    return true;
}

bool CTwain::Acquire() {
    m_returnState = m_state;
    if (m_state < State::ManagerOpen) {
        if ((m_state < State::ManagerLoaded && !loadManager()) || !openManager()) {
            OnError(ErrorManager);
            ReturnToState(m_returnState);
            return false;
        }
    }
    if (m_state < State::SourceOpen) {
        if (!openSource()) {
            OnError(ErrorSource);
            ReturnToState(m_returnState);
            return false;
        }
        if (!NegotiateCapabilities()) {
            OnError(ErrorSource);
            ReturnToState(m_returnState);
            return false;
        }
    }
    if (m_state < State::SourceEnabled && !enableSource()) {
        OnError(ErrorEnable);
        ReturnToState(m_returnState);
        return false;
    }
    return true;
}

bool CTwain::SelectSource() {
    const State start = m_state;
    m_selectReturn = TWRC_FAILURE;
    if ((m_state >= State::ManagerOpen ||
         ((m_state >= State::ManagerLoaded || loadManager()) && openManager()))) {
        TW_IDENTITY identity{};
        call(DG_CONTROL, DAT_IDENTITY, MSG_GETDEFAULT, &identity, false);
        m_selectReturn = call(DG_CONTROL, DAT_IDENTITY, MSG_USERSELECT, &identity, false);
    }
    ReturnToState(start);
    return m_selectReturn == TWRC_SUCCESS;
}

bool CTwain::SetCapability(TW_UINT16 cap, TW_UINT16 itemType, TW_UINT32 value) {
    if (m_state != State::SourceOpen) {
        OnError(ErrorCapability);
        return false;
    }
    TW_ONEVALUE* one = nullptr;
    for (;;) {
        one = static_cast<TW_ONEVALUE*>(std::calloc(1, sizeof(TW_ONEVALUE)));
        if (one)
            break;
        if (QMessageBox::warning(ownerWindow(), i18n_stringW("ids_lanmira_appname"),
                                 i18n_stringW("ids_lanmira_twain_internal"),
                                 QMessageBox::Retry | QMessageBox::Cancel) != QMessageBox::Retry)
            return false;
    }
    one->ItemType = itemType;
    if (itemType == TWTY_FIX32) {
        // The value carries the whole part in its upper half; the container holds a
        // TW_FIX32 as the standard lays it out.
        const TW_FIX32 fix{static_cast<TW_INT16>(value >> 16), static_cast<TW_UINT16>(value)};
        std::memcpy(&one->Item, &fix, sizeof fix);
    } else {
        one->Item = value;
    }
    TW_CAPABILITY capability{cap, TWON_ONEVALUE, one};
    const TW_UINT16 rc = call(DG_CONTROL, DAT_CAPABILITY, MSG_SET, &capability);
    std::free(one);
    return rc == TWRC_SUCCESS || rc == TWRC_CHECKSTATUS;
}

bool CTwain::stepDown() {
    switch (m_state) {
    case State::Transferring:
        endTransfer();
        return m_returnCode == TWRC_SUCCESS;
    case State::TransferReady:
        if (call(DG_CONTROL, DAT_PENDINGXFERS, MSG_RESET, &m_pending) != TWRC_SUCCESS)
            return false;
        setState(State::SourceEnabled);
        return true;
    case State::SourceEnabled:
        if (QWidget* owner = ownerWindow()) {
            owner->raise();
            owner->activateWindow();
        }
        if (call(DG_CONTROL, DAT_USERINTERFACE, MSG_DISABLEDS, &m_ui) != TWRC_SUCCESS)
            return false;
        setState(State::SourceOpen);
        return true;
    case State::SourceOpen:
        if (call(DG_CONTROL, DAT_IDENTITY, MSG_CLOSEDS, &m_source, false) != TWRC_SUCCESS)
            return false;
        setState(State::ManagerOpen);
        return true;
    case State::ManagerOpen:
        if (call(DG_CONTROL, DAT_PARENT, MSG_CLOSEDSM, m_ui.hParent, false) != TWRC_SUCCESS)
            return false;
        setState(State::ManagerLoaded);
        return true;
    case State::ManagerLoaded:
        TwainManagerLibrary::unload();
        setState(State::ManagerUnloaded);
        return true;
    case State::ManagerUnloaded:
        return false;
    }
    return false;
}

void CTwain::ReturnToState(State target) {
    while (m_state > target && stepDown()) {
    }
}

void CTwain::endTransfer() {
    const TW_UINT16 rc = call(DG_CONTROL, DAT_PENDINGXFERS, MSG_ENDXFER, &m_pending);
    if (rc == TWRC_SUCCESS && m_pending.Count != 0)
        setState(State::TransferReady);
    else
        setState(State::SourceEnabled);
}

void CTwain::startPump() {
    if (!m_pumpTimer) {
        m_pumpTimer = std::make_unique<QTimer>();
        m_pumpTimer->setInterval(kPumpMs);
        QObject::connect(m_pumpTimer.get(), &QTimer::timeout, [this] {
            // A transfer under way runs its own pump.
            if (m_pumpDepth == 0)
                MessagePump();
        });
    }
    if (!m_pumpTimer->isActive())
        m_pumpTimer->start();
}

void CTwain::MessagePump() {
    ++m_pumpDepth;
    while (m_state >= State::SourceEnabled) {
        QCoreApplication::processEvents(QEventLoop::AllEvents);
        if (m_state < State::SourceEnabled)
            break;
        TW_EVENT event{nullptr, MSG_NULL};
        if (call(DG_CONTROL, DAT_EVENT, MSG_PROCESSEVENT, &event) != TWRC_DSEVENT)
            break;
        if (event.TWMessage == MSG_XFERREADY) {
            setState(State::TransferReady);
            TransferImages();
        } else if (event.TWMessage == MSG_CLOSEDSREQ) {
            setState(State::SourceEnabled);
            OnCloseRequest();
        }
    }
    --m_pumpDepth;
}

void CTwain::TransferImages() {
    do {
        switch (m_mechanism) {
        case 1:
            TransferFile();
            break;
        case 2:
            TransferMemory();
            break;
        default:
            TransferNative();
            break;
        }
        if (m_state > State::TransferReady) {
            ReturnToState(State::SourceEnabled);
            break;
        }
    } while (m_state == State::TransferReady);
}

void CTwain::TransferNative() {
    TW_HANDLE handle = nullptr;
    const TW_UINT16 rc = call(DG_IMAGE, DAT_IMAGENATIVEXFER, MSG_GET, &handle);
    if (!transferStarted(rc)) {
        // A source that cannot hand over the image keeps it pending; drop the batch rather
        // than ask again for ever.
        ReturnToState(State::SourceEnabled);
        return;
    }
    setState(State::Transferring);
    if (rc != TWRC_XFERDONE && handle) {
        std::free(handle);
        handle = nullptr;
    }
    endTransfer();
    MessagePump();
    if (handle)
        OnNativeImage(handle);
}

void CTwain::OnNativeImage(TW_HANDLE handle) {
    std::free(handle);
}

void CTwain::TransferFile() {
    TW_SETUPFILEXFER setup{};
    if (call(DG_CONTROL, DAT_SETUPFILEXFER, MSG_GET, &setup) != TWRC_SUCCESS || !SetupFile(setup) ||
        call(DG_CONTROL, DAT_SETUPFILEXFER, MSG_SET, &setup) != TWRC_SUCCESS) {
        ReturnToState(State::SourceEnabled);
        return;
    }
    const TW_UINT16 rc = call(DG_IMAGE, DAT_IMAGEFILEXFER, MSG_GET, nullptr);
    if (!transferStarted(rc)) {
        OnFileDone(nullptr);
        ReturnToState(State::SourceEnabled);
        return;
    }
    setState(State::Transferring);
    if (rc == TWRC_CANCEL) {
        // Left in state 7 for TransferImages to lower.
        OnFileDone(nullptr);
        return;
    }
    endTransfer();
    MessagePump();
    OnFileDone(&setup);
}

void CTwain::TransferMemory() {
    TW_SETUPMEMXFER setup{};
    if (call(DG_CONTROL, DAT_SETUPMEMXFER, MSG_GET, &setup) != TWRC_SUCCESS ||
        call(DG_IMAGE, DAT_IMAGEINFO, MSG_GET, &m_imageInfo) != TWRC_SUCCESS ||
        !OnImageInfo(m_imageInfo)) {
        ReturnToState(State::SourceEnabled);
        return;
    }
    TW_MEMORY memory{};
    if (!SetupMemoryBuffer(memory, setup.Preferred)) {
        ReturnToState(State::SourceEnabled);
        return;
    }
    // The records are packed as the standard lays them out: read fields by value, never bind
    // a reference to one.
    const TW_INT32 length = m_imageInfo.ImageLength;
    const auto height = static_cast<std::uint32_t>(std::max<TW_INT32>(length, 0));
    std::uint32_t rows = 0;
    bool complete = false;
    for (;;) {
        TW_IMAGEMEMXFER strip{};
        strip.Memory = memory;
        const TW_UINT16 rc = call(DG_IMAGE, DAT_IMAGEMEMXFER, MSG_GET, &strip);
        if (!transferStarted(rc))
            break;
        setState(State::Transferring);
        if (rc == TWRC_CANCEL)
            break;
        const TW_UINT32 delivered = strip.Rows;
        strip.Rows = std::min<TW_UINT32>(delivered, height - rows);
        if (strip.Rows > 0 && !OnMemoryStrip(rows, strip))
            break;
        rows += strip.Rows;
        if (rc == TWRC_XFERDONE) {
            complete = rows == height;
            break;
        }
    }
    FreeMemoryBuffer(memory);
    if (m_state == State::Transferring)
        endTransfer();
    else
        ReturnToState(State::SourceEnabled);
    MessagePump();
    OnMemoryDone(complete);
}

bool CTwain::OnMemoryStrip(std::uint32_t firstRow, const TW_IMAGEMEMXFER& strip) {
    const auto* data = static_cast<const std::uint8_t*>(strip.Memory.TheMem);
    for (std::uint32_t i = 0; i < strip.Rows; ++i)
        if (!OnMemoryRow(firstRow + i, data + std::size_t(i) * strip.BytesPerRow,
                         strip.BytesPerRow))
            return false;
    return true;
}

bool CTwain::SetupMemoryBuffer(TW_MEMORY& memory, TW_UINT32 preferred) {
    memory.TheMem = std::malloc(preferred ? preferred : 1);
    if (!memory.TheMem)
        return false;
    memory.Length = preferred ? preferred : 1;
    memory.Flags = TWMF_APPOWNS | TWMF_POINTER;
    return true;
}

void CTwain::FreeMemoryBuffer(TW_MEMORY& memory) {
    std::free(memory.TheMem);
    memory = {};
}

} // namespace lanmira
