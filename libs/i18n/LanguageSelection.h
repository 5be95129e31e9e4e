#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace lanmira::i18n {

// Which catalog language the user's locale asks for. The environment is read through a
// getter so the priority rules can be checked without touching the process environment.
class LanguageSelection {
public:
    // Returns the variable's value, or an empty string when it is unset.
    using Environment = std::function<QString(const char* name)>;
    using HasCatalog = std::function<bool(const QString& language)>;

    explicit LanguageSelection(Environment env);
    static LanguageSelection fromProcess();

    // Languages to try, best first: every entry of LANGUAGE, otherwise the first set one of
    // LC_ALL, LC_MESSAGES and LANG. "de_DE.UTF-8@euro" gives "de_DE" then "de"; the C and
    // POSIX locales give "en".
    QStringList candidates() const;

    // The first candidate with a catalog; "en" when none has one. English never needs its
    // own check because it is always loaded as the fallback.
    QString choose(const HasCatalog& hasCatalog) const;

private:
    Environment env_;
};

} // namespace lanmira::i18n
