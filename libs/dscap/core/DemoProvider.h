#pragma once

#include "dscap/core/CameraSource.h"
#include "dscap/demo/DemoCamera.h"

namespace dscap {

// The built-in demo camera, and its monochrome variant when asked for.
class DemoProvider final : public CameraProvider {
public:
    static constexpr const char* kColourId = "demo:colour";
    static constexpr const char* kMonochromeId = "demo:mono";

    DemoProvider(DemoOptions options, bool listMonochrome)
        : options_(options), listMonochrome_(listMonochrome) {}

    std::vector<CameraInfo> list() override;
    std::unique_ptr<CameraSource> open(const std::string& id, std::string& error) override;

private:
    DemoOptions options_;
    bool listMonochrome_;
};

} // namespace dscap
