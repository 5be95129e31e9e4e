#include "browser/FormatLookup.h"

#include "browser/FileNames.h"
#include "imagelib/imagelib.h"

#include <sys/stat.h>

#include <QFile>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

namespace lanmira {

namespace {

struct FormatRow {
    QString ext;
    std::uint32_t format;
};

// The library's table never changes, so it is converted once for the life of the process.
const std::vector<FormatRow>& formatTable() {
    static const std::vector<FormatRow> rows = [] {
        std::vector<FormatRow> out;
        for (const ImageLibExtFmt* row = ImageLib_ExtFmt(); row && row->ext; ++row)
            out.push_back({QString::fromUtf8(row->ext), row->format});
        return out;
    }();
    return rows;
}

int rowOfExtension(QStringView ext) {
    const auto& rows = formatTable();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (ext.compare(rows[i].ext, Qt::CaseInsensitive) == 0)
            return static_cast<int>(i);
    }
    return -1;
}

// ---- shortcut resolution ----

constexpr auto kResolveTimeout = std::chrono::milliseconds(500);
// Beyond this many link chains the kernel also gives up with ELOOP.
constexpr int kMaxHops = 40;
// A thread stuck on a dead mount stays stuck until the mount answers. Once this many are
// stuck, further shortcuts are given up at once instead of each costing another 500 ms.
constexpr int kMaxStuckResolvers = 4;
std::atomic<int> g_stuckResolvers{0};

std::string readLink(const std::string& link, off_t sizeHint) {
    std::string buffer(static_cast<std::size_t>(sizeHint > 0 ? sizeHint : 256) + 1, '\0');
    for (;;) {
        const ssize_t n = ::readlink(link.c_str(), buffer.data(), buffer.size());
        if (n < 0)
            return {};
        if (static_cast<std::size_t>(n) < buffer.size()) {
            buffer.resize(static_cast<std::size_t>(n));
            return buffer;
        }
        // The link changed under us and grew; try again with more room.
        buffer.resize(buffer.size() * 2);
    }
}

// Follows the chain of links by hand so the result keeps the folder names the user sees;
// realpath would also replace linked folders above the target.
std::string resolveBlocking(const std::string& link) {
    std::string path = link;
    for (int hops = 0;; ++hops) {
        struct stat st {};
        if (::lstat(path.c_str(), &st) != 0)
            return {};
        if (!S_ISLNK(st.st_mode)) {
            if (!S_ISREG(st.st_mode))
                return {};
            break;
        }
        if (hops >= kMaxHops)
            return {};
        std::string target = readLink(path, st.st_size);
        if (target.empty())
            return {};
        std::filesystem::path next(target);
        if (next.is_relative())
            next = std::filesystem::path(path).parent_path() / next;
        path = next.lexically_normal().string();
    }
    // A lexical ".." is wrong when the folder before it is itself a link; the kernel's
    // answer decides.
    struct stat viaLink {};
    struct stat viaPath {};
    if (::stat(link.c_str(), &viaLink) != 0 || ::stat(path.c_str(), &viaPath) != 0)
        return {};
    if (viaLink.st_dev == viaPath.st_dev && viaLink.st_ino == viaPath.st_ino)
        return path;
    std::unique_ptr<char, decltype(&std::free)> real(::realpath(link.c_str(), nullptr), &std::free);
    return real ? std::string(real.get()) : std::string();
}

struct Resolution {
    std::mutex mutex; // guards everything below
    std::condition_variable done;
    bool finished = false;
    bool abandoned = false;
    std::string result;
};

} // namespace

std::uint32_t FormatLookup::formatOfExtension(const QString& ext) {
    return formatOfExtension(QStringView(ext));
}

std::uint32_t FormatLookup::formatOfExtension(QStringView ext) {
    const int row = rowOfExtension(ext);
    return row < 0 ? 0 : formatTable()[static_cast<std::size_t>(row)].format;
}

QStringView FormatLookup::extensionOf(QStringView path) {
    const qsizetype slash = path.lastIndexOf(u'/');
    const qsizetype dot = path.lastIndexOf(u'.');
    if (dot < 0 || dot < slash)
        return {};
    return path.mid(dot + 1);
}

std::int32_t FormatLookup::formatOfFile(const QString& path, QString* target) {
    struct stat st {};
    const bool isLink =
        ::lstat(filenames::encode(path).constData(), &st) == 0 && S_ISLNK(st.st_mode);
    return formatOfEntry(path, isLink, target);
}

std::int32_t FormatLookup::formatOfEntry(const QString& path, bool isSymlink, QString* target) {
    if (!isSymlink) {
        const QStringView ext = extensionOf(path);
        return ext.isNull() ? 0 : static_cast<std::int32_t>(formatOfExtension(ext));
    }
    const QString resolved = ShortcutResolver::resolve(path);
    if (resolved.isEmpty())
        return 0;
    const QStringView ext = extensionOf(resolved);
    const auto format = ext.isNull() ? 0 : static_cast<std::int32_t>(formatOfExtension(ext));
    if (format == 0)
        return 0;
    if (target)
        *target = resolved;
    return -format;
}

int FormatLookup::typeRank(const QString& pathOrTarget) {
    const QStringView ext = extensionOf(pathOrTarget);
    return ext.isNull() ? -1 : rowOfExtension(ext);
}

QString ShortcutResolver::resolve(const QString& linkPath) {
    if (linkPath.isEmpty() ||
        g_stuckResolvers.load(std::memory_order_relaxed) >= kMaxStuckResolvers)
        return {};
    const QByteArray encoded = filenames::encode(linkPath);
    auto state = std::make_shared<Resolution>();
    try {
        std::thread([state, link = encoded.toStdString()] {
            std::string result = resolveBlocking(link);
            const std::lock_guard lock(state->mutex);
            state->result = std::move(result);
            state->finished = true;
            if (state->abandoned)
                g_stuckResolvers.fetch_sub(1, std::memory_order_relaxed);
            state->done.notify_all();
        }).detach();
    } catch (const std::system_error&) {
        return {};
    }

    std::unique_lock lock(state->mutex);
    if (!state->done.wait_for(lock, kResolveTimeout, [&] { return state->finished; })) {
        state->abandoned = true;
        g_stuckResolvers.fetch_add(1, std::memory_order_relaxed);
        return {};
    }
    if (state->result.empty())
        return {};
    const QByteArray bytes = QByteArray::fromStdString(state->result);
    return filenames::decode(bytes);
}

} // namespace lanmira
