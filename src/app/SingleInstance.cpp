#include "app/SingleInstance.h"

#include "app/ProductVersion.h"
#include "platform/XdgPaths.h"

namespace lanmira {

SingleInstance::SingleInstance(const QString& lockFolder) {
    const QString folder = lockFolder.isEmpty() ? XdgPaths::runtimeDir() : lockFolder;
    m_path = folder + QStringLiteral("/lanmira-") + QString::fromLatin1(kInstanceName) +
             QStringLiteral(".lock");
    m_lock = std::make_unique<QLockFile>(m_path);
    // Only a dead owner makes the lock stale, never its age: the first copy may run for weeks.
    m_lock->setStaleLockTime(0);
}

SingleInstance::~SingleInstance() = default;

bool SingleInstance::acquire() {
    return m_lock->tryLock(0);
}

} // namespace lanmira
