#pragma once

#include <QString>

class QObject;

// Every user-visible text is fetched by name from the catalogs lanmira_<language>.qm.
// Context "strings" holds the named texts; a dialog's context holds its control ids in
// decimal ("0" is the caption); a menu's context holds command ids in decimal and the
// lower-case keys of its popups. Texts with arguments use printf conversions.
//
// A name missing from the user's language falls back to English, and one missing there
// too comes back as the name itself, so a gap shows on screen instead of a blank.
// Lookups may come from any thread.

// Loads English from `folder` (relative to the program folder unless absolute) as the
// complete fallback, and the user's language on top when a catalog for it exists. `flags`
// is reserved and must be 0. Returns false when not even English could be loaded; the
// lookups then return the names. Calling it again replaces what was loaded.
bool i18n_init(const QString& folder, int flags);

// Forgets every catalog, as before the first i18n_init (lets tests start clean).
void i18n_reset();

QString i18n_stringW(const char* name);
QString i18n_dialogText(const char* dialog, int controlId);
QString i18n_menuText(const char* menu, const char* key);

// Localises a dialog tree in place: the root's "windowTitle" from id 0 when the catalog has
// it, and every descendant carrying the dynamic int property "i18nId" gets its "text"
// property, or its "title" when it has no writable "text". Returns the objects changed.
int i18n_dialog(QObject* dialog, const char* dialogName);

// The same for a menu tree, by the dynamic property "i18nKey" (a QByteArray or QString
// holding a command id in decimal or a popup key); the root itself is included.
int i18n_menu(QObject* root, const char* menuName);

// The catalog language in use ("de", "en"); empty when nothing is loaded.
QString i18n_language();

// Whether the English catalog has a text for `source` in `context`.
bool i18n_hasEnglish(const char* context, const char* source);
