#include "browser/thumbnails/CacheEligibility.h"

#include "browser/FileNames.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <initializer_list>
#include <mutex>
#include <optional>
#include <poll.h>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace lanmira {
namespace {

struct Mount {
    QByteArray mountPoint; // escapes decoded, no trailing '/' except for the root
    unsigned major = 0;
    unsigned minor = 0;
    QByteArray fsType;
    QByteArray source;
};

// The kernel writes space, tab, newline and backslash in mount points as \ooo.
QByteArray unescape(QByteArrayView field) {
    QByteArray out;
    out.reserve(field.size());
    for (qsizetype i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size() && field[i + 1] >= '0' &&
            field[i + 1] <= '3' && field[i + 2] >= '0' && field[i + 2] <= '7' &&
            field[i + 3] >= '0' && field[i + 3] <= '7') {
            out.append(static_cast<char>((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 +
                                         (field[i + 3] - '0')));
            i += 3;
        } else {
            out.append(field[i]);
        }
    }
    return out;
}

std::vector<QByteArrayView> splitFields(QByteArrayView line) {
    std::vector<QByteArrayView> fields;
    qsizetype start = -1;
    for (qsizetype i = 0; i <= line.size(); ++i) {
        const bool blank = i == line.size() || line[i] == ' ' || line[i] == '\t';
        if (blank && start >= 0) {
            fields.push_back(line.sliced(start, i - start));
            start = -1;
        } else if (!blank && start < 0) {
            start = i;
        }
    }
    return fields;
}

// "ID parent MAJ:MIN root mountpoint options [optional...] - fstype source superoptions"
std::vector<Mount> parseMountinfo(QByteArrayView text) {
    std::vector<Mount> mounts;
    for (QByteArrayView rest = text; !rest.isEmpty();) {
        const qsizetype nl = rest.indexOf('\n');
        const QByteArrayView line = nl < 0 ? rest : rest.first(nl);
        rest = nl < 0 ? QByteArrayView() : rest.sliced(nl + 1);
        const std::vector<QByteArrayView> f = splitFields(line);
        const auto dash = std::find(f.begin(), f.end(), QByteArrayView("-"));
        if (f.size() < 6 || dash == f.end() || dash - f.begin() < 6 || f.end() - dash < 3)
            continue;
        Mount m;
        const QByteArrayView devField = f[2];
        const qsizetype colon = devField.indexOf(':');
        if (colon <= 0)
            continue;
        bool okMajor = false, okMinor = false;
        m.major = devField.first(colon).toUInt(&okMajor);
        m.minor = devField.sliced(colon + 1).toUInt(&okMinor);
        if (!okMajor || !okMinor)
            continue;
        m.mountPoint = unescape(f[4]);
        if (m.mountPoint.isEmpty() || m.mountPoint[0] != '/')
            continue;
        while (m.mountPoint.size() > 1 && m.mountPoint.endsWith('/'))
            m.mountPoint.chop(1);
        m.fsType = dash[1].toByteArray();
        m.source = unescape(dash[2]);
        if (m.mountPoint.contains('\0') || m.source.contains('\0'))
            continue;
        mounts.push_back(std::move(m));
    }
    return mounts;
}

// The mount that holds `path`: the longest mount point that is a whole-component prefix.
// Of mounts stacked on one point, the later line is the one on top.
const Mount* mountOf(const std::vector<Mount>& mounts, const QByteArray& path) {
    const Mount* best = nullptr;
    for (const Mount& m : mounts) {
        const QByteArray& mp = m.mountPoint;
        const bool holds =
            mp == "/" || path == mp ||
            (path.startsWith(mp) && path.size() > mp.size() && path[mp.size()] == '/');
        if (holds && (!best || mp.size() >= best->mountPoint.size()))
            best = &m;
    }
    return best;
}

bool isOneOf(const QByteArray& type, std::initializer_list<std::string_view> names) {
    const std::string_view t(type.constData(), static_cast<std::size_t>(type.size()));
    return std::find(names.begin(), names.end(), t) != names.end();
}

bool networkLike(const QByteArray& type) {
    // A FUSE file system without a block device behind it may be anything, typically remote.
    return type.startsWith("fuse.") || type == "fuse" || type.startsWith("nfs") ||
           isOneOf(type, {"cifs", "smb3", "smbfs", "sshfs", "9p", "afs", "ceph", "glusterfs",
                          "davfs", "lustre", "gfs2", "ocfs2", "ncpfs", "coda", "virtiofs"});
}

QByteArray readSmallFile(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return f.read(64).trimmed();
}

// Local sysfs lookups only; the mounted path itself is never touched.
class BlockDevices {
public:
    explicit BlockDevices(QString sysfsRoot) : m_root(std::move(sysfsRoot)) {}

    // nullopt when sysfs knows no such device.
    std::optional<bool> fixedByNumber(unsigned major, unsigned minor, int depth = 0) const {
        return fixedAt(m_root + QStringLiteral("/dev/block/%1:%2").arg(major).arg(minor), depth);
    }
    std::optional<bool> fixedByName(const QString& name, int depth = 0) const {
        return fixedAt(m_root + QStringLiteral("/class/block/") + name, depth);
    }

private:
    std::optional<bool> fixedAt(const QString& link, int depth) const {
        const QString dev = QFileInfo(link).canonicalFilePath();
        if (dev.isEmpty())
            return std::nullopt;
        const QString rootReal = QFileInfo(m_root).canonicalFilePath();
        const QString inside = dev.startsWith(rootReal) ? dev.mid(rootReal.size()) : dev;
        if (inside.contains(QStringLiteral("/usb")))
            return false;
        // A partition's removable flag lives on its disk, one level up.
        const QString disk =
            QFileInfo::exists(dev + QStringLiteral("/partition")) ? QFileInfo(dev).path() : dev;
        const QString diskName = QFileInfo(disk).fileName();
        if (diskName.startsWith(QStringLiteral("zram")))
            return false;
        if (readSmallFile(disk + QStringLiteral("/removable")) == "1")
            return false;
        // Card readers often report SD cards as fixed; the MMC layer knows better.
        if (diskName.startsWith(QStringLiteral("mmcblk")) &&
            readSmallFile(disk + QStringLiteral("/device/type")) == "SD")
            return false;
        // Device-mapper and RAID volumes are as fixed as the disks beneath them.
        if (depth < 4) {
            const QStringList slaves = QDir(disk + QStringLiteral("/slaves"))
                                           .entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
            for (const QString& s : slaves)
                if (fixedByName(s, depth + 1) == false)
                    return false;
        }
        return true;
    }

    QString m_root;
};

bool classify(const Mount& m, const QString& sysfsRoot) {
    const QByteArray& type = m.fsType;
    if (networkLike(type) || isOneOf(type, {"iso9660", "udf", "tmpfs", "ramfs"}))
        return false;
    // Layers of a container's root: the upper layer is local in every ordinary set-up.
    if (isOneOf(type, {"overlay", "zfs"}))
        return true;
    const BlockDevices devices(sysfsRoot);
    if (m.major != 0) {
        if (const std::optional<bool> fixed = devices.fixedByNumber(m.major, m.minor))
            return *fixed;
        // No sysfs (some containers): a block device we cannot inspect counts as fixed.
        return true;
    }
    // btrfs and FUSE block file systems report an anonymous device number; the source names
    // the disk.
    if (m.source.startsWith("/dev/")) {
        const QString name = QFileInfo(QString::fromUtf8(m.source)).fileName();
        if (const std::optional<bool> fixed = devices.fixedByName(name))
            return *fixed;
        struct stat st {};
        if (::stat(m.source.constData(), &st) == 0 && S_ISBLK(st.st_mode)) {
            if (const std::optional<bool> fixed =
                    devices.fixedByNumber(::major(st.st_rdev), ::minor(st.st_rdev)))
                return *fixed;
        }
        // A disk we cannot inspect counts as fixed, as above.
        return true;
    }
    // proc, sysfs, cgroup and other virtual file systems.
    return false;
}

QByteArray normalised(const QString& absolutePath) {
    if (!absolutePath.startsWith(u'/'))
        return {};
    return filenames::encode(QDir::cleanPath(absolutePath));
}

// The process's mount table, read again only when the kernel reports a change.
class MountTable {
public:
    bool eligible(const QByteArray& path) {
        const std::lock_guard guard(m_lock);
        refreshIfChanged();
        const Mount* m = mountOf(m_mounts, path);
        if (!m)
            return false;
        const std::size_t i = static_cast<std::size_t>(m - m_mounts.data());
        if (!m_verdicts[i])
            m_verdicts[i] = classify(*m, QStringLiteral("/sys"));
        return *m_verdicts[i];
    }

    ~MountTable() {
        if (m_fd >= 0)
            ::close(m_fd);
    }

private:
    void refreshIfChanged() {
        if (m_fd < 0) {
            m_fd = ::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC);
            if (m_fd < 0)
                return;
        } else {
            // The kernel flags POLLPRI once per change of the mount namespace.
            pollfd p{m_fd, POLLPRI, 0};
            if (::poll(&p, 1, 0) <= 0 || !(p.revents & (POLLPRI | POLLERR)))
                return;
        }
        QByteArray text;
        std::array<char, 16384> buf;
        ::lseek(m_fd, 0, SEEK_SET);
        for (;;) {
            const ssize_t n = ::read(m_fd, buf.data(), buf.size());
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                break;
            text.append(buf.data(), n);
        }
        m_mounts = parseMountinfo(text);
        m_verdicts.assign(m_mounts.size(), std::nullopt);
    }

    std::mutex m_lock; // guards every member below
    int m_fd = -1;
    std::vector<Mount> m_mounts;
    std::vector<std::optional<bool>> m_verdicts; // one per mount, filled on first use
};

struct Injected {
    std::mutex lock; // guards classifier
    CacheEligibility::Classifier classifier;
};

Injected& injected() {
    static Injected i;
    return i;
}

} // namespace

bool CacheEligibility::eligible(const QString& absolutePath) {
    Classifier own;
    {
        Injected& i = injected();
        const std::lock_guard guard(i.lock);
        own = i.classifier;
    }
    if (own)
        return own(absolutePath);
    const QByteArray path = normalised(absolutePath);
    if (path.isEmpty())
        return false;
    static MountTable table;
    return table.eligible(path);
}

void CacheEligibility::setClassifier(Classifier classifier) {
    Injected& i = injected();
    const std::lock_guard guard(i.lock);
    i.classifier = std::move(classifier);
}

bool CacheEligibility::onFixedStorage(const QString& absolutePath, const QString& mountinfo,
                                      const QString& sysfsRoot) {
    const QByteArray path = normalised(absolutePath);
    if (path.isEmpty())
        return false;
    const std::vector<Mount> mounts = parseMountinfo(mountinfo.toUtf8());
    const Mount* m = mountOf(mounts, path);
    return m && classify(*m, sysfsRoot);
}

} // namespace lanmira
