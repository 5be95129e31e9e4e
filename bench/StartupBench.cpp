// What start-up spends before the first window: the profile's RSA blocks and XML, and
// the settings reads (each one loads its file, since the store caches nothing).
#include "app/ProductProfile.h"
#include "settings/RegistryKey.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

std::vector<std::uint8_t> defaultProfile() {
    std::ifstream in(LANMIRA_BUILD_DIR "/share/lanmira/lanmira.exml", std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void BM_DecodeDefaultProfile(benchmark::State& state) {
    const auto bytes = defaultProfile();
    for (auto _ : state) {
        lanmira::ProfileValues values;
        benchmark::DoNotOptimize(
            lanmira::ProductProfile::decode(bytes, lanmira::programPublicKey(), values));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}
BENCHMARK(BM_DecodeDefaultProfile);

void BM_ReadStartupSettings(benchmark::State& state) {
    const auto home = std::filesystem::temp_directory_path() / "lanmira-bench-settings";
    const lanmira::settings::RegistryKey key("Software\\Vornalt\\Lanmira\\Lanmira", home);
    key.writeInt("options", "slide", 2000);
    key.writeString("titleext", "title", "Lanmira");
    for (auto _ : state) {
        benchmark::DoNotOptimize(key.readInt("options", "Preview", 1));
        benchmark::DoNotOptimize(key.readInt("options", "Prompt", 1));
        benchmark::DoNotOptimize(key.readInt("options", "slide", 2000));
        benchmark::DoNotOptimize(key.readString("titleext", "title", "Lanmira"));
        benchmark::DoNotOptimize(key.readString("titleext", "ext", "jpg"));
    }
    std::filesystem::remove_all(home);
}
BENCHMARK(BM_ReadStartupSettings);

} // namespace
