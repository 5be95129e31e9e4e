#pragma once

#include <QLockFile>
#include <QString>

#include <memory>

namespace lanmira {

// Held for the life of the process so that only one copy runs per user. A lock left by a
// copy that was killed is recognised by its dead process and taken over.
class SingleInstance {
public:
    // lockFolder empty: the user's runtime folder.
    explicit SingleInstance(const QString& lockFolder = {});
    ~SingleInstance();

    // False when another live copy holds the lock, or the lock cannot be made at all.
    bool acquire();
    QString lockPath() const { return m_path; }

private:
    QString m_path;
    std::unique_ptr<QLockFile> m_lock;
};

} // namespace lanmira
