#pragma once

#include <QString>

#include <filesystem>
#include <string>

namespace lanmira {

class BrowserList;

// The browser's stored values: the sixteen format words "if00".."if15" under
// `Software\Vornalt\Lanmira\Shell`, and "sortby", "sortmode", "bLargemode" under
// `SOFTWARE\<company>\<app>\ibrowser`. A value that is missing or not a 32-bit number
// keeps its default.
class BrowserSettings {
public:
    BrowserSettings(QString company, QString app, std::filesystem::path configHome = {});

    void load(BrowserList& list) const;
    void save(const BrowserList& list) const;

private:
    std::string ibrowserKey() const;

    QString m_company;
    QString m_app;
    std::filesystem::path m_configHome;
};

} // namespace lanmira
