#pragma once

#include "twain/twain.h"

#include <cstdint>
#include <memory>

class QTimer;
class QWidget;

namespace lanmira {

// A TWAIN session with one source, through the data source manager, in the standard's
// states 1 (manager not loaded) to 7 (transferring). The browser frame derives from it: it
// owns the session's window, negotiates what it wants and receives each image.
//
// Acquire opens what is needed up to state 5 and leaves the source enabled; images arrive
// while the message pump runs (on a short timer while the state is 5 or more, and after each
// transfer), so the window's event loop never waits for the scanner.
class CTwain {
public:
    enum class State : std::int32_t {
        ManagerUnloaded = 1,
        ManagerLoaded = 2,
        ManagerOpen = 3,
        SourceOpen = 4,
        SourceEnabled = 5,
        TransferReady = 6,
        Transferring = 7,
    };
    enum ErrorCode { ErrorManager = 0, ErrorSource = 1, ErrorEnable = 2, ErrorCapability = 3 };

    explicit CTwain(QWidget* owner = nullptr);
    virtual ~CTwain();
    CTwain(const CTwain&) = delete;
    CTwain& operator=(const CTwain&) = delete;

    bool Acquire();
    // False when the user cancelled or there was nothing to choose; selectionFailed() tells
    // which.
    bool SelectSource();
    bool selectionFailed() const { return m_selectReturn == TWRC_FAILURE; }
    bool SetCapability(TW_UINT16 cap, TW_UINT16 itemType, TW_UINT32 value);
    TW_UINT16 ConditionCode();
    void ReturnToState(State target);
    // Hands every waiting event to the program and asks the source for news, until it has
    // none or the state falls below 5.
    void MessagePump();

    State state() const { return m_state; }
    State returnState() const { return m_returnState; }
    TW_UINT16 lastReturnCode() const { return m_returnCode; }
    TW_UINT16 lastCondition() const { return m_lastCondition; }
    const TW_IDENTITY& sourceIdentity() const { return m_source; }
    const TW_PENDINGXFERS& pending() const { return m_pending; }

    void setShowUi(bool show) { m_ui.ShowUI = show ? 1 : 0; }
    // 0 native, 1 file, 2 memory.
    void setTransferMechanism(std::uint32_t mechanism) { m_mechanism = mechanism; }
    std::uint32_t transferMechanism() const { return m_mechanism; }
    void setOwner(QWidget* owner) { m_owner = owner; }

protected:
    virtual bool NegotiateCapabilities() { return true; }
    virtual void TransferImages();
    virtual void TransferFile();
    virtual void TransferMemory();
    virtual void TransferNative();
    virtual void OnCloseRequest() {}
    // The handle is a malloc block holding a packed bitmap; the base frees it.
    virtual void OnNativeImage(TW_HANDLE handle);
    virtual bool OnImageInfo(const TW_IMAGEINFO&) { return true; }
    virtual bool OnMemoryStrip(std::uint32_t firstRow, const TW_IMAGEMEMXFER& strip);
    virtual bool OnMemoryRow(std::uint32_t, const std::uint8_t*, std::uint32_t) { return true; }
    virtual void OnMemoryDone(bool) {}
    virtual bool SetupMemoryBuffer(TW_MEMORY& memory, TW_UINT32 preferred);
    virtual void FreeMemoryBuffer(TW_MEMORY& memory);
    virtual bool SetupFile(TW_SETUPFILEXFER&) { return true; }
    virtual void OnFileDone(const TW_SETUPFILEXFER*) {}
    virtual void OnStateChange(State) {}
    virtual void OnError(int) {}

    const TW_IMAGEINFO& imageInfo() const { return m_imageInfo; }

private:
    TW_UINT16 call(TW_UINT32 dg, TW_UINT16 dat, TW_UINT16 msg, TW_MEMREF data,
                   bool toSource = true);
    void setState(State s);
    bool loadManager();
    bool openManager();
    bool openSource();
    bool enableSource();
    // One step down by the transitions; false when the step's call failed.
    bool stepDown();
    void endTransfer();
    void startPump();
    QWidget* ownerWindow() const;

    State m_state = State::ManagerUnloaded;
    State m_returnState = State::ManagerUnloaded;
    TW_IDENTITY m_app{};
    TW_IDENTITY m_source{};
    TW_UINT16 m_returnCode = TWRC_SUCCESS;
    TW_UINT16 m_lastCondition = TWCC_SUCCESS;
    TW_USERINTERFACE m_ui{1, 0, nullptr};
    TW_PENDINGXFERS m_pending{};
    TW_IMAGEINFO m_imageInfo{};
    std::uint32_t m_mechanism = 0;
    QWidget* m_owner;
    std::unique_ptr<QTimer> m_pumpTimer;
    int m_pumpDepth = 0;
    TW_UINT16 m_selectReturn = TWRC_SUCCESS;
};

} // namespace lanmira
