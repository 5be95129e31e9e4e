#include "dscap/core/DemoProvider.h"

namespace dscap {

std::vector<CameraInfo> DemoProvider::list() {
    std::vector<CameraInfo> cameras{{kColourId, "Demo Microscope Camera", 0}};
    if (listMonochrome_)
        cameras.push_back({kMonochromeId, "Demo Microscope Camera (Monochrome)", 0});
    return cameras;
}

std::unique_ptr<CameraSource> DemoProvider::open(const std::string& id, std::string& error) {
    DemoOptions options = options_;
    if (id == kColourId) {
        options.colour = true;
    } else if (id == kMonochromeId) {
        options.colour = false;
    } else {
        error = "There is no such camera.";
        return nullptr;
    }
    return makeDemoCamera(options);
}

} // namespace dscap
