#include "sane/SaneSource.h"

#include <cstdio>
#include <cstring>

namespace twaindsm {

namespace {

void copyName(char* out, std::size_t size, const std::string& text) {
    std::snprintf(out, size, "%s", text.c_str());
}

} // namespace

void SaneSource::describe(const SaneDeviceInfo& device, TW_IDENTITY& identity) {
    std::memset(&identity, 0, sizeof identity);
    identity.Version.MajorNum = 1;
    identity.Version.MinorNum = 0;
    identity.Version.Language = TWLG_USA;
    identity.Version.Country = TWCY_USA;
    copyName(identity.Version.Info, sizeof identity.Version.Info, "SANE");
    identity.ProtocolMajor = 1;
    identity.ProtocolMinor = 8;
    identity.SupportedGroups = DG_CONTROL | DG_IMAGE;
    copyName(identity.Manufacturer, sizeof identity.Manufacturer, device.vendor);
    copyName(identity.ProductFamily, sizeof identity.ProductFamily, device.model);
    copyName(identity.ProductName, sizeof identity.ProductName, device.name);
}

void SaneSource::aside(const std::function<void()>& work) {
    if (m_toolkit.runAside)
        m_toolkit.runAside(work);
    else
        work();
}

TW_UINT16 SaneSource::fail(TW_UINT16 condition) {
    m_condition = condition;
    return TWRC_FAILURE;
}

TW_UINT16 SaneSource::entry(TW_IDENTITY*, TW_UINT32 dg, TW_UINT16 dat, TW_UINT16 msg,
                            TW_MEMREF data) {
    if (dg == DG_CONTROL && dat == DAT_STATUS) {
        if (msg != MSG_GET || !data)
            return fail(TWCC_BADPROTOCOL);
        static_cast<TW_STATUS*>(data)->ConditionCode = m_condition;
        static_cast<TW_STATUS*>(data)->Reserved = 0;
        m_condition = TWCC_SUCCESS;
        return TWRC_SUCCESS;
    }
    if (dg == DG_CONTROL && dat == DAT_IDENTITY) {
        if (!data)
            return fail(TWCC_BADVALUE);
        return identity(msg, static_cast<TW_IDENTITY*>(data));
    }
    if (!m_session)
        return fail(TWCC_SEQERROR);
    TW_UINT16 condition = TWCC_SUCCESS;
    const TW_UINT16 rc = m_session->entry(dg, dat, msg, data, condition);
    if (rc == TWRC_FAILURE)
        m_condition = condition;
    return rc;
}

TW_UINT16 SaneSource::identity(TW_UINT16 msg, TW_IDENTITY* id) {
    switch (msg) {
    case MSG_GETFIRST:
        aside([this] { m_devices = SaneDevice::list(); });
        m_next = 0;
        [[fallthrough]];
    case MSG_GETNEXT:
        if (m_next >= m_devices.size())
            return TWRC_ENDOFLIST;
        describe(m_devices[m_next++], *id);
        return TWRC_SUCCESS;
    case MSG_GET:
        if (!m_session)
            return fail(TWCC_SEQERROR);
        *id = m_openIdentity;
        return TWRC_SUCCESS;
    case MSG_OPENDS: {
        if (m_session)
            return fail(TWCC_MAXCONNECTIONS);
        if (m_devices.empty())
            aside([this] { m_devices = SaneDevice::list(); });
        for (const SaneDeviceInfo& device : m_devices) {
            TW_IDENTITY candidate;
            describe(device, candidate);
            if (std::strncmp(candidate.ProductName, id->ProductName, sizeof id->ProductName))
                continue;
            auto session = std::make_unique<SaneSession>(m_toolkit);
            TW_UINT16 condition = TWCC_SUCCESS;
            bool opened = false;
            aside([&] { opened = session->open(device.name, condition); });
            if (!opened)
                return fail(condition);
            m_session = std::move(session);
            m_openIdentity = *id;
            return TWRC_SUCCESS;
        }
        return fail(TWCC_NODS);
    }
    case MSG_CLOSEDS:
        if (!m_session || m_session->state() != SaneSession::State::Open)
            return fail(TWCC_SEQERROR);
        m_session.reset();
        return TWRC_SUCCESS;
    default:
        return fail(TWCC_BADPROTOCOL);
    }
}

} // namespace twaindsm
