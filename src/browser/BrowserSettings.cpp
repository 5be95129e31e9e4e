#include "browser/BrowserSettings.h"

#include "browser/BrowserList.h"
#include "settings/RegistryKey.h"

#include <cstdio>
#include <string>

namespace lanmira {

namespace {

constexpr const char* kShellKey = "Software\\Vornalt\\Lanmira\\Shell";

std::string formatWordName(int format) {
    char name[8];
    std::snprintf(name, sizeof name, "if%02d", format);
    return name;
}

// A stored value outside its range is treated like a missing one.
std::int32_t readInRange(const settings::RegistryKey& key, const char* name, std::int32_t lo,
                         std::int32_t hi, std::int32_t def) {
    const std::int32_t value = key.readInt("", name, def);
    return value >= lo && value <= hi ? value : def;
}

} // namespace

BrowserSettings::BrowserSettings(QString company, QString app, std::filesystem::path configHome)
    : m_company(std::move(company)), m_app(std::move(app)),
      m_configHome(configHome.empty() ? settings::configHome() : std::move(configHome)) {}

void BrowserSettings::load(BrowserList& list) const {
    const settings::RegistryKey shell(kShellKey, m_configHome);
    for (std::size_t i = 0; i < list.formatFilter.size(); ++i) {
        list.formatFilter[i] = static_cast<std::uint32_t>(
            shell.readInt("", formatWordName(static_cast<int>(i)),
                          static_cast<std::int32_t>(BrowserList::kDefaultFormatWord)));
    }

    const settings::RegistryKey browser(ibrowserKey(), m_configHome);
    list.sortKey = readInRange(browser, "sortby", 0, 5, 0);
    list.sortDirection = readInRange(browser, "sortmode", 0, 1, 0);
    list.largeMode = readInRange(browser, "bLargemode", 0, 1, 1);
}

void BrowserSettings::save(const BrowserList& list) const {
    const settings::RegistryKey shell(kShellKey, m_configHome);
    for (std::size_t i = 0; i < list.formatFilter.size(); ++i) {
        shell.writeInt("", formatWordName(static_cast<int>(i)),
                       static_cast<std::int32_t>(list.formatFilter[i]));
    }

    const settings::RegistryKey browser(ibrowserKey(), m_configHome);
    browser.writeInt("", "sortby", list.sortKey);
    browser.writeInt("", "sortmode", list.sortDirection);
    browser.writeInt("", "bLargemode", list.largeMode);
}

std::string BrowserSettings::ibrowserKey() const {
    const QString key = u"SOFTWARE\\" + m_company + u'\\' + m_app + u"\\ibrowser";
    return key.toStdString();
}

} // namespace lanmira
