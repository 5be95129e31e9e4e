#include "i18n/i18n.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

struct CatalogEntry {
    QString context;
    QString source;
    QString translation;
    bool finished = false;
};

struct Catalog {
    QString error;
    std::vector<CatalogEntry> entries;
};

Catalog readCatalog(const QString& path) {
    Catalog catalog;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        catalog.error = u"cannot open "_s + path;
        return catalog;
    }
    QXmlStreamReader xml(&file);
    QString context;
    CatalogEntry entry;
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement())
            continue;
        const auto name = xml.name();
        if (name == u"context") {
            context.clear();
        } else if (name == u"name") {
            context = xml.readElementText();
        } else if (name == u"message") {
            entry = CatalogEntry{context, {}, {}, false};
        } else if (name == u"source") {
            entry.source = xml.readElementText();
        } else if (name == u"translation") {
            const bool marked = xml.attributes().hasAttribute(u"type"_s);
            entry.translation = xml.readElementText();
            entry.finished = !marked && !entry.translation.isEmpty();
            catalog.entries.push_back(entry);
        }
    }
    if (xml.hasError())
        catalog.error = path + u": "_s + xml.errorString();
    return catalog;
}

QString catalogFolder() {
    return QString::fromUtf8(LANMIRA_SOURCE_DIR) + u"/i18n"_s;
}

QString key(const CatalogEntry& e) {
    return e.context + u" / "_s + e.source;
}

// printf conversions in order; "%%" is a plain percent sign and not an argument.
QStringList conversions(const QString& text) {
    static const QRegularExpression re(
        uR"(%(%|[-+ #0]*(\d+|\*)?(\.(\d+|\*))?(hh|h|ll|l|L|j|z|t)?[diouxXeEfFgGaAcsp]))"_s);
    QStringList out;
    for (const auto& m : re.globalMatch(text)) {
        if (m.captured() != u"%%"_s)
            out << m.captured();
    }
    return out;
}

// "&&" is a literal ampersand, not a mnemonic.
int mnemonics(const QString& text) {
    int count = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text.at(i) != u'&')
            continue;
        if (i + 1 < text.size() && text.at(i + 1) == u'&')
            ++i;
        else
            ++count;
    }
    return count;
}

struct Literal {
    int line;
    std::string text;
};

bool isIdentifierChar(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

// A quote right after digits is a digit separator (1'000), not a character literal.
bool insideNumber(const std::string& code, std::size_t quote) {
    std::size_t start = quote;
    while (start > 0 &&
           (isIdentifierChar(code[start - 1]) || code[start - 1] == '\'' || code[start - 1] == '.'))
        --start;
    return start < quote && code[start] >= '0' && code[start] <= '9';
}

// String literals of C++ source, outside comments, with their first line.
std::vector<Literal> stringLiterals(const std::string& code) {
    std::vector<Literal> out;
    int line = 1;
    std::size_t i = 0;
    const std::size_t n = code.size();
    auto advance = [&](std::size_t to) {
        for (; i < to && i < n; ++i)
            if (code[i] == '\n')
                ++line;
    };
    while (i < n) {
        const char c = code[i];
        if (c == '/' && i + 1 < n && code[i + 1] == '/') {
            const std::size_t end = code.find('\n', i);
            advance(end == std::string::npos ? n : end);
        } else if (c == '/' && i + 1 < n && code[i + 1] == '*') {
            const std::size_t end = code.find("*/", i + 2);
            advance(end == std::string::npos ? n : end + 2);
        } else if (c == '"' && i > 0 && code[i - 1] == 'R') {
            const std::size_t open = code.find('(', i);
            if (open == std::string::npos)
                break;
            const std::string close = ")" + code.substr(i + 1, open - i - 1) + "\"";
            const std::size_t end = code.find(close, open);
            const int first = line;
            const std::size_t stop = end == std::string::npos ? n : end + close.size();
            out.push_back(
                {first, code.substr(open + 1, end == std::string::npos ? std::string::npos
                                                                       : end - open - 1)});
            advance(stop);
        } else if (c == '"' || (c == '\'' && !insideNumber(code, i))) {
            std::string text;
            std::size_t j = i + 1;
            while (j < n && code[j] != c && code[j] != '\n') {
                if (code[j] == '\\' && j + 1 < n)
                    text += code[j++];
                text += code[j++];
            }
            if (c == '"')
                out.push_back({line, text});
            advance(j + 1);
        } else {
            advance(i + 1);
        }
    }
    return out;
}

// Literals that are exactly a catalog name; names built with a conversion stay outside.
struct NameUse {
    QString where;
    QString name;
};

std::vector<NameUse> namesIn(const std::string& code, const QString& file) {
    static const QRegularExpression name(u"^(ids_|IDD_|IDR_)[A-Za-z0-9_]+$"_s);
    std::vector<NameUse> out;
    for (const Literal& l : stringLiterals(code)) {
        const QString text = QString::fromStdString(l.text);
        if (name.match(text).hasMatch())
            out.push_back({file + u':' + QString::number(l.line), text});
    }
    return out;
}

TEST(CatalogChecks, CatchWhatTheyAreMeantToCatch) {
    EXPECT_EQ(conversions(u"Saved %d of %u files (%.1f%%), %s"_s),
              QStringList({u"%d"_s, u"%u"_s, u"%.1f"_s, u"%s"_s}));
    EXPECT_EQ(conversions(u"100%% done"_s), QStringList());
    EXPECT_EQ(conversions(u"%-5ld|%04X"_s), QStringList({u"%-5ld"_s, u"%04X"_s}));
    EXPECT_EQ(mnemonics(u"&Save && &Close"_s), 2);
    EXPECT_EQ(mnemonics(u"Fish && Chips"_s), 0);

    const std::string code = "// \"ids_in_line_comment\"\n"
                             "/* \"IDD_IN_BLOCK\"\n \"IDR_STILL_IN_BLOCK\" */\n"
                             "auto a = i18n_stringW(\"ids_used_here\");\n"
                             "auto b = \"ids_lanmira_fmtcolumn%d\"; auto q = \"say \\\"hi\\\"\";\n"
                             "char c = '\"'; auto d = \"IDR_AFTER_CHAR\";\n"
                             "auto e = R\"x(\"ids_raw\")x\"; auto g = R\"(IDD_RAW)\";\n"
                             "int n = 1'000'000; auto f = \"IDD_AFTER_SEPARATOR\";\n";
    QStringList found;
    for (const NameUse& u : namesIn(code, u"f.cpp"_s))
        found << u.where + u' ' + u.name;
    EXPECT_EQ(found, QStringList({u"f.cpp:4 ids_used_here"_s, u"f.cpp:6 IDR_AFTER_CHAR"_s,
                                  u"f.cpp:7 IDD_RAW"_s, u"f.cpp:8 IDD_AFTER_SEPARATOR"_s}));
}

TEST(CatalogCoverage, EveryNameUsedInCodeIsInEnglish) {
    ASSERT_TRUE(i18n_init(QString::fromUtf8(LANMIRA_BUILD_DIR) + u"/share/lanmira/i18n"_s, 0))
        << "the English catalog was not built";
    const Catalog english = readCatalog(catalogFolder() + u"/lanmira_en.ts"_s);
    ASSERT_TRUE(english.error.isEmpty()) << english.error.toStdString();
    QSet<QString> contexts;
    for (const CatalogEntry& e : english.entries)
        contexts.insert(e.context);

    const QDir root(QString::fromUtf8(LANMIRA_SOURCE_DIR));
    int files = 0;
    QStringList missing;
    for (const QString& top : {u"src"_s, u"libs"_s}) {
        QDirIterator it(root.filePath(top), {u"*.cpp"_s, u"*.h"_s}, QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            QFile file(path);
            ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
            ++files;
            for (const NameUse& use :
                 namesIn(file.readAll().toStdString(), root.relativeFilePath(path))) {
                const QByteArray name = use.name.toUtf8();
                const bool known = use.name.startsWith(u"ids_"_s)
                                       ? i18n_hasEnglish("strings", name.constData())
                                       : contexts.contains(use.name);
                if (!known)
                    missing << use.where + u": "_s + use.name;
            }
        }
    }
    i18n_reset();
    EXPECT_GT(files, 0) << "no sources found under " << root.path().toStdString();
    EXPECT_TRUE(missing.isEmpty()) << "names the English catalog lacks:\n"
                                   << missing.join(u'\n').toStdString();
}

TEST(CatalogCoverage, EnglishIsFinishedAndBuilt) {
    const Catalog english = readCatalog(catalogFolder() + u"/lanmira_en.ts"_s);
    ASSERT_TRUE(english.error.isEmpty()) << english.error.toStdString();
    ASSERT_FALSE(english.entries.empty());
    ASSERT_TRUE(i18n_init(QString::fromUtf8(LANMIRA_BUILD_DIR) + u"/share/lanmira/i18n"_s, 0));
    QStringList problems;
    QSet<QString> seen;
    for (const CatalogEntry& e : english.entries) {
        if (!e.finished)
            problems << key(e) + u": unfinished"_s;
        if (seen.contains(key(e)))
            problems << key(e) + u": twice"_s;
        seen.insert(key(e));
        if (e.context.startsWith(u"IDR_"_s) && mnemonics(e.translation) > 1)
            problems << key(e) + u": more than one mnemonic"_s;
        if (!i18n_hasEnglish(e.context.toUtf8().constData(), e.source.toUtf8().constData()))
            problems << key(e) + u": missing from the compiled catalog"_s;
    }
    i18n_reset();
    EXPECT_TRUE(problems.isEmpty()) << problems.join(u'\n').toStdString();
}

TEST(CatalogCoverage, TranslationsAgreeWithEnglish) {
    const Catalog english = readCatalog(catalogFolder() + u"/lanmira_en.ts"_s);
    ASSERT_TRUE(english.error.isEmpty()) << english.error.toStdString();
    QHash<QString, QString> englishText;
    for (const CatalogEntry& e : english.entries)
        englishText.insert(key(e), e.translation);

    QStringList others = QDir(catalogFolder()).entryList({u"lanmira_*.ts"_s}, QDir::Files);
    others.removeAll(u"lanmira_en.ts"_s);
    ASSERT_TRUE(others.contains(u"lanmira_de.ts"_s));
    QStringList problems;
    for (const QString& name : others) {
        const Catalog catalog = readCatalog(catalogFolder() + u'/' + name);
        if (!catalog.error.isEmpty()) {
            problems << catalog.error;
            continue;
        }
        for (const CatalogEntry& e : catalog.entries) {
            const QString where = name + u": "_s + key(e);
            const auto it = englishText.constFind(key(e));
            if (it == englishText.cend()) {
                problems << where + u": not in English"_s;
                continue;
            }
            if (e.translation.isEmpty())
                continue;
            if (conversions(e.translation) != conversions(*it))
                problems << where + u": conversions differ from \""_s + *it + u'"';
            if (e.context.startsWith(u"IDR_"_s) && mnemonics(e.translation) > 1)
                problems << where + u": more than one mnemonic"_s;
        }
    }
    EXPECT_TRUE(problems.isEmpty()) << problems.join(u'\n').toStdString();
}

} // namespace
