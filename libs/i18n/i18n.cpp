#include "i18n/i18n.h"

#include "i18n/LanguageSelection.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QMetaProperty>
#include <QObject>
#include <QTranslator>
#include <QVariant>

#include <memory>
#include <mutex>
#include <shared_mutex>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

struct Catalogs {
    std::unique_ptr<QTranslator> english;
    std::unique_ptr<QTranslator> user; // null when the user's language is English
    QString language;
};

struct Library {
    std::shared_mutex mutex; // guards catalogs
    Catalogs catalogs;
};

Library& library() {
    static Library lib;
    return lib;
}

QString programFolder() {
    if (QCoreApplication::instance())
        return QCoreApplication::applicationDirPath();
    // Tool and test executables may ask for texts before (or without) an application
    // object; the kernel still knows where the executable lies.
    return QFileInfo(u"/proc/self/exe"_s).canonicalPath();
}

QString catalogPath(const QDir& dir, const QString& language) {
    return dir.filePath(u"lanmira_"_s + language + u".qm"_s);
}

std::unique_ptr<QTranslator> loadCatalog(const QString& path) {
    // QTranslator::load falls back to shorter names (lanmira_de_AT → lanmira_de → lanmira)
    // on its own; only the exact file is wanted here.
    if (!QFileInfo(path).isFile())
        return nullptr;
    auto catalog = std::make_unique<QTranslator>();
    if (!catalog->load(path))
        return nullptr;
    return catalog;
}

void replaceCatalogs(Catalogs next) {
    Library& lib = library();
    {
        std::unique_lock lock(lib.mutex);
        std::swap(lib.catalogs, next);
    }
    // `next` now holds the old catalogs and is freed here, outside the lock.
}

// Empty when neither catalog has the text.
QString lookup(const char* context, const char* source) {
    if (!context || !source)
        return {};
    Library& lib = library();
    std::shared_lock lock(lib.mutex);
    for (const QTranslator* catalog : {lib.catalogs.user.get(), lib.catalogs.english.get()}) {
        if (!catalog)
            continue;
        QString text = catalog->translate(context, source);
        if (!text.isEmpty())
            return text;
    }
    return {};
}

bool writeProperty(QObject* object, const char* name, const QString& value) {
    const QMetaObject* meta = object->metaObject();
    const int index = meta->indexOfProperty(name);
    if (index < 0)
        return false;
    const QMetaProperty property = meta->property(index);
    return property.isWritable() && property.write(object, value);
}

bool applyText(QObject* object, const QString& text) {
    return writeProperty(object, "text", text) || writeProperty(object, "title", text);
}

} // namespace

bool i18n_init(const QString& folder, [[maybe_unused]] int flags) {
    const QDir dir(QDir::isAbsolutePath(folder) ? folder : QDir(programFolder()).filePath(folder));
    Catalogs next;
    next.english = loadCatalog(catalogPath(dir, u"en"_s));
    if (!next.english) {
        replaceCatalogs({});
        return false;
    }
    next.language = u"en"_s;
    const QString language = lanmira::i18n::LanguageSelection::fromProcess().choose(
        [&dir](const QString& l) { return QFileInfo(catalogPath(dir, l)).isFile(); });
    if (language != u"en"_s) {
        // A damaged catalog leaves the user with English rather than with nothing.
        next.user = loadCatalog(catalogPath(dir, language));
        if (next.user)
            next.language = language;
    }
    replaceCatalogs(std::move(next));
    return true;
}

void i18n_reset() {
    replaceCatalogs({});
}

QString i18n_stringW(const char* name) {
    QString text = lookup("strings", name);
    if (text.isEmpty() && name)
        text = QString::fromUtf8(name);
    return text;
}

QString i18n_dialogText(const char* dialog, int controlId) {
    const QByteArray id = QByteArray::number(controlId);
    QString text = lookup(dialog, id.constData());
    if (text.isEmpty())
        text = QString::fromLatin1(id);
    return text;
}

QString i18n_menuText(const char* menu, const char* key) {
    QString text = lookup(menu, key);
    if (text.isEmpty() && key)
        text = QString::fromUtf8(key);
    return text;
}

int i18n_dialog(QObject* dialog, const char* dialogName) {
    if (!dialog || !dialogName)
        return 0;
    int changed = 0;
    const QString caption = lookup(dialogName, "0");
    if (!caption.isEmpty() && writeProperty(dialog, "windowTitle", caption))
        ++changed;
    const QList<QObject*> children = dialog->findChildren<QObject*>();
    for (QObject* child : children) {
        const QVariant idValue = child->property("i18nId");
        if (!idValue.isValid())
            continue;
        bool ok = false;
        const int id = idValue.toInt(&ok);
        if (ok && applyText(child, i18n_dialogText(dialogName, id)))
            ++changed;
    }
    return changed;
}

int i18n_menu(QObject* root, const char* menuName) {
    if (!root || !menuName)
        return 0;
    int changed = 0;
    QList<QObject*> objects = root->findChildren<QObject*>();
    objects.prepend(root);
    for (QObject* object : objects) {
        const QByteArray key = object->property("i18nKey").toByteArray();
        if (!key.isEmpty() && applyText(object, i18n_menuText(menuName, key.constData())))
            ++changed;
    }
    return changed;
}

QString i18n_language() {
    Library& lib = library();
    std::shared_lock lock(lib.mutex);
    return lib.catalogs.language;
}

bool i18n_hasEnglish(const char* context, const char* source) {
    if (!context || !source)
        return false;
    Library& lib = library();
    std::shared_lock lock(lib.mutex);
    return lib.catalogs.english && !lib.catalogs.english->translate(context, source).isEmpty();
}
