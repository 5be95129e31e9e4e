#include "i18n/LanguageSelection.h"

#include <QHash>

#include <gtest/gtest.h>

#include <ostream>
#include <string>

using lanmira::i18n::LanguageSelection;
using namespace Qt::StringLiterals;

namespace {

// `env` is "NAME=value;NAME=value", standing in for the process environment.
LanguageSelection selectionFor(const char* env) {
    QHash<QString, QString> values;
    for (const QString& pair : QString::fromUtf8(env).split(u';', Qt::SkipEmptyParts))
        values.insert(pair.section(u'=', 0, 0), pair.section(u'=', 1));
    return LanguageSelection(
        [values](const char* name) { return values.value(QString::fromLatin1(name)); });
}

QStringList words(const char* text) {
    return QString::fromUtf8(text).split(u' ', Qt::SkipEmptyParts);
}

struct Row {
    const char* what;
    const char* env;
    const char* candidates;
    const char* catalogs; // besides English
    const char* chosen;
};

void PrintTo(const Row& row, std::ostream* os) {
    *os << '"' << row.env << '"';
}

const Row kRows[] = {
    {"nothing_set", "", "", "de", "en"},
    {"encoding_and_modifier", "LANG=de_DE.ISO-8859-15@euro", "de_DE de", "de", "de"},
    {"lc_all_over_lang", "LC_ALL=fr_FR.UTF-8;LANG=de_DE.UTF-8", "fr_FR fr", "de", "en"},
    {"lc_messages_over_lang", "LC_MESSAGES=pt_BR;LANG=fr_FR", "pt_BR pt", "pt pt_BR", "pt_BR"},
    {"list_wins_over_all", "LANGUAGE=fr:de_CH;LC_ALL=it_IT;LANG=en_US", "fr de_CH de", "de", "de"},
    {"empty_skipped", "LANGUAGE=::;LC_ALL=;LC_MESSAGES=  ;LANG=de_CH", "de_CH de", "de", "de"},
    {"list_empty_entries", "LANGUAGE=:de::", "de", "", "en"},
    {"posix_is_english", "LANG=POSIX", "en", "de", "en"},
    {"c_utf8_over_lang", "LC_ALL=C.UTF-8;LANG=de_DE.UTF-8", "en", "de", "en"},
    {"english_earlier_in_list_wins", "LANGUAGE=en_GB:de", "en_GB en de", "de", "en"},
    {"duplicates_dropped", "LANGUAGE=de_DE:de_AT:de", "de_DE de de_AT", "de_AT", "de_AT"},
    {"path_like_values_ignored", "LANGUAGE=../../tmp/x;LANG=de_DE/../x", "", "de", "en"},
};

class LanguageSelectionTable : public ::testing::TestWithParam<Row> {};

TEST_P(LanguageSelectionTable, FollowsTheLocaleVariables) {
    const Row& row = GetParam();
    const LanguageSelection selection = selectionFor(row.env);
    EXPECT_EQ(selection.candidates(), words(row.candidates));
    QStringList asked;
    const QString chosen = selection.choose([&](const QString& language) {
        asked << language;
        return words(row.catalogs).contains(language);
    });
    EXPECT_EQ(chosen, QString::fromUtf8(row.chosen));
    EXPECT_FALSE(asked.contains(u"en"_s)) << "English is always there and never looked for";
}

INSTANTIATE_TEST_SUITE_P(Table, LanguageSelectionTable, ::testing::ValuesIn(kRows),
                         [](const auto& p) { return std::string(p.param.what); });

} // namespace
