#pragma once

#include <sys/resource.h>

#include <chrono>
#include <cstdint>
#include <fstream>
#include <string>

// Runs work with the process's address space capped at what it holds now plus an allowance,
// so an allocation beyond the allowance fails (and the test with it) instead of quietly
// taking gigabytes. Sanitizer builds reserve terabytes of shadow memory and run uncapped.
namespace memorycap {

#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kCapped = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer)
inline constexpr bool kCapped = false;
#else
inline constexpr bool kCapped = true;
#endif
#else
inline constexpr bool kCapped = true;
#endif

// The process's current address space (VmSize), in bytes.
inline std::uint64_t addressSpace() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmSize:", 0) == 0)
            return std::stoull(line.substr(7)) * 1024;
    }
    return 0;
}

struct Outcome {
    double seconds = 0;
};

template <typename Work> Outcome run(std::uint64_t allowanceMb, Work&& work) {
    rlimit old{};
    ::getrlimit(RLIMIT_AS, &old);
    if (kCapped) {
        rlimit cap = old;
        cap.rlim_cur = addressSpace() + (allowanceMb << 20);
        ::setrlimit(RLIMIT_AS, &cap);
    }
    const auto start = std::chrono::steady_clock::now();
    work();
    Outcome out;
    out.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    ::setrlimit(RLIMIT_AS, &old);
    return out;
}

} // namespace memorycap
