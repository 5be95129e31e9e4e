#pragma once

#include "twain/twain.h"

#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

namespace twaindsm {

// The manager's side of a session: closed (state 2) or open (state 3), the sources found
// when it opened, and the one source the application has open. Every call is checked
// against the state; one the state does not allow fails with TWCC_SEQERROR.
class SourceManager {
public:
    enum class State { Closed = 2, Open = 3 };

    static SourceManager& instance();

    TW_UINT16 entry(TW_IDENTITY* origin, TW_IDENTITY* dest, TW_UINT32 dg, TW_UINT16 dat,
                    TW_UINT16 msg, TW_MEMREF data);

    State state() const { return m_state; }

private:
    struct Source {
        std::filesystem::path file;
        DSENTRYPROC entry = nullptr;
        TW_IDENTITY identity{};
    };

    TW_UINT16 managerCall(TW_IDENTITY* origin, TW_UINT16 dat, TW_UINT16 msg, TW_MEMREF data);
    TW_UINT16 identityCall(TW_IDENTITY* origin, TW_UINT16 msg, TW_IDENTITY* identity);
    TW_UINT16 openManager(TW_IDENTITY* origin, TW_MEMREF parent);
    TW_UINT16 closeManager();
    TW_UINT16 openSource(TW_IDENTITY* origin, TW_IDENTITY* identity);
    TW_UINT16 closeSource(TW_IDENTITY* origin, TW_IDENTITY* identity);
    TW_UINT16 userSelect(TW_IDENTITY* identity);
    void loadSources();
    int defaultIndex() const;
    TW_UINT16 fail(TW_UINT16 condition);

    // Guards every field below. Recursive: the chooser dialog runs an event loop, in which
    // the application may call the manager again.
    std::recursive_mutex m_mutex;
    State m_state = State::Closed;
    TW_UINT16 m_condition = TWCC_SUCCESS;
    TW_UINT32 m_appId = 0;
    TW_MEMREF m_parent = nullptr;
    std::vector<Source> m_sources;
    std::vector<void*> m_libraries;
    std::size_t m_next = 0; // GETNEXT position
    int m_open = -1;        // index of the open source
};

} // namespace twaindsm
