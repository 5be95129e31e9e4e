#include "dsm/SourceManager.h"

#include "dsm/DefaultSource.h"
#include "dsm/SourceLocator.h"

#include <cstring>
#include <dlfcn.h>
#include <string>

namespace twaindsm {

namespace {

using ChooseFn = int (*)(void* parent, const TW_IDENTITY* sources, int count, int current);

// The chooser dialog lives in its own plug-in beside the manager, so the manager itself
// needs no toolkit; without it the default source is taken.
ChooseFn chooser() {
    static ChooseFn fn = []() -> ChooseFn {
        Dl_info info{};
        if (!dladdr(reinterpret_cast<void*>(&DSM_Entry), &info) || !info.dli_fname)
            return nullptr;
        const std::string path =
            std::filesystem::path(info.dli_fname).parent_path() / "libtwaindsm-chooser.so";
        void* lib = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
        return lib ? reinterpret_cast<ChooseFn>(dlsym(lib, "twaindsm_choose")) : nullptr;
    }();
    return fn;
}

bool sameName(const TW_IDENTITY& a, const TW_IDENTITY& b) {
    return std::strncmp(a.ProductName, b.ProductName, sizeof a.ProductName) == 0;
}

} // namespace

SourceManager& SourceManager::instance() {
    static SourceManager manager;
    return manager;
}

TW_UINT16 SourceManager::fail(TW_UINT16 condition) {
    m_condition = condition;
    return TWRC_FAILURE;
}

TW_UINT16 SourceManager::entry(TW_IDENTITY* origin, TW_IDENTITY* dest, TW_UINT32 dg, TW_UINT16 dat,
                               TW_UINT16 msg, TW_MEMREF data) {
    if (!origin)
        return TWRC_FAILURE;
    if (!dest) {
        std::lock_guard lock(m_mutex);
        if (dg != DG_CONTROL)
            return fail(TWCC_BADPROTOCOL);
        return managerCall(origin, dat, msg, data);
    }
    DSENTRYPROC target = nullptr;
    {
        std::lock_guard lock(m_mutex);
        if (m_state != State::Open || m_open < 0)
            return fail(TWCC_SEQERROR);
        if (dest->Id != m_sources[static_cast<std::size_t>(m_open)].identity.Id ||
            origin->Id != m_appId)
            return fail(TWCC_BADDEST);
        target = m_sources[static_cast<std::size_t>(m_open)].entry;
    }
    // Outside the lock: a source's triplet may run a dialog or wait on its scan thread.
    return target(origin, dg, dat, msg, data);
}

TW_UINT16 SourceManager::managerCall(TW_IDENTITY* origin, TW_UINT16 dat, TW_UINT16 msg,
                                     TW_MEMREF data) {
    switch (dat) {
    case DAT_PARENT:
        if (msg == MSG_OPENDSM)
            return openManager(origin, data);
        if (msg == MSG_CLOSEDSM)
            return closeManager();
        return fail(TWCC_BADPROTOCOL);
    case DAT_IDENTITY:
        if (m_state != State::Open)
            return fail(TWCC_SEQERROR);
        if (!data)
            return fail(TWCC_BADVALUE);
        return identityCall(origin, msg, static_cast<TW_IDENTITY*>(data));
    case DAT_STATUS:
        if (msg != MSG_GET || !data)
            return fail(TWCC_BADPROTOCOL);
        static_cast<TW_STATUS*>(data)->ConditionCode = m_condition;
        static_cast<TW_STATUS*>(data)->Reserved = 0;
        m_condition = TWCC_SUCCESS;
        return TWRC_SUCCESS;
    default:
        return fail(TWCC_BADPROTOCOL);
    }
}

TW_UINT16 SourceManager::identityCall(TW_IDENTITY* origin, TW_UINT16 msg, TW_IDENTITY* identity) {
    switch (msg) {
    case MSG_GETFIRST:
        m_next = 0;
        [[fallthrough]];
    case MSG_GETNEXT:
        if (m_next >= m_sources.size())
            return TWRC_ENDOFLIST;
        *identity = m_sources[m_next++].identity;
        return TWRC_SUCCESS;
    case MSG_GETDEFAULT: {
        const int index = defaultIndex();
        if (index < 0)
            return fail(TWCC_NODS);
        *identity = m_sources[static_cast<std::size_t>(index)].identity;
        return TWRC_SUCCESS;
    }
    case MSG_USERSELECT:
        return userSelect(identity);
    case MSG_OPENDS:
        return openSource(origin, identity);
    case MSG_CLOSEDS:
        return closeSource(origin, identity);
    default:
        return fail(TWCC_BADPROTOCOL);
    }
}

TW_UINT16 SourceManager::openManager(TW_IDENTITY* origin, TW_MEMREF parent) {
    if (m_state != State::Closed)
        return fail(TWCC_SEQERROR);
    m_appId = 1;
    origin->Id = m_appId;
    m_parent = parent;
    loadSources();
    m_state = State::Open;
    m_condition = TWCC_SUCCESS;
    return TWRC_SUCCESS;
}

TW_UINT16 SourceManager::closeManager() {
    if (m_state != State::Open || m_open >= 0)
        return fail(TWCC_SEQERROR);
    m_sources.clear();
    // Sources are loaded without unloading on close: a plug-in that made widgets or threads
    // must not have its code pulled from under them.
    for (void* lib : m_libraries)
        dlclose(lib);
    m_libraries.clear();
    m_state = State::Closed;
    m_parent = nullptr;
    return TWRC_SUCCESS;
}

void SourceManager::loadSources() {
    TW_UINT32 nextId = 2;
    TW_IDENTITY self{};
    self.Id = m_appId;
    for (const auto& file : SourceLocator::sourceFiles()) {
        void* lib = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
        if (!lib)
            continue;
        auto entry = reinterpret_cast<DSENTRYPROC>(dlsym(lib, "DS_Entry"));
        if (!entry) {
            dlclose(lib);
            continue;
        }
        m_libraries.push_back(lib);
        // A plug-in may stand for several sources (one per scanner it reaches); one that
        // knows only MSG_GET is a single source.
        TW_IDENTITY id{};
        TW_UINT16 rc = entry(&self, DG_CONTROL, DAT_IDENTITY, MSG_GETFIRST, &id);
        if (rc != TWRC_SUCCESS && rc != TWRC_ENDOFLIST) {
            id = {};
            if (entry(&self, DG_CONTROL, DAT_IDENTITY, MSG_GET, &id) == TWRC_SUCCESS) {
                id.Id = nextId++;
                m_sources.push_back({file, entry, id});
            }
            continue;
        }
        while (rc == TWRC_SUCCESS) {
            id.Id = nextId++;
            m_sources.push_back({file, entry, id});
            id = {};
            rc = entry(&self, DG_CONTROL, DAT_IDENTITY, MSG_GETNEXT, &id);
        }
    }
}

int SourceManager::defaultIndex() const {
    if (m_sources.empty())
        return -1;
    const std::string remembered = DefaultSource::read();
    for (std::size_t i = 0; i < m_sources.size(); ++i)
        if (remembered == m_sources[i].identity.ProductName)
            return static_cast<int>(i);
    return 0;
}

TW_UINT16 SourceManager::userSelect(TW_IDENTITY* identity) {
    if (m_sources.empty())
        return fail(TWCC_NODS);
    int chosen = defaultIndex();
    if (ChooseFn choose = chooser()) {
        std::vector<TW_IDENTITY> list;
        for (const Source& s : m_sources)
            list.push_back(s.identity);
        chosen = choose(m_parent, list.data(), static_cast<int>(list.size()), chosen);
        if (chosen < 0 || chosen >= static_cast<int>(list.size()))
            return TWRC_CANCEL;
    }
    const Source& s = m_sources[static_cast<std::size_t>(chosen)];
    *identity = s.identity;
    DefaultSource::write(s.identity.ProductName);
    return TWRC_SUCCESS;
}

TW_UINT16 SourceManager::openSource(TW_IDENTITY* origin, TW_IDENTITY* identity) {
    if (m_open >= 0)
        return fail(TWCC_MAXCONNECTIONS);
    int index = -1;
    // A cleared identity asks for the default source.
    if (identity->ProductName[0] == '\0' && identity->Id == 0) {
        index = defaultIndex();
    } else {
        for (std::size_t i = 0; i < m_sources.size(); ++i)
            if ((identity->Id != 0 && identity->Id == m_sources[i].identity.Id) ||
                (identity->Id == 0 && sameName(*identity, m_sources[i].identity)))
                index = static_cast<int>(i);
    }
    if (index < 0)
        return fail(TWCC_NODS);
    Source& s = m_sources[static_cast<std::size_t>(index)];
    TW_IDENTITY chosen = s.identity;
    const TW_UINT16 rc = s.entry(origin, DG_CONTROL, DAT_IDENTITY, MSG_OPENDS, &chosen);
    if (rc != TWRC_SUCCESS) {
        TW_STATUS status{};
        s.entry(origin, DG_CONTROL, DAT_STATUS, MSG_GET, &status);
        return fail(status.ConditionCode ? status.ConditionCode : TWCC_BUMMER);
    }
    *identity = s.identity;
    m_open = index;
    return TWRC_SUCCESS;
}

TW_UINT16 SourceManager::closeSource(TW_IDENTITY* origin, TW_IDENTITY* identity) {
    if (m_open < 0)
        return fail(TWCC_SEQERROR);
    Source& s = m_sources[static_cast<std::size_t>(m_open)];
    if (identity->Id != s.identity.Id)
        return fail(TWCC_NODS);
    const TW_UINT16 rc = s.entry(origin, DG_CONTROL, DAT_IDENTITY, MSG_CLOSEDS, identity);
    if (rc != TWRC_SUCCESS) {
        TW_STATUS status{};
        s.entry(origin, DG_CONTROL, DAT_STATUS, MSG_GET, &status);
        return fail(status.ConditionCode ? status.ConditionCode : TWCC_BUMMER);
    }
    m_open = -1;
    return TWRC_SUCCESS;
}

} // namespace twaindsm

extern "C" __attribute__((visibility("default"))) TW_UINT16
DSM_Entry(TW_IDENTITY* pOrigin, TW_IDENTITY* pDest, TW_UINT32 DG, TW_UINT16 DAT, TW_UINT16 MSG,
          TW_MEMREF pData) {
    return twaindsm::SourceManager::instance().entry(pOrigin, pDest, DG, DAT, MSG, pData);
}
