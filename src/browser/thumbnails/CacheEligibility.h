#pragma once

#include <QString>

#include <functional>
#include <memory>

namespace lanmira {

// Whether a path lies on local, fixed block storage, the only place thumbnails are cached.
// Network file systems (nfs, cifs/smb, sshfs and other network FUSE), optical discs, RAM
// file systems (tmpfs, ramfs, zram) and removable or USB-attached disks are not. Decided
// from /proc/self/mountinfo and sysfs, never by touching the path itself, so a dead network
// mount cannot block the caller.
class CacheEligibility {
public:
    using Classifier = std::function<bool(const QString& absolutePath)>;

    static bool eligible(const QString& absolutePath);
    // Tests inject their own rule; an empty function restores the real one.
    static void setClassifier(Classifier classifier);

    // The real rule, over a given mountinfo text and sysfs root (for tests).
    static bool onFixedStorage(const QString& absolutePath, const QString& mountinfo,
                               const QString& sysfsRoot);
};

} // namespace lanmira
