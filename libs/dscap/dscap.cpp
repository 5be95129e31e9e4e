#include "dscap/dscap.h"

#include "dscap/core/Device.h"
#include "dscap/core/Library.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

using dscap::Library;

namespace {

char* duplicate(const std::string& s) {
    char* out = static_cast<char*>(std::malloc(s.size() + 1));
    if (out)
        std::memcpy(out, s.c_str(), s.size() + 1);
    return out;
}

std::shared_ptr<dscap::Device> find(dscap_handle h) {
    return h ? Library::instance().find(h) : nullptr;
}

} // namespace

extern "C" int dscap_init(const char* configHome, const char* company, const char* app,
                          const char* /*cameraModule*/, const char* /*secondCameraModule*/,
                          const dscap_messages* messages) {
    Library::instance().init(configHome ? configHome : "", company ? company : "", app ? app : "",
                             messages ? *messages : dscap_messages{});
    return 0;
}

extern "C" void dscap_set_hooks(const dscap_hooks* hooks) {
    Library::instance().setHooks(hooks ? *hooks : dscap_hooks{});
}

extern "C" dscap_dsvi* dscap_enum_device(int /*flags*/) {
    const auto cameras = Library::instance().enumerate();
    if (cameras.empty())
        return nullptr;
    auto* list = static_cast<dscap_dsvi*>(std::calloc(cameras.size() + 1, sizeof(dscap_dsvi)));
    if (!list)
        return nullptr;
    std::size_t n = 0;
    for (const auto& camera : cameras) {
        char* id = duplicate(camera.id);
        char* name = duplicate(camera.name);
        if (!id || !name) {
            std::free(id);
            std::free(name);
            continue;
        }
        list[n++] = {id, name, camera.value};
    }
    return list;
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

extern "C" dscap_handle dscap_device(void* frameWindow, void* viewWindow,
                                     const dscap_dsvi* camera) {
    if (!camera || !camera->id)
        return nullptr;
    return Library::instance().open(camera->id, frameWindow, viewWindow);
}

extern "C" int dscap_start(dscap_handle h, int, int, int, int, int) {
    const auto d = find(h);
    return d && d->start() ? 1 : 0;
}

extern "C" int dscap_stop(dscap_handle h) {
    return h && Library::instance().close(h) ? 1 : 0;
}

extern "C" ICameraControl* dscap_get_interface(dscap_handle h, int which) {
    const auto d = find(h);
    return d && which == 0 ? d->control() : nullptr;
}

extern "C" int dscap_fPreviewing(dscap_handle h) {
    const auto d = find(h);
    return d && d->previewing() ? 1 : 0;
}

extern "C" int dscap_fCapturing(dscap_handle h) {
    const auto d = find(h);
    return d && d->recording() ? 1 : 0;
}

extern "C" int dscap_fSource(dscap_handle h) {
    const auto d = find(h);
    return d && d->hasSource() ? 1 : 0;
}

extern "C" int dscap_can_grabber(dscap_handle h) {
    const auto d = find(h);
    return d && d->canGrab() ? 1 : 0;
}

extern "C" int dscap_video_size(dscap_handle h, int* width, int* height) {
    const auto d = find(h);
    if (!d || !width || !height)
        return 0;
    return d->videoSize(*width, *height) ? 1 : 0;
}

extern "C" int dscap_grabber(dscap_handle h, void* dib, int, int, int, int, int) {
    const auto d = find(h);
    return d && d->grab(dib) ? 1 : 0;
}

extern "C" int dscap_start_capture(dscap_handle h) {
    const auto d = find(h);
    return d && d->startRecording() ? 1 : 0;
}

extern "C" int dscap_stop_capture(dscap_handle h) {
    const auto d = find(h);
    return d && d->stopRecording() ? 1 : 0;
}

extern "C" int dscap_draw(dscap_handle h, dscap_draw_fn draw, void* context) {
    const auto d = find(h);
    return d && d->draw(draw, context) ? 1 : 0;
}

extern "C" int dscap_notify(dscap_handle h, std::uintptr_t, std::intptr_t) {
    const auto d = find(h);
    return d ? d->notify() : 0;
}

extern "C" int dscap_get_property(dscap_handle h, double* cameraFps, double* shownFps) {
    const auto d = find(h);
    if (!d || !cameraFps || !shownFps || !d->previewing())
        return 0;
    d->frameRates(*cameraFps, *shownFps);
    return 1;
}

extern "C" int dscap_set_esize(dscap_handle h, int index, int) {
    const auto d = find(h);
    return d && d->setResolution(index) ? 1 : 0;
}

extern "C" dscap_capability* dscap_get_capability(dscap_handle h, int* count) {
    if (count)
        *count = 0;
    const auto d = find(h);
    if (!d || !count)
        return nullptr;
    const auto sizes = d->resolutions();
    if (sizes.empty())
        return nullptr;
    auto* table =
        static_cast<dscap_capability*>(std::calloc(sizes.size(), sizeof(dscap_capability)));
    if (!table)
        return nullptr;
    for (std::size_t i = 0; i < sizes.size(); ++i)
        table[i] = {sizes[i].width, sizes[i].height};
    *count = static_cast<int>(sizes.size());
    return table;
}

extern "C" void dscap_free_capability(dscap_capability* table) {
    std::free(table);
}

extern "C" int dscap_last_error(dscap_handle h, char* text, std::size_t size) {
    const auto d = find(h);
    if (!d || !text || size == 0)
        return 0;
    const std::string error = d->lastError();
    const std::size_t n = std::min(error.size(), size - 1);
    std::memcpy(text, error.data(), n);
    text[n] = '\0';
    return n > 0 ? 1 : 0;
}

namespace {

constexpr const char* kControlsDialogName = "Camera Controls";

void copyText(char* out, std::size_t size, const std::string& text) {
    const std::size_t n = std::min(text.size(), size - 1);
    std::memcpy(out, text.data(), n);
    out[n] = '\0';
}

bool hasControlsDialog(dscap_handle h, int command) {
    const auto d = find(h);
    return d && d->hasSource() &&
           command == static_cast<int>(Library::instance().messages().firstDialogCommand) &&
           d->hasExtraControls();
}

} // namespace

extern "C" dscap_control* dscap_get_controls(dscap_handle h, int* count) {
    if (count)
        *count = 0;
    const auto d = find(h);
    if (!d || !count)
        return nullptr;
    const auto controls = d->extraControls();
    if (controls.empty())
        return nullptr;
    auto* list = static_cast<dscap_control*>(std::calloc(controls.size(), sizeof(dscap_control)));
    if (!list)
        return nullptr;
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const dscap::ExtraControl& c = controls[i];
        dscap_control& out = list[i];
        out.id = c.id;
        copyText(out.name, sizeof out.name, c.name);
        out.kind = static_cast<int>(c.kind);
        out.min = c.min;
        out.max = c.max;
        out.step = c.step;
        out.def = c.def;
        out.value = c.value;
        if (!c.menu.empty()) {
            out.menu =
                static_cast<dscap_menu_item*>(std::calloc(c.menu.size(), sizeof(dscap_menu_item)));
            if (out.menu) {
                out.menuCount = static_cast<int>(c.menu.size());
                for (std::size_t m = 0; m < c.menu.size(); ++m) {
                    out.menu[m].value = c.menu[m].first;
                    copyText(out.menu[m].label, sizeof out.menu[m].label, c.menu[m].second);
                }
            }
        }
    }
    *count = static_cast<int>(controls.size());
    return list;
}

extern "C" void dscap_free_controls(dscap_control* controls, int count) {
    if (!controls)
        return;
    for (int i = 0; i < count; ++i)
        std::free(controls[i].menu);
    std::free(controls);
}

extern "C" int dscap_set_control(dscap_handle h, std::uint32_t id, std::int32_t value) {
    const auto d = find(h);
    return d && d->setExtraControl(id, value) ? 1 : 0;
}

extern "C" int dscap_fDialog(dscap_handle h, int command) {
    return hasControlsDialog(h, command) ? 1 : 0;
}

extern "C" int dscap_dialog_name(dscap_handle h, int command, char* name, std::size_t size) {
    if (!name || size == 0 || !hasControlsDialog(h, command))
        return 0;
    copyText(name, size, kControlsDialogName);
    return 1;
}

extern "C" int dscap_dialog(dscap_handle h, int command) {
    if (!dscap_fDialog(h, command))
        return 0;
    const auto d = find(h);
    return d && d->showDialog(command) ? 1 : 0;
}

extern "C" int dscap_view_property(dscap_handle h, void*) {
    return dscap_dialog(h, static_cast<int>(Library::instance().messages().firstDialogCommand));
}
