// Checks the catalogs against the code: every name the code uses must be in English, English
// must be finished and compiled, and other languages must agree with English on printf
// conversions and mnemonics. Names put together at run time ("ids_..%d") are not seen.
#include "i18n/i18n.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <QXmlStreamReader>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

struct Entry {
    QString context;
    QString source;
    QString translation;
    QString where; // file:line of the translation
    bool finished = false;
    QString key() const { return context + u'/' + source; }
};

std::vector<Entry> readCatalog(const QString& path, QStringList& problems) {
    std::vector<Entry> entries;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        problems << path + u": cannot open"_s;
        return entries;
    }
    QXmlStreamReader xml(&file);
    Entry entry;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == u"name") {
            entry.context = xml.readElementText();
        } else if (xml.name() == u"source") {
            entry.source = xml.readElementText();
        } else if (xml.name() == u"translation") {
            entry.where = path + u':' + QString::number(xml.lineNumber());
            const bool marked = xml.attributes().hasAttribute(u"type"_s);
            entry.translation = xml.readElementText();
            entry.finished = !marked && !entry.translation.isEmpty();
            entries.push_back(entry);
        }
    }
    if (xml.hasError())
        problems << path + u':' + QString::number(xml.lineNumber()) + u": "_s + xml.errorString();
    return entries;
}

// printf conversions in order; "%%" is a plain percent sign and not an argument.
QStringList conversions(const QString& text) {
    static const QRegularExpression re(
        uR"(%(%|[-+ #0]*(\d+|\*)?(\.(\d+|\*))?(hh|h|ll|l|L|j|z|t)?[diouxXeEfFgGaAcsp]))"_s);
    QStringList out;
    for (const auto& m : re.globalMatch(text))
        if (m.captured() != u"%%"_s)
            out << m.captured();
    return out;
}

// "&&" is a literal ampersand, not a mnemonic.
qsizetype mnemonics(const QString& text) {
    return QString(text).remove(u"&&"_s).count(u'&');
}

struct Literal {
    int line;
    QString text;
};

// A quote right after digits is a digit separator (1'000), not a character literal.
bool insideNumber(const std::string& code, std::size_t quote) {
    std::size_t start = quote;
    while (start > 0 && (std::isalnum(static_cast<unsigned char>(code[start - 1])) ||
                         std::string_view("_'.").find(code[start - 1]) != std::string_view::npos))
        --start;
    return start < quote && std::isdigit(static_cast<unsigned char>(code[start]));
}

// String literals that are exactly a catalog name, outside comments, with their line.
std::vector<Literal> namesIn(const std::string& code) {
    static const QRegularExpression name(u"^(ids_|IDD_|IDR_)[A-Za-z0-9_]+$"_s);
    std::vector<Literal> out;
    int line = 1;
    std::size_t i = 0;
    const std::size_t n = code.size();
    auto advance = [&](std::size_t to) {
        for (; i < to && i < n; ++i)
            line += code[i] == '\n';
    };
    auto keep = [&](std::size_t from, std::size_t to) {
        const QString text = QString::fromStdString(code.substr(from, to - from));
        if (name.match(text).hasMatch())
            out.push_back({line, text});
    };
    while (i < n) {
        const char c = code[i];
        if (c == '/' && i + 1 < n && (code[i + 1] == '/' || code[i + 1] == '*')) {
            const bool block = code[i + 1] == '*';
            const std::size_t end = code.find(block ? "*/" : "\n", i + 2);
            advance(end == std::string::npos ? n : end + (block ? 2 : 0));
        } else if (c == '"' && i > 0 && code[i - 1] == 'R') {
            const std::size_t open = code.find('(', i);
            const std::string close = ")" + code.substr(i + 1, open - i - 1) + "\"";
            const std::size_t end = open == std::string::npos ? open : code.find(close, open);
            if (end == std::string::npos)
                break;
            keep(open + 1, end);
            advance(end + close.size());
        } else if (c == '"' || (c == '\'' && !insideNumber(code, i))) {
            std::size_t j = i + 1;
            while (j < n && code[j] != c && code[j] != '\n')
                j += code[j] == '\\' ? 2 : 1;
            if (c == '"')
                keep(i + 1, std::min(j, n));
            advance(j + 1);
        } else {
            advance(i + 1);
        }
    }
    return out;
}

QStringList selfTest() {
    QStringList found;
    for (const Literal& l : namesIn("// \"ids_in_line_comment\"\n"
                                    "/* \"IDD_IN_BLOCK\"\n \"IDR_STILL_IN_BLOCK\" */\n"
                                    "auto a = i18n_stringW(\"ids_used_here\");\n"
                                    "auto b = \"ids_x_fmtcolumn%d\"; auto q = \"say \\\"hi\\\"\";\n"
                                    "char c = '\"'; auto d = \"IDR_AFTER_CHAR\";\n"
                                    "auto e = R\"x(\"ids_raw\")x\"; auto g = R\"(IDD_RAW)\";\n"
                                    "int n = 1'000; auto f = \"IDD_AFTER_SEPARATOR\";\n"))
        found << QString::number(l.line) + u' ' + l.text;
    const std::pair<QStringList, QStringList> cases[] = {
        {found,
         {u"4 ids_used_here"_s, u"6 IDR_AFTER_CHAR"_s, u"7 IDD_RAW"_s, u"8 IDD_AFTER_SEPARATOR"_s}},
        {conversions(u"Saved %d of %u files (%.1f%%), %s"_s),
         {u"%d"_s, u"%u"_s, u"%.1f"_s, u"%s"_s}},
        {conversions(u"100%% done, %-5ld|%04X"_s), {u"%-5ld"_s, u"%04X"_s}},
        {{QString::number(mnemonics(u"&Save && &Close, Fish &&& Chips"_s))}, {u"3"_s}},
    };
    QStringList failures;
    for (const auto& [got, expected] : cases)
        if (got != expected)
            failures << u"self-test: got \""_s + got.join(u", "_s) + u"\", expected \""_s +
                            expected.join(u", "_s) + u'"';
    return failures;
}

QStringList check(const QDir& sources, const QDir& tsDir, const QDir& qmDir) {
    QStringList problems;
    if (!i18n_init(qmDir.absolutePath(), 0))
        problems << qmDir.filePath(u"lanmira_en.qm"_s) + u": cannot load"_s;
    QStringList catalogs = tsDir.entryList({u"lanmira_*.ts"_s}, QDir::Files);
    catalogs.removeAll(u"lanmira_en.ts"_s);
    catalogs.prepend(u"lanmira_en.ts"_s); // the others are compared with it
    QHash<QString, QString> english;
    QSet<QString> contexts;
    for (const QString& catalog : catalogs) {
        const bool isEnglish = catalog == catalogs.first();
        for (const Entry& e : readCatalog(tsDir.filePath(catalog), problems)) {
            const QString where = e.where + u": "_s + e.key() + u": "_s;
            if (e.context.startsWith(u"IDR_"_s) && mnemonics(e.translation) > 1)
                problems << where + u"more than one mnemonic"_s;
            const auto it = english.constFind(e.key());
            if (!isEnglish) {
                if (it == english.cend())
                    problems << where + u"not in English"_s;
                else if (!e.translation.isEmpty() && conversions(e.translation) != conversions(*it))
                    problems << where + u"conversions differ from English \""_s + *it + u'"';
                continue;
            }
            if (!e.finished)
                problems << where + u"unfinished"_s;
            if (it != english.cend())
                problems << where + u"twice"_s;
            if (!i18n_hasEnglish(e.context.toUtf8().constData(), e.source.toUtf8().constData()))
                problems << where + u"missing from the compiled catalog"_s;
            english.insert(e.key(), e.translation);
            contexts.insert(e.context);
        }
    }

    int files = 0;
    for (const QString& top : {u"src"_s, u"libs"_s}) {
        QDirIterator it(sources.filePath(top), {u"*.cpp"_s, u"*.h"_s}, QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            QFile file(it.next());
            if (!file.open(QIODevice::ReadOnly)) {
                problems << file.fileName() + u": cannot open"_s;
                continue;
            }
            ++files;
            for (const Literal& use : namesIn(file.readAll().toStdString())) {
                const bool known = use.text.startsWith(u"ids_"_s)
                                       ? i18n_hasEnglish("strings", use.text.toUtf8().constData())
                                       : contexts.contains(use.text);
                if (!known)
                    problems << file.fileName() + u':' + QString::number(use.line) + u": "_s +
                                    use.text + u" is not in the English catalog"_s;
            }
        }
    }
    if (files == 0)
        problems << sources.path() + u": no sources under src/ or libs/"_s;
    return problems;
}

} // namespace

int main(int argc, char** argv) {
    QStringList problems;
    if (argc == 2 && std::string(argv[1]) == "--self-test") {
        problems = selfTest();
    } else if (argc == 4) {
        problems = check(QDir(QFile::decodeName(argv[1])), QDir(QFile::decodeName(argv[2])),
                         QDir(QFile::decodeName(argv[3])));
    } else {
        std::fputs("Usage: lanmira-catalog-check SOURCE_DIR CATALOG_TS_DIR QM_DIR\n"
                   "       lanmira-catalog-check --self-test\n",
                   stderr);
        return 2;
    }
    for (const QString& p : problems)
        std::printf("%s\n", p.toUtf8().constData());
    return problems.isEmpty() ? 0 : 1;
}
