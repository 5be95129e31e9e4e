#include "app/SettingsStore.h"

using namespace Qt::StringLiterals;

namespace lanmira {

namespace {

std::string utf8(const QString& text) {
    const QByteArray bytes = text.toUtf8();
    return std::string(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

} // namespace

SettingsStore::SettingsStore() : SettingsStore(settings::configHome()) {}

SettingsStore::SettingsStore(std::filesystem::path configHome)
    : configHome_(std::move(configHome)) {}

void SettingsStore::setRegistryKey(const QString& companySlashApp) {
    registryKey_ = companySlashApp;
    rebuildKey();
}

void SettingsStore::setProfileName(const QString& app) {
    profileName_ = app;
    rebuildKey();
}

int SettingsStore::readInt(const QString& section, const QString& key, int def) const {
    return key_ ? key_->readInt(utf8(section), utf8(key), def) : def;
}

void SettingsStore::writeInt(const QString& section, const QString& key, int value) {
    if (key_)
        key_->writeInt(utf8(section), utf8(key), value);
}

QString SettingsStore::readString(const QString& section, const QString& key,
                                  const QString& def) const {
    if (!key_)
        return def;
    return QString::fromStdString(key_->readString(utf8(section), utf8(key), utf8(def)));
}

void SettingsStore::writeString(const QString& section, const QString& key, const QString& value) {
    if (key_)
        key_->writeString(utf8(section), utf8(key), utf8(value));
}

std::filesystem::path SettingsStore::file() const {
    return key_ ? key_->file() : std::filesystem::path();
}

void SettingsStore::rebuildKey() {
    if (registryKey_.isEmpty()) {
        key_.reset();
        return;
    }
    QString profile = profileName_;
    if (profile.isEmpty())
        profile = registryKey_.section(u'\\', -1, -1, QString::SectionSkipEmpty);
    key_.emplace(utf8(u"Software\\"_s + registryKey_ + u'\\' + profile), configHome_);
}

} // namespace lanmira
