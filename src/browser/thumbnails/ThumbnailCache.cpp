#include "browser/thumbnails/ThumbnailCache.h"

#include "browser/BrowserList.h"
#include "browser/FileNames.h"
#include "browser/FormatLookup.h"
#include "browser/thumbnails/CacheEligibility.h"
#include "imagelib/core/WriteAll.h"
#include "platform/XdgPaths.h"
#include "settings/UniqueFd.h"

#include <openssl/evp.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

namespace lanmira {
namespace {

constexpr std::size_t kPathUnits = 260;
constexpr std::size_t kPathBytes = kPathUnits * 2;
constexpr std::size_t kHeaderBytes = 40;
// Far above two thumbnails; anything larger on disk is not ours.
constexpr std::uint64_t kMaxFileBytes = std::uint64_t{64} << 20;
// Thumbnail sides beyond this are refused before any size arithmetic.
constexpr std::int32_t kMaxSide = 1 << 16;
// A temporary file this old belongs to a writer that died.
constexpr std::time_t kStaleTempSeconds = 60;

std::uint32_t le32(const std::uint8_t* p) {
    return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
           (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}

void put16(std::uint8_t* p, std::uint32_t v) {
    p[0] = static_cast<std::uint8_t>(v);
    p[1] = static_cast<std::uint8_t>(v >> 8);
}

void put32(std::uint8_t* p, std::uint32_t v) {
    put16(p, v & 0xFFFF);
    put16(p + 2, v >> 16);
}

FileTime timeOf(const struct stat& st) {
    return static_cast<FileTime>(st.st_mtim.tv_sec) * 1'000'000'000 + st.st_mtim.tv_nsec;
}

QString pathField(const std::uint8_t* p) {
    QString s;
    for (std::size_t i = 0; i < kPathUnits; ++i) {
        const char16_t unit = static_cast<char16_t>(p[2 * i] | (p[2 * i + 1] << 8));
        if (unit == 0)
            break;
        s.append(QChar(unit));
    }
    return s;
}

bool readAll(int fd, std::uint8_t* out, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t n = ::read(fd, out + done, size - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        done += static_cast<std::size_t>(n);
    }
    return true;
}

// One thumbnail's header and rows at `at`; advances `at` past them.
bool decodeThumbnail(const std::uint8_t* data, std::size_t size, std::size_t& at, Thumbnail& out) {
    if (size - at < kHeaderBytes)
        return false;
    const auto w = static_cast<std::int32_t>(le32(data + at + 4));
    const auto h = static_cast<std::int32_t>(le32(data + at + 8));
    at += kHeaderBytes;
    if (w <= 0 || h <= 0 || w > kMaxSide || h > kMaxSide)
        return false;
    const std::uint64_t bytes = Thumbnail::stride(w) * static_cast<std::uint64_t>(h);
    if (bytes > size - at)
        return false;
    out.pixels.assign(data + at, data + at + bytes);
    out.width = w;
    out.height = h;
    at += static_cast<std::size_t>(bytes);
    return true;
}

void appendThumbnail(std::vector<std::uint8_t>& file, const Thumbnail& t, const BrowserItem& item) {
    std::uint8_t header[kHeaderBytes] = {};
    put32(header, kHeaderBytes);
    put32(header + 4, static_cast<std::uint32_t>(t.width));
    put32(header + 8, static_cast<std::uint32_t>(t.height));
    put16(header + 12, 1);
    put16(header + 14, 24);
    put32(header + 24, static_cast<std::uint32_t>(item.imageWidth));
    put32(header + 28, static_cast<std::uint32_t>(item.imageHeight));
    put32(header + 32, item.bitsPerPixel);
    file.insert(file.end(), header, header + kHeaderBytes);
    const std::uint64_t bytes =
        t.width > 0 && t.height > 0
            ? Thumbnail::stride(t.width) * static_cast<std::uint64_t>(t.height)
            : 0;
    const std::size_t have = std::min<std::size_t>(t.pixels.size(), bytes);
    file.insert(file.end(), t.pixels.begin(), t.pixels.begin() + static_cast<std::ptrdiff_t>(have));
    file.resize(file.size() + static_cast<std::size_t>(bytes - have), 0);
}

// The "xx" sub-folder of a cache file, opened without following a link put in its place,
// and the file's name in it. Cache files are only ever reached through it, so neither a
// linked sub-folder nor a linked file leads out of the cache.
struct CacheFolder {
    settings::UniqueFd dir;
    QByteArray leaf;

    explicit CacheFolder(const QString& name) {
        const QByteArray native = filenames::encode(name);
        const qsizetype slash = native.lastIndexOf('/');
        leaf = native.mid(slash + 1);
        dir = settings::UniqueFd(::open(native.left(slash).constData(),
                                        O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    }
    // Non-blocking: a FIFO or a device in a cache file's place must not hang the worker.
    int open(const QByteArray& file, int flags, mode_t mode = 0) const {
        return ::openat(dir.get(), file.constData(),
                        flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY, mode);
    }
};

} // namespace

FileTime fileTimeOf(const QString& path, bool* exists, int* error) {
    struct stat st {};
    const bool ok = ::stat(filenames::encode(path).constData(), &st) == 0;
    if (exists)
        *exists = ok;
    if (error)
        *error = ok ? 0 : errno;
    return ok ? timeOf(st) : 0;
}

FileTime linkTimeOf(const QString& path, bool* exists, int* error) {
    struct stat st {};
    const bool ok = ::lstat(filenames::encode(path).constData(), &st) == 0;
    if (exists)
        *exists = ok;
    if (error)
        *error = ok ? 0 : errno;
    return ok ? timeOf(st) : 0;
}

QString ThumbnailCache::defaultRoot() {
    // No fallback: a cache that cannot live in the user's cache folder is no cache, rather
    // than files written into an installation folder.
    const QString root = XdgPaths::cacheHome() + QStringLiteral("/Vornalt/cache/");
    return QDir().mkpath(root) ? root : QString();
}

ThumbnailCache::ThumbnailCache(QString root) : m_root(std::move(root)) {
    if (!m_root.isEmpty() && !m_root.endsWith(u'/'))
        m_root += u'/';
}

QString ThumbnailCache::fileNameFor(const QString& imagePath) const {
    if (imagePath.isEmpty() || static_cast<std::size_t>(imagePath.size()) >= kPathUnits ||
        !CacheEligibility::eligible(imagePath))
        return {};
    std::uint8_t bytes[kPathBytes];
    std::size_t n = 0;
    for (const QChar c : imagePath) {
        put16(bytes + n, c.unicode());
        n += 2;
    }
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int digestSize = 0;
    if (EVP_Digest(bytes, n, digest, &digestSize, EVP_md5(), nullptr) != 1 || digestSize != 16)
        return {};
    static constexpr char kHex[] = "0123456789abcdef";
    QString name = m_root;
    name.reserve(m_root.size() + 33);
    for (unsigned i = 0; i < 16; ++i) {
        name += QLatin1Char(kHex[digest[i] >> 4]);
        name += QLatin1Char(kHex[digest[i] & 15]);
        if (i == 0)
            name += u'/';
    }
    return name;
}

std::vector<std::uint8_t> ThumbnailCache::encode(const QString& imagePath,
                                                 const BrowserItem& item) {
    std::vector<std::uint8_t> file(kPathBytes, 0);
    const std::size_t units = std::min<std::size_t>(imagePath.size(), kPathUnits - 1);
    for (std::size_t i = 0; i < units; ++i)
        put16(file.data() + 2 * i, imagePath[static_cast<qsizetype>(i)].unicode());
    appendThumbnail(file, item.large, item);
    appendThumbnail(file, item.small, item);
    return file;
}

bool ThumbnailCache::decode(const std::uint8_t* data, std::size_t size, const QString& imagePath,
                            BrowserItem& item) {
    // The field holds the path and its terminator.
    if (!data || size < kPathBytes || static_cast<std::size_t>(imagePath.size()) >= kPathUnits)
        return false;
    if (pathField(data).compare(imagePath, Qt::CaseInsensitive) != 0)
        return false;
    std::size_t at = kPathBytes;
    if (size - at < kHeaderBytes)
        return false;
    // The full image's size and depth ride in the first header's resolution and
    // colours-used fields.
    const auto imageWidth = static_cast<std::int32_t>(le32(data + at + 24));
    const auto imageHeight = static_cast<std::int32_t>(le32(data + at + 28));
    const std::uint32_t bits = le32(data + at + 32);
    Thumbnail large, small;
    if (!decodeThumbnail(data, size, at, large) || !decodeThumbnail(data, size, at, small))
        return false;
    item.large = std::move(large);
    item.small = std::move(small);
    item.imageWidth = imageWidth;
    item.imageHeight = imageHeight;
    item.bitsPerPixel = bits;
    return true;
}

bool ThumbnailCache::read(BrowserItem& item) const {
    bool exists = false;
    if (item.isShortcut()) {
        item.linkTime = linkTimeOf(item.path, &exists);
        if (!exists)
            return false;
    }
    const QString& imagePath = item.imagePath();
    item.imageTime = fileTimeOf(imagePath, &exists);
    if (!exists)
        return false;
    const QString name = fileNameFor(imagePath);
    if (name.isEmpty())
        return false;
    const CacheFolder folder(name);
    if (!folder.dir)
        return false;
    const settings::UniqueFd file(folder.open(folder.leaf, O_RDONLY));
    if (!file)
        return false;

    const bool accepted = [&] {
        struct stat st {};
        if (::fstat(file.get(), &st) != 0 || !S_ISREG(st.st_mode))
            return false;
        // Strictly newer: an image saved in the same instant as its cache may have changed
        // after the thumbnails were made.
        if (timeOf(st) <= item.imageTime)
            return false;
        if (st.st_size < 0 || static_cast<std::uint64_t>(st.st_size) > kMaxFileBytes)
            return false;
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(st.st_size));
        if (!readAll(file.get(), bytes.data(), bytes.size()))
            return false;
        return decode(bytes.data(), bytes.size(), imagePath, item);
    }();
    if (!accepted) {
        ::unlinkat(folder.dir.get(), folder.leaf.constData(), 0);
        return false;
    }
    // Last: the done bit publishes the thumbnails to the user-interface thread.
    item.markThumbnailDone();
    return true;
}

void ThumbnailCache::write(const BrowserItem& item) const {
    if (item.large.empty() || item.small.empty())
        return;
    const QString& imagePath = item.imagePath();
    const QString name = fileNameFor(imagePath);
    if (name.isEmpty())
        return;
    const std::vector<std::uint8_t> bytes = encode(imagePath, item);

    CacheFolder folder(name);
    if (!folder.dir && errno == ENOENT) {
        // At most two levels: the "xx" folder and the root above it.
        const QByteArray sub = filenames::encode(name.left(name.lastIndexOf(u'/')));
        if (::mkdir(sub.constData(), 0700) != 0 && errno == ENOENT) {
            ::mkdir(filenames::encode(m_root).constData(), 0700);
            ::mkdir(sub.constData(), 0700);
        }
        folder = CacheFolder(name);
    }
    if (!folder.dir)
        return;
    // Hidden while written; the rename makes the file appear whole or not at all, as a
    // half-written cache file would otherwise be read after a crash.
    QByteArray tempName;
    settings::UniqueFd file;
    for (int attempt = 0; attempt < 8 && !file; ++attempt) {
        tempName = '.' + folder.leaf + '-' +
                   QByteArray::number(QRandomGenerator::global()->generate(), 36);
        file = settings::UniqueFd(folder.open(tempName, O_WRONLY | O_CREAT | O_EXCL, 0600));
        if (!file && errno != EEXIST)
            return;
    }
    if (!file)
        return;
    if (!imagelib::writeAll(file.get(), bytes.data(), bytes.size()) ||
        ::renameat(folder.dir.get(), tempName.constData(), folder.dir.get(),
                   folder.leaf.constData()) != 0)
        ::unlinkat(folder.dir.get(), tempName.constData(), 0);
}

ThumbnailCache::Change ThumbnailCache::checkForChange(BrowserItem& item,
                                                      const BrowserList& list) const {
    if (!list.listed(item.format))
        return Gone;
    if (item.imageTime == 0)
        return Unchanged;
    bool exists = false;
    int error = 0;
    if (item.isShortcut()) {
        const FileTime linkTime = linkTimeOf(item.path, &exists, &error);
        if (!exists)
            return error == ENOENT ? Gone : Unchanged;
        if (linkTime != item.linkTime) {
            const QString target = ShortcutResolver::resolve(item.path);
            if (target.isEmpty())
                return Gone;
            if (target.compare(item.linkTarget, Qt::CaseInsensitive) != 0) {
                item.linkTarget = target;
                item.dropThumbnails();
                return Changed;
            }
            // The link was made again to the same target: no need to resolve it every time.
            item.linkTime = linkTime;
        }
    }
    const QString& imagePath = item.imagePath();
    const FileTime imageTime = fileTimeOf(imagePath, &exists, &error);
    if (!exists)
        return error == ENOENT ? Gone : Unchanged;
    if (imageTime == item.imageTime)
        return Unchanged;
    item.dropThumbnails();
    const QString name = fileNameFor(imagePath);
    if (!name.isEmpty())
        ::unlink(filenames::encode(name).constData());
    return Changed;
}

void ThumbnailCache::clean(int pick) const {
    static constexpr char kHex[] = "0123456789abcdef";
    const unsigned sub = static_cast<unsigned>(pick) & 0xFF;
    const QString folder =
        m_root + QLatin1Char(kHex[sub >> 4]) + QLatin1Char(kHex[sub & 15]) + u'/';
    const int dirFd = ::open(filenames::encode(folder).constData(),
                             O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (dirFd < 0)
        return;
    const std::unique_ptr<DIR, int (*)(DIR*)> dir(::fdopendir(dirFd), &::closedir);
    if (!dir) {
        ::close(dirFd);
        return;
    }
    const std::time_t now = std::time(nullptr);
    // Every name is opened and removed relative to the folder, without following links, so
    // nothing outside it is touched.
    while (const dirent* entry = ::readdir(dir.get())) {
        const char* name = entry->d_name;
        if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0)
            continue;
        struct stat st {};
        if (::fstatat(dirFd, name, &st, AT_SYMLINK_NOFOLLOW) != 0 || S_ISDIR(st.st_mode))
            continue;
        if (name[0] == '.') {
            if (S_ISREG(st.st_mode) && now - st.st_mtim.tv_sec < kStaleTempSeconds)
                continue; // a write in progress
            ::unlinkat(dirFd, name, 0);
            continue;
        }
        bool keep = false;
        const settings::UniqueFd file(
            ::openat(dirFd, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        std::uint8_t field[kPathBytes];
        if (file && S_ISREG(st.st_mode) && readAll(file.get(), field, kPathBytes)) {
            const QString stored = pathField(field);
            // A path that is not eligible is never read back, and testing it could hang on a
            // dead network mount.
            struct stat image {};
            keep = stored.startsWith(u'/') && CacheEligibility::eligible(stored) &&
                   ::stat(filenames::encode(stored).constData(), &image) == 0;
        }
        if (!keep)
            ::unlinkat(dirFd, name, 0);
    }
}

} // namespace lanmira
