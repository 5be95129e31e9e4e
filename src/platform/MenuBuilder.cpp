#include "platform/MenuBuilder.h"

#include "i18n/i18n.h"
#include "platform/CommandRouter.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>

namespace lanmira {
namespace {

QString keyName(const QString& word) {
    // The catalogs spell a few keys the way the other desktop does.
    if (word.compare(u"PageUp", Qt::CaseInsensitive) == 0)
        return QStringLiteral("PgUp");
    if (word.compare(u"PageDown", Qt::CaseInsensitive) == 0)
        return QStringLiteral("PgDown");
    if (word.compare(u"Insert", Qt::CaseInsensitive) == 0)
        return QStringLiteral("Ins");
    if (word.compare(u"Delete", Qt::CaseInsensitive) == 0)
        return QStringLiteral("Del");
    return word;
}

QKeySequence oneShortcut(QString text) {
    bool keypad = false;
    QStringList parts;
    // Split on '+', but a '+' at the end is the key itself ("Ctrl+NumPad+", "Ctrl++").
    QString current;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == u'+' && !current.isEmpty() && i + 1 < text.size()) {
            parts << current;
            current.clear();
        } else {
            current += c;
        }
    }
    if (!current.isEmpty())
        parts << current;
    if (parts.isEmpty())
        return {};
    QString key = parts.takeLast();
    if (key.startsWith(u"NumPad", Qt::CaseInsensitive)) {
        keypad = true;
        key = key.mid(6);
    }
    parts << keyName(key);
    QKeySequence seq = QKeySequence::fromString(parts.join(u'+'), QKeySequence::PortableText);
    if (seq.isEmpty())
        return {};
    if (keypad)
        seq = QKeySequence(seq[0].toCombined() | Qt::KeypadModifier);
    return seq;
}

} // namespace

QList<QKeySequence> MenuBuilder::parseShortcut(const QString& shortcut) {
    QString s = shortcut.trimmed();
    QList<QKeySequence> out;
    if (s.isEmpty())
        return out;
    // "[Shift+]Delete": the command answers with and without the optional modifier.
    const qsizetype open = s.indexOf(u'[');
    const qsizetype close = s.indexOf(u']');
    if (open >= 0 && close > open) {
        const QString without = s.left(open) + s.mid(close + 1);
        const QString with = s.left(open) + s.mid(open + 1, close - open - 1) + s.mid(close + 1);
        for (const QString& variant : {without, with}) {
            const QKeySequence k = oneShortcut(variant);
            if (!k.isEmpty())
                out << k;
        }
        return out;
    }
    const QKeySequence k = oneShortcut(s);
    if (!k.isEmpty())
        out << k;
    return out;
}

MenuText MenuBuilder::parse(const QString& text) {
    MenuText out;
    const qsizetype tab = text.indexOf(u'\t');
    if (tab < 0) {
        out.label = text;
        return out;
    }
    out.label = text.left(tab);
    out.shortcuts = parseShortcut(text.mid(tab + 1));
    return out;
}

void MenuBuilder::fillMenu(QMenu* target, const std::string& menuName,
                           const std::vector<MenuEntry>& entries, CommandRouter& router) {
    for (const MenuEntry& e : entries) {
        switch (e.kind) {
        case MenuEntry::Kind::Separator:
            target->addSeparator();
            break;
        case MenuEntry::Kind::Popup: {
            auto* sub = target->addMenu(
                MenuBuilder::parse(i18n_menuText(menuName.c_str(), e.key.c_str())).label);
            // Popups filled when they open are found by their key.
            sub->setObjectName(QString::fromStdString(e.key));
            fillMenu(sub, menuName, e.children, router);
            router.watchMenu(sub);
            break;
        }
        case MenuEntry::Kind::Item: {
            QAction* a = router.action(e.id);
            const QByteArray key = QByteArray::number(e.id);
            const MenuText t = MenuBuilder::parse(i18n_menuText(menuName.c_str(), key.constData()));
            a->setText(t.label);
            a->setShortcuts(t.shortcuts);
            target->addAction(a);
            break;
        }
        }
    }
}

void MenuBuilder::fillMenuBar(QMenuBar* bar, const MenuResource& menu, CommandRouter& router) {
    for (const MenuEntry& e : menu.entries) {
        if (e.kind != MenuEntry::Kind::Popup)
            continue;
        QMenu* popup =
            bar->addMenu(MenuBuilder::parse(i18n_menuText(menu.name.c_str(), e.key.c_str())).label);
        popup->setObjectName(QString::fromStdString(e.key));
        fillMenu(popup, menu.name, e.children, router);
        router.watchMenu(popup);
    }
}

} // namespace lanmira
