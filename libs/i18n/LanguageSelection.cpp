#include "i18n/LanguageSelection.h"

#include <QtGlobal>

#include <utility>

using namespace Qt::StringLiterals;

namespace lanmira::i18n {
namespace {

// The value ends up in a file name, so anything that is not a plain language tag is
// ignored rather than trusted.
bool isPlainTag(const QString& tag) {
    if (tag.isEmpty())
        return false;
    for (const QChar c : tag) {
        const char16_t u = c.unicode();
        const bool ok = (u >= u'a' && u <= u'z') || (u >= u'A' && u <= u'Z') ||
                        (u >= u'0' && u <= u'9') || u == u'_' || u == u'-';
        if (!ok)
            return false;
    }
    return true;
}

void addLocale(QString locale, QStringList& out) {
    const qsizetype modifier = locale.indexOf(u'@');
    if (modifier >= 0)
        locale.truncate(modifier);
    const qsizetype encoding = locale.indexOf(u'.');
    if (encoding >= 0)
        locale.truncate(encoding);
    if (locale == u"C"_s || locale == u"POSIX"_s)
        locale = u"en"_s;
    if (!isPlainTag(locale))
        return;
    if (!out.contains(locale))
        out << locale;
    const qsizetype territory = locale.indexOf(u'_');
    if (territory > 0) {
        const QString language = locale.left(territory);
        if (!out.contains(language))
            out << language;
    }
}

} // namespace

LanguageSelection::LanguageSelection(Environment env) : env_(std::move(env)) {}

LanguageSelection LanguageSelection::fromProcess() {
    return LanguageSelection([](const char* name) { return qEnvironmentVariable(name); });
}

QStringList LanguageSelection::candidates() const {
    QStringList out;
    const QString list = env_("LANGUAGE");
    for (const QString& entry : list.split(u':', Qt::SkipEmptyParts))
        addLocale(entry.trimmed(), out);
    if (!out.isEmpty())
        return out;
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const QString value = env_(name).trimmed();
        if (value.isEmpty())
            continue;
        addLocale(value, out);
        break;
    }
    return out;
}

QString LanguageSelection::choose(const HasCatalog& hasCatalog) const {
    for (const QString& language : candidates()) {
        if (language == u"en"_s || hasCatalog(language))
            return language;
    }
    return u"en"_s;
}

} // namespace lanmira::i18n
