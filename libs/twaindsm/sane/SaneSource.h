#pragma once

#include "sane/SaneDevice.h"
#include "sane/SaneSession.h"
#include "twain/twain.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace twaindsm {

// The plug-in's entry: every SANE device is one source. Identity calls list and open
// devices; everything else goes to the open device's session.
class SaneSource {
public:
    explicit SaneSource(SourceToolkit toolkit) : m_toolkit(std::move(toolkit)) {}

    TW_UINT16 entry(TW_IDENTITY* origin, TW_UINT32 dg, TW_UINT16 dat, TW_UINT16 msg,
                    TW_MEMREF data);

    static void describe(const SaneDeviceInfo& device, TW_IDENTITY& identity);

private:
    TW_UINT16 identity(TW_UINT16 msg, TW_IDENTITY* identity);
    TW_UINT16 fail(TW_UINT16 condition);
    void aside(const std::function<void()>& work);

    SourceToolkit m_toolkit;
    std::vector<SaneDeviceInfo> m_devices;
    std::size_t m_next = 0;
    std::unique_ptr<SaneSession> m_session;
    TW_IDENTITY m_openIdentity{};
    TW_UINT16 m_condition = TWCC_SUCCESS;
};

} // namespace twaindsm
