#include "camera/frame/AutoCapture.h"

#include <algorithm>

namespace lanmira {

void AutoCapture::start(bool limit, std::int32_t times) {
    // A count below zero would only stop at the first tick; clamping keeps the decrement
    // in tick() clear of overflow.
    m_remaining = limit ? std::max<std::int32_t>(times, 0) : kUnlimited;
    setState(State::Running);
}

void AutoCapture::stop() {
    setState(State::Idle);
}

AutoCapture::Tick AutoCapture::tick() {
    if (m_state != State::Running)
        return Tick::Stop;
    --m_remaining;
    if (m_remaining < 0) {
        setState(State::Idle);
        return Tick::Stop;
    }
    return Tick::Capture;
}

void AutoCapture::setState(State state) {
    m_state = state;
}

} // namespace lanmira
