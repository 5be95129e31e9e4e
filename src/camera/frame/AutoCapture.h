#pragma once

#include <cstdint>

namespace lanmira {

// Capture on a timer: how many ticks are left and whether it runs.
class AutoCapture {
public:
    static constexpr std::int32_t kUnlimited = 0x7FFFFFFF;

    enum class State { Idle, Running };
    enum class Tick { Capture, Stop };

    // limit false: runs until stopped. Starting again restarts the count.
    void start(bool limit, std::int32_t times);
    void stop();
    // One timer tick: Capture while captures are left, Stop (and idle) once the count has
    // run out; so a limit of 100 captures 100 times and stops at the 101st tick. Stop
    // when idle.
    Tick tick();

    State state() const { return m_state; }
    bool running() const { return m_state == State::Running; }
    std::int32_t remaining() const { return m_remaining; }

private:
    void setState(State state);

    State m_state = State::Idle;
    std::int32_t m_remaining = 0;
};

} // namespace lanmira
