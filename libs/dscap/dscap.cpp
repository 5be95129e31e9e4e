#include "dscap/dscap.h"

#include <cstdlib>
#include <mutex>
#include <string>

namespace {

struct LibraryState {
    std::mutex mutex; // guards every field
    bool initialised = false;
    std::string configHome;
    std::string company;
    std::string app;
    std::string cameraModule;
    std::string secondCameraModule;
    dscap_messages messages{};
};

LibraryState& state() {
    static LibraryState s;
    return s;
}

} // namespace

extern "C" int dscap_init(const char* configHome, const char* company, const char* app,
                          const char* cameraModule, const char* secondCameraModule,
                          const dscap_messages* messages) {
    auto& s = state();
    std::lock_guard lock(s.mutex);
    s.configHome = configHome ? configHome : "";
    s.company = company ? company : "";
    s.app = app ? app : "";
    s.cameraModule = cameraModule ? cameraModule : "";
    s.secondCameraModule = secondCameraModule ? secondCameraModule : "";
    s.messages = messages ? *messages : dscap_messages{};
    s.initialised = true;
    return 0;
}

extern "C" dscap_dsvi* dscap_enum_device(int /*flags*/) {
    // No camera backend is linked in yet: the list is empty.
    return nullptr;
}

extern "C" void dscap_free_dsvi(dscap_dsvi* list) {
    if (!list)
        return;
    for (dscap_dsvi* r = list; r->id; ++r) {
        std::free(r->id);
        std::free(r->name);
    }
    std::free(list);
}
