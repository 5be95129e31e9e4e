#include "camera/frame/CameraSession.h"

#include "dscap/ICameraControl.h"

#include <QByteArray>

#include <cstdint>

namespace lanmira {

CameraSession::CameraSession(CameraRecord camera) : m_camera(std::move(camera)) {}

CameraSession::~CameraSession() {
    stop();
}

void CameraSession::setState(State next) {
    m_state = next;
}

bool CameraSession::start(void* frameContext, void* viewContext) {
    if (m_state != State::Idle)
        return false;
    const QByteArray id = m_camera.id.toUtf8();
    const QByteArray name = m_camera.name.toUtf8();
    dscap_dsvi record{const_cast<char*>(id.constData()), const_cast<char*>(name.constData()),
                      m_camera.value};
    m_handle = dscap_device(frameContext, viewContext, &record);
    if (!m_handle || !dscap_start(m_handle, 0, 0, 0, 0, 0)) {
        setState(State::Failed);
        return false;
    }
    m_control = dscap_get_interface(m_handle, 0);
    setState(State::Previewing);
    return true;
}

void CameraSession::markLost() {
    if (m_state == State::Previewing)
        setState(State::Lost);
}

void CameraSession::stop() {
    if (m_state == State::Stopped)
        return;
    if (m_handle)
        dscap_stop(m_handle);
    m_handle = nullptr;
    m_control = nullptr;
    setState(State::Stopped);
}

dscap_handle CameraSession::handle() const {
    return m_state == State::Stopped ? nullptr : m_handle;
}

ICameraControl* CameraSession::control() const {
    return m_state == State::Previewing ? m_control : nullptr;
}

QString CameraSession::lastError() const {
    char text[512] = {};
    if (m_handle && dscap_last_error(m_handle, text, sizeof text))
        return QString::fromUtf8(text);
    return {};
}

bool CameraSession::hasSource() const {
    return m_state == State::Previewing && dscap_fSource(m_handle);
}

bool CameraSession::previewing() const {
    return m_state == State::Previewing && dscap_fPreviewing(m_handle);
}

bool CameraSession::recording() const {
    // A recording cut short by an unplugged camera is still finished by the library.
    return (m_state == State::Previewing || m_state == State::Lost) && dscap_fCapturing(m_handle);
}

bool CameraSession::canGrab() const {
    return m_state == State::Previewing && dscap_can_grabber(m_handle);
}

bool CameraSession::videoSize(int& width, int& height) const {
    return m_state == State::Previewing && dscap_video_size(m_handle, &width, &height);
}

bool CameraSession::dialogExists(int command) const {
    return m_state == State::Previewing && dscap_fDialog(m_handle, command);
}

PackedDib CameraSession::grab() const {
    int width = 0, height = 0;
    if (!videoSize(width, height) || width <= 0 || height <= 0)
        return {};
    const std::uint64_t stride = ((static_cast<std::uint64_t>(width) * 24 + 31) / 32) * 4;
    const std::uint64_t size = stride * static_cast<std::uint64_t>(height) + 40;
    PackedDib dib = PackedDib::allocate(static_cast<std::size_t>(size));
    if (!dib || !dscap_grabber(m_handle, dib.data(), 0, 0, 0, 0, 0))
        return {};
    return dib;
}

} // namespace lanmira
