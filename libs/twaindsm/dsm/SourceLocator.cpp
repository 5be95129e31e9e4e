#include "dsm/SourceLocator.h"

#include <algorithm>
#include <cstdlib>
#include <dlfcn.h>
#include <set>
#include <string_view>
#include <system_error>

namespace twaindsm {

namespace fs = std::filesystem;

namespace {

fs::path managerFolder() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&SourceLocator::folders), &info) && info.dli_fname)
        return fs::path(info.dli_fname).parent_path();
    return {};
}

} // namespace

std::vector<fs::path> SourceLocator::folders() {
    std::vector<fs::path> out;
    std::error_code ec;
    const fs::path exe = fs::read_symlink("/proc/self/exe", ec);
    if (!ec)
        out.push_back(exe.parent_path());
    if (const char* extra = std::getenv("LANMIRA_TWAIN_SOURCES")) {
        std::string_view rest(extra);
        while (!rest.empty()) {
            const auto colon = rest.find(':');
            const std::string_view part = rest.substr(0, colon);
            if (!part.empty())
                out.emplace_back(part);
            if (colon == std::string_view::npos)
                break;
            rest.remove_prefix(colon + 1);
        }
    }
    if (const fs::path own = managerFolder(); !own.empty())
        out.push_back(own / "twain");
    for (const char* f :
         {"/usr/local/lib/twain", "/usr/lib/x86_64-linux-gnu/twain", "/usr/lib/twain"})
        out.emplace_back(f);
    return out;
}

std::vector<fs::path> SourceLocator::sourceFiles() {
    std::vector<fs::path> out;
    std::set<fs::path> seenNames;
    for (const fs::path& folder : folders()) {
        std::error_code ec;
        std::vector<fs::path> here;
        for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
            const fs::path& p = it->path();
            if (p.extension() == ".ds" && it->is_regular_file(ec))
                here.push_back(p);
        }
        std::sort(here.begin(), here.end());
        for (fs::path& p : here)
            if (seenNames.insert(p.filename()).second)
                out.push_back(std::move(p));
    }
    return out;
}

} // namespace twaindsm
