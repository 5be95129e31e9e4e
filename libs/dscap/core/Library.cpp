#include "dscap/core/Library.h"

#include "dscap/core/BackgroundJobs.h"
#include "dscap/core/CameraControl.h"
#include "dscap/core/DemoProvider.h"
#include "dscap/core/Device.h"
#include "dscap/v4l2/V4l2Provider.h"
#include "settings/RegistryKey.h"

namespace dscap {

namespace {

// The background jobs' key of a camera being released.
std::string cameraKey(const std::string& id) {
    return "camera:" + id;
}

} // namespace

Library& Library::instance() {
    static Library library;
    return library;
}

Library::Library() : jobs_(std::make_shared<BackgroundJobs>()) {}

Library::~Library() {
    jobs_->silence();
    // Devices being released hold the runner too, so its own end would not wait for them:
    // the settings they save and the recordings they finish must be done before the exit.
    jobs_->waitAll();
}

void Library::init(const std::string& configHome, const std::string& company,
                   const std::string& app, const dscap_messages& messages) {
    std::lock_guard lock(mutex_);
    messages_ = messages;
    const std::filesystem::path home =
        configHome.empty() ? lanmira::settings::configHome() : std::filesystem::path(configHome);
    settings_ = std::make_shared<CameraSettings>(home, company, app);
    if (!customProviders_)
        providers_.clear(); // made again with the new settings
}

void Library::waitForBackgroundWork() {
    jobs_->waitAll();
}

void Library::setHooks(const dscap_hooks& hooks) {
    std::lock_guard lock(mutex_);
    hooks_ = hooks;
}

dscap_messages Library::messages() const {
    std::lock_guard lock(mutex_);
    return messages_;
}

void Library::setProviders(std::vector<std::unique_ptr<CameraProvider>> providers) {
    std::lock_guard lock(mutex_);
    owners_.clear();
    providers_ = std::move(providers);
    customProviders_ = !providers_.empty();
}

void Library::ensureProviders() {
    if (!providers_.empty())
        return;
    providers_.push_back(v4l2::makeV4l2Provider(v4l2::systemV4l2()));
    const bool mono = settings_ && settings_->listMonochromeDemo();
    providers_.push_back(std::make_unique<DemoProvider>(DemoOptions{}, mono));
}

std::vector<CameraInfo> Library::enumerate() {
    std::lock_guard lock(mutex_);
    ensureProviders();
    owners_.clear();
    std::vector<CameraInfo> all;
    for (const auto& provider : providers_) {
        for (CameraInfo& info : provider->list()) {
            if (owners_.emplace(info.id, provider.get()).second)
                all.push_back(std::move(info));
        }
    }
    return all;
}

dscap_handle Library::open(const std::string& id, void* frameWindow, void* viewWindow) {
    std::unique_lock lock(mutex_);
    ensureProviders();
    std::vector<CameraProvider*> candidates;
    if (const auto it = owners_.find(id); it != owners_.end())
        candidates.push_back(it->second);
    for (const auto& provider : providers_)
        candidates.push_back(provider.get());
    // The same camera just closed: its stream and settings must be let go of first.
    jobs_->waitFor(cameraKey(id));
    std::string error;
    std::unique_ptr<CameraSource> source;
    CameraInfo info{id, {}, 0};
    for (CameraProvider* provider : candidates) {
        if ((source = provider->open(id, error)))
            break;
    }
    if (!source)
        return nullptr;
    DeviceContext context{messages_, hooks_, settings_, jobs_};
    const std::uintptr_t handle = nextHandle_++;
    auto device =
        std::make_shared<Device>(reinterpret_cast<dscap_handle>(handle), info, std::move(source),
                                 frameWindow, viewWindow, std::move(context));
    devices_.emplace(handle, device);
    return reinterpret_cast<dscap_handle>(handle);
}

std::shared_ptr<Device> Library::find(dscap_handle handle) {
    std::lock_guard lock(mutex_);
    const auto it = devices_.find(reinterpret_cast<std::uintptr_t>(handle));
    return it == devices_.end() ? nullptr : it->second;
}

bool Library::close(dscap_handle handle) {
    std::shared_ptr<Device> device;
    {
        std::lock_guard lock(mutex_);
        const auto it = devices_.find(reinterpret_cast<std::uintptr_t>(handle));
        if (it == devices_.end())
            return false;
        device = std::move(it->second);
        devices_.erase(it);
    }
    device->close();
    {
        std::lock_guard lock(mutex_);
        if (auto control = device->controlObject())
            retired_.push_back(std::move(control));
    }
    // The job holds the last reference, so the device also goes on that thread.
    const std::string key = cameraKey(device->id());
    jobs_->run(key, [device = std::move(device)]() mutable {
        device->release();
        device.reset();
    });
    return true;
}

} // namespace dscap
