#include "browser/filetypes/FormatWordsApplier.h"

#include "browser/BrowserList.h"
#include "browser/BrowserSettings.h"
#include "browser/filetypes/DesktopEntryWriter.h"
#include "browser/filetypes/MimeAppsList.h"
#include "imagelib/imagelib.h"
#include "platform/XdgPaths.h"
#include "settings/AtomicWrite.h"
#include "settings/IniText.h"
#include "settings/RegistryKey.h"

#include <QCoreApplication>
#include <QFile>
#include <QMimeDatabase>
#include <QProcess>
#include <QStandardPaths>
#include <QThreadPool>

#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>

using namespace Qt::StringLiterals;

namespace lanmira {

namespace {

constexpr const char* kShellKey = "Software\\Vornalt\\Lanmira\\Shell";
// A previous default this long is not one any desktop wrote; it is not worth keeping.
constexpr std::size_t kMaxSavedBytes = 260;
// Larger than any real mimeapps.list; such a file is left alone rather than rewritten.
constexpr qint64 kMaxListBytes = 16 * 1024 * 1024;

// One thread, so the applies reach the files in the order they were made.
QThreadPool& writer() {
    static QThreadPool pool;
    static const bool once = [] {
        pool.setMaxThreadCount(1);
        return true;
    }();
    (void)once;
    return pool;
}

std::string ourEntry() {
    return DesktopEntryWriter::kFileName;
}

bool worthSaving(const std::optional<std::string>& value) {
    return value && !value->empty() && value->size() < kMaxSavedBytes &&
           !FormatWordsApplier::isOurs(*value);
}

// The file's bytes, or nothing when it exists but cannot be read whole.
std::optional<std::string> readList(const QString& path) {
    QFile file(path);
    if (!file.exists())
        return std::string();
    if (file.size() > kMaxListBytes || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;
    return bytes.toStdString();
}

} // namespace

FormatWordsApplier::FormatWordsApplier(QString company, QString app, Environment environment)
    : m_company(std::move(company)), m_app(std::move(app)), m_env(std::move(environment)) {
    if (m_env.configHome.empty())
        m_env.configHome = settings::configHome();
    if (m_env.dataHome.isEmpty())
        m_env.dataHome = XdgPaths::dataHome();
    if (m_env.programPath.isEmpty())
        m_env.programPath = QCoreApplication::applicationFilePath();
    if (!m_env.mimeTypesOf)
        m_env.mimeTypesOf = &FormatWordsApplier::mimeTypesFromDatabase;
}

QStringList FormatWordsApplier::mimeTypesFromDatabase(const QString& extension) {
    QStringList names;
    const QMimeDatabase db;
    for (const QMimeType& type : db.mimeTypesForFileName(u"x."_s + extension))
        names << type.name();
    return names;
}

bool FormatWordsApplier::isOurs(std::string_view value) {
    const std::string_view first = settings::initext::trim(value.substr(0, value.find(';')));
    return settings::initext::equalsIgnoringCase(first, DesktopEntryWriter::kFileName);
}

bool FormatWordsApplier::apply(BrowserList& list, const Words& words) const {
    if (words == list.formatFilter)
        return false;
    const Words before = list.formatFilter;
    {
        // The worker lets go of the list after at most one more item.
        list.stopRequest.store(BrowserList::kStopAbandon);
        const std::scoped_lock lock(list.lock());
        list.formatFilter = words;
    }
    writer().start(
        [applier = *this, before, words, key = list.sortKey, direction = list.sortDirection,
         large = list.largeMode] { applier.writeFiles(before, words, key, direction, large); });
    return true;
}

void FormatWordsApplier::waitForWrites() {
    writer().waitForDone();
}

bool FormatWordsApplier::writeFiles(const Words& before, const Words& after, std::int32_t sortKey,
                                    std::int32_t sortDirection, std::int32_t largeMode) const {
    const bool associations = changeAssociations(before, after);
    BrowserList values;
    values.formatFilter = after;
    values.sortKey = sortKey;
    values.sortDirection = sortDirection;
    values.largeMode = largeMode;
    BrowserSettings(m_company, m_app, m_env.configHome).save(values);
    if (associations)
        notifyDesktop(m_env.dataHome);
    return associations;
}

FormatWordsApplier::Plan FormatWordsApplier::plan(const std::string& original, const Words& before,
                                                  const Words& after, bool takeOver) const {
    Plan plan{MimeAppsList::parse(original), {}, false};
    const settings::RegistryKey shell(kShellKey, m_env.configHome);
    constexpr std::string_view group = MimeAppsList::kDefaultApplications;
    // What each type's default was before this call changed it, so every extension that
    // shares a type (jpg, jpeg, jpe) remembers the same previous application.
    std::map<std::string, std::optional<std::string>> previous;
    // Types whose default this call removed: a later extension of the same type may still
    // have a saved default to give back.
    std::set<std::string> cleared;

    for (const ImageLibExtFmt* row = ImageLib_ExtFmt(); row && row->ext; ++row) {
        if (row->format >= before.size() || ((before[row->format] ^ after[row->format]) & 2) == 0)
            continue;
        const std::string type = mainType(row->ext);
        if (type.empty())
            continue;
        const std::string savedName = std::string(".") + row->ext;
        const std::optional<std::string> current = plan.list.value(group, type);
        previous.try_emplace(type, current);

        if (after[row->format] & 2) {
            if (!takeOver)
                continue;
            if (worthSaving(previous[type]))
                plan.saves.emplace_back(savedName, *previous[type]);
            plan.changed = plan.list.setValue(group, type, ourEntry()) || plan.changed;
            cleared.erase(type);
            continue;
        }

        // Giving back touches only a default that is still ours: another program that took
        // the type since keeps it.
        const bool ours = current && isOurs(*current);
        if (!ours && !cleared.contains(type))
            continue;
        const std::optional<std::string> saved = shell.readString("", savedName, "");
        if (worthSaving(saved)) {
            plan.changed = plan.list.setValue(group, type, *saved) || plan.changed;
            cleared.erase(type);
        } else if (ours) {
            plan.changed = plan.list.remove(group, type) || plan.changed;
            cleared.insert(type);
        }
    }
    return plan;
}

std::string FormatWordsApplier::mainType(const char* extension) const {
    // The desktop files an extension under its main type; that is the one to take.
    const QStringList types = m_env.mimeTypesOf(QString::fromUtf8(extension));
    return types.isEmpty() ? std::string() : types.front().toStdString();
}

QStringList FormatWordsApplier::typesOurs(const MimeAppsList& list) const {
    QStringList types;
    for (const ImageLibExtFmt* row = ImageLib_ExtFmt(); row && row->ext; ++row) {
        const std::string type = mainType(row->ext);
        const auto value = list.value(MimeAppsList::kDefaultApplications, type);
        if (!type.empty() && value && isOurs(*value) &&
            !types.contains(QString::fromStdString(type)))
            types << QString::fromStdString(type);
    }
    return types;
}

bool FormatWordsApplier::changeAssociations(const Words& before, const Words& after) const {
    bool any = false;
    for (std::size_t f = 0; f < before.size(); ++f)
        any = any || ((before[f] ^ after[f]) & 2) != 0;
    if (!any)
        return false;

    const QString listPath = QString::fromStdString((m_env.configHome / "mimeapps.list").string());
    const std::optional<std::string> original = readList(listPath);
    if (!original)
        return false;
    Plan plan = this->plan(*original, before, after, true);

    // The entry declares exactly the types it is the default for, so that a type given back
    // with no earlier default does not fall to us through the desktop's fallback either.
    const QStringList ours = typesOurs(plan.list);
    const QString entryPath = DesktopEntryWriter::applicationsFolder(m_env.dataHome) + u'/' +
                              QString::fromLatin1(DesktopEntryWriter::kFileName);
    auto entry = DesktopEntryWriter::Unchanged;
    if (!ours.isEmpty() || QFile::exists(entryPath))
        entry = DesktopEntryWriter::ensure(
            m_env.dataHome, DesktopEntryWriter::entryText(m_app, m_env.programPath, ours));
    // A default naming an entry that is missing or does not list the type would leave the
    // files with no application at all: only give back.
    if (entry == DesktopEntryWriter::Failed)
        plan = this->plan(*original, before, after, false);

    const settings::RegistryKey shell(kShellKey, m_env.configHome);
    for (const auto& [name, value] : plan.saves)
        shell.writeString("", name, value);
    const bool listWritten =
        plan.changed &&
        settings::writeFileAtomically(QFile::encodeName(listPath).toStdString(), plan.list.text());
    return listWritten || entry == DesktopEntryWriter::Written;
}

void FormatWordsApplier::notifyDesktop(const QString& dataHome) {
    const QString tool = QStandardPaths::findExecutable(u"update-desktop-database"_s);
    if (tool.isEmpty())
        return;
    QProcess::startDetached(tool, {u"-q"_s, DesktopEntryWriter::applicationsFolder(dataHome)});
}

} // namespace lanmira
