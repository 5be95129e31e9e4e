#pragma once

#include "dscap/core/CameraSettings.h"
#include "dscap/core/CameraSource.h"
#include "dscap/dscap.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace dscap {

class CameraControl;
class Device;
class BackgroundJobs;

// The library's process-wide state: what dscap_init gave, the camera families, and the
// open devices by handle. Handles are never reused, so a stale one finds nothing.
class Library {
public:
    static Library& instance();
    // At process exit: recordings still being finished are completed, without messages.
    ~Library();

    void init(const std::string& configHome, const std::string& company, const std::string& app,
              const dscap_messages& messages);
    void setHooks(const dscap_hooks& hooks);

    std::vector<CameraInfo> enumerate();
    dscap_handle open(const std::string& id, void* frameWindow, void* viewWindow);
    std::shared_ptr<Device> find(dscap_handle handle);
    // Closes and forgets the device at once and releases it in the background; its control
    // interface stays valid (and fails).
    bool close(dscap_handle handle);
    dscap_messages messages() const;

    // Returns once every camera closed is released (settings written) and every recording
    // ended is complete. For tests and benchmarks that remove the folders involved.
    void waitForBackgroundWork();

    // Tests put fake camera families in place of the system's; an empty list restores them.
    void setProviders(std::vector<std::unique_ptr<CameraProvider>> providers);

private:
    Library();
    void ensureProviders(); // under mutex_

    // Declared first so that it goes last, after every device has handed over its work.
    const std::shared_ptr<BackgroundJobs> jobs_;
    mutable std::mutex mutex_;
    dscap_messages messages_{};
    dscap_hooks hooks_{};
    std::shared_ptr<CameraSettings> settings_;
    std::vector<std::unique_ptr<CameraProvider>> providers_;
    bool customProviders_ = false;
    std::map<std::string, CameraProvider*> owners_; // camera id → its family, from enumerate
    std::map<std::uintptr_t, std::shared_ptr<Device>> devices_;
    std::uintptr_t nextHandle_ = 1;
    // Interfaces of closed devices, kept so that a stale pointer still answers (with failure).
    std::vector<std::shared_ptr<CameraControl>> retired_;
};

} // namespace dscap
