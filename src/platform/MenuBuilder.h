#pragma once

#include "platform/MenuResource.h"

#include <QKeySequence>
#include <QList>
#include <QString>

class QMenu;
class QMenuBar;

namespace lanmira {

class CommandRouter;

// A localised menu text split into its label and its shortcuts: "&Refresh\tF5".
struct MenuText {
    QString label;
    QList<QKeySequence> shortcuts;
};

class MenuBuilder {
public:
    // Understands the shortcut spellings the catalogs use: "Ctrl+PageDown", "NumPad*",
    // "Ctrl+NumPad/", "Pause", "Insert" and "[Shift+]Delete" (both with and without Shift).
    static MenuText parse(const QString& text);
    static QList<QKeySequence> parseShortcut(const QString& shortcut);

    static void fillMenuBar(QMenuBar* bar, const MenuResource& menu, CommandRouter& router);
    static void fillMenu(QMenu* target, const std::string& menuName,
                         const std::vector<MenuEntry>& entries, CommandRouter& router);
};

} // namespace lanmira
