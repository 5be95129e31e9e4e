#include "i18n/LanguageSelection.h"

#include <QHash>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using lanmira::i18n::LanguageSelection;
using namespace Qt::StringLiterals;

namespace {

LanguageSelection selectionFor(const QHash<QString, QString>& env) {
    return LanguageSelection(
        [env](const char* name) { return env.value(QString::fromLatin1(name)); });
}

struct CandidateRow {
    const char* what;
    QHash<QString, QString> env;
    QStringList expected;
};

class LanguageCandidates : public ::testing::TestWithParam<CandidateRow> {};

TEST_P(LanguageCandidates, FollowTheLocaleVariables) {
    EXPECT_EQ(selectionFor(GetParam().env).candidates(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Table, LanguageCandidates,
    ::testing::Values(
        CandidateRow{"nothing_set", {}, {}},
        CandidateRow{"lang_with_encoding", {{u"LANG"_s, u"de_DE.UTF-8"_s}}, {u"de_DE"_s, u"de"_s}},
        CandidateRow{"encoding_and_modifier",
                     {{u"LANG"_s, u"de_DE.ISO-8859-15@euro"_s}},
                     {u"de_DE"_s, u"de"_s}},
        CandidateRow{"lc_all_over_lang",
                     {{u"LC_ALL"_s, u"fr_FR.UTF-8"_s}, {u"LANG"_s, u"de_DE.UTF-8"_s}},
                     {u"fr_FR"_s, u"fr"_s}},
        CandidateRow{"lc_messages_over_lang",
                     {{u"LC_MESSAGES"_s, u"de_AT"_s}, {u"LANG"_s, u"fr_FR"_s}},
                     {u"de_AT"_s, u"de"_s}},
        CandidateRow{"empty_values_skipped",
                     {{u"LANGUAGE"_s, u""_s},
                      {u"LC_ALL"_s, u""_s},
                      {u"LC_MESSAGES"_s, u"  "_s},
                      {u"LANG"_s, u"de_CH.UTF-8"_s}},
                     {u"de_CH"_s, u"de"_s}},
        CandidateRow{"language_list_in_order_wins_over_all",
                     {{u"LANGUAGE"_s, u"fr:de_CH:de"_s},
                      {u"LC_ALL"_s, u"it_IT.UTF-8"_s},
                      {u"LANG"_s, u"en_US.UTF-8"_s}},
                     {u"fr"_s, u"de_CH"_s, u"de"_s}},
        CandidateRow{"language_list_empty_entries", {{u"LANGUAGE"_s, u":de::"_s}}, {u"de"_s}},
        CandidateRow{"language_list_of_nothing_falls_through",
                     {{u"LANGUAGE"_s, u"::"_s}, {u"LANG"_s, u"de"_s}},
                     {u"de"_s}},
        CandidateRow{"c_is_english", {{u"LANG"_s, u"C"_s}}, {u"en"_s}},
        CandidateRow{"posix_is_english", {{u"LANG"_s, u"POSIX"_s}}, {u"en"_s}},
        CandidateRow{"c_utf8_over_lang",
                     {{u"LC_ALL"_s, u"C.UTF-8"_s}, {u"LANG"_s, u"de_DE.UTF-8"_s}},
                     {u"en"_s}},
        CandidateRow{"duplicates_dropped",
                     {{u"LANGUAGE"_s, u"de_DE:de_AT:de"_s}},
                     {u"de_DE"_s, u"de"_s, u"de_AT"_s}},
        CandidateRow{"path_like_values_ignored",
                     {{u"LANGUAGE"_s, u"../../tmp/x"_s}, {u"LANG"_s, u"de_DE/../x"_s}},
                     {}}),
    [](const auto& p) { return std::string(p.param.what); });

struct ChoiceRow {
    const char* what;
    QHash<QString, QString> env;
    QStringList catalogs;
    QString expected;
};

class LanguageChoice : public ::testing::TestWithParam<ChoiceRow> {};

TEST_P(LanguageChoice, TakesTheFirstCandidateWithACatalog) {
    const ChoiceRow& row = GetParam();
    QStringList asked;
    const QString chosen = selectionFor(row.env).choose([&](const QString& language) {
        asked << language;
        return row.catalogs.contains(language);
    });
    EXPECT_EQ(chosen, row.expected);
    EXPECT_FALSE(asked.contains(u"en"_s)) << "English is always there and never looked for";
}

INSTANTIATE_TEST_SUITE_P(
    Table, LanguageChoice,
    ::testing::Values(
        ChoiceRow{
            "region_falls_back_to_language", {{u"LANG"_s, u"de_CH.UTF-8"_s}}, {u"de"_s}, u"de"_s},
        ChoiceRow{"region_catalog_preferred",
                  {{u"LANG"_s, u"pt_BR.UTF-8"_s}},
                  {u"pt"_s, u"pt_BR"_s},
                  u"pt_BR"_s},
        ChoiceRow{"list_skips_missing", {{u"LANGUAGE"_s, u"fr:it:de"_s}}, {u"de"_s}, u"de"_s},
        ChoiceRow{
            "english_earlier_in_list_wins", {{u"LANGUAGE"_s, u"en_GB:de"_s}}, {u"de"_s}, u"en"_s},
        ChoiceRow{"nothing_set_means_english", {}, {u"de"_s}, u"en"_s}),
    [](const auto& p) { return std::string(p.param.what); });

} // namespace
