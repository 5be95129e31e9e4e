#include "platform/XdgPaths.h"

#include <QDir>
#include <QFileInfo>

#include <unistd.h>

namespace lanmira {
namespace {

QString fromEnv(const char* name, const QString& fallbackBelowHome) {
    const QString value = qEnvironmentVariable(name);
    if (!value.isEmpty() && QDir::isAbsolutePath(value))
        return QDir::cleanPath(value);
    return QDir::cleanPath(QDir::homePath() + u'/' + fallbackBelowHome);
}

} // namespace

QString XdgPaths::configHome() {
    return fromEnv("XDG_CONFIG_HOME", QStringLiteral(".config"));
}

QString XdgPaths::cacheHome() {
    return fromEnv("XDG_CACHE_HOME", QStringLiteral(".cache"));
}

QString XdgPaths::dataHome() {
    return fromEnv("XDG_DATA_HOME", QStringLiteral(".local/share"));
}

QString XdgPaths::runtimeDir() {
    const QString value = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!value.isEmpty() && QDir::isAbsolutePath(value) && QFileInfo(value).isDir())
        return QDir::cleanPath(value);
    // Without a session's runtime folder, a per-user folder in /tmp keeps users apart.
    const QString dir =
        QDir::tempPath() + QStringLiteral("/lanmira-runtime-") + QString::number(::getuid());
    QDir().mkpath(dir);
    QFile::setPermissions(dir,
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    return dir;
}

} // namespace lanmira
