#pragma once

#include "settings/RegistryKey.h"

#include <QString>

#include <filesystem>
#include <optional>

namespace lanmira {

// The application's settings: integers and strings by section and key under
// `Software\<company>\<app>\<profile>`, with the default given at each read. The store
// applies no limits and caches nothing; each owner clamps what it reads and keeps it.
// Until the registry key is set, reads give the defaults and writes do nothing.
class SettingsStore {
public:
    SettingsStore();
    // For tests: settings live under `configHome` instead of the user's config folder.
    explicit SettingsStore(std::filesystem::path configHome);

    // `companySlashApp` is "<company>\<app>"; the profile name defaults to its last part.
    void setRegistryKey(const QString& companySlashApp);
    void setProfileName(const QString& app);

    int readInt(const QString& section, const QString& key, int def) const;
    void writeInt(const QString& section, const QString& key, int value);
    QString readString(const QString& section, const QString& key, const QString& def) const;
    void writeString(const QString& section, const QString& key, const QString& value);

    // Empty until the registry key is set.
    std::filesystem::path file() const;

private:
    void rebuildKey();

    std::filesystem::path configHome_;
    QString registryKey_;
    QString profileName_;
    std::optional<settings::RegistryKey> key_;
};

} // namespace lanmira
