#include "browser/fileops/FileOpQuestions.h"

#include "i18n/i18n.h"

#include <QCheckBox>
#include <QMessageBox>
#include <QPushButton>

namespace lanmira {
namespace {

FileOpQuestions::Handler& handler() {
    static FileOpQuestions::Handler h;
    return h;
}

QPushButton* addButton(QMessageBox& box, const char* name, QMessageBox::ButtonRole role) {
    QPushButton* b = box.addButton(i18n_stringW(name), role);
    b->setAccessibleName(b->text().remove(u'&'));
    return b;
}

} // namespace

void FileOpQuestions::setHandler(Handler h) {
    handler() = std::move(h);
}

FileOpQuestions::Answer FileOpQuestions::ask(QWidget* parent, Kind kind, const QString& text,
                                             bool* applyToAll) {
    if (handler())
        return handler()(kind, text, applyToAll);
    const QString title =
        i18n_stringW(kind == Kind::OkCancel || kind == Kind::Report ? "ids_lanmira_appname"
                                                                    : "ids_lanmira_transfer_title");
    QMessageBox box(parent);
    box.setWindowTitle(title);
    box.setText(text);
    Answer answer = Cancel;
    switch (kind) {
    case Kind::Conflict: {
        box.setIcon(QMessageBox::Question);
        QPushButton* replace =
            addButton(box, "ids_lanmira_transfer_replace", QMessageBox::AcceptRole);
        QPushButton* skip = addButton(box, "ids_lanmira_transfer_skip", QMessageBox::RejectRole);
        QPushButton* cancel =
            addButton(box, "ids_lanmira_transfer_cancel", QMessageBox::DestructiveRole);
        auto* all = new QCheckBox(i18n_stringW("ids_lanmira_transfer_all"), &box);
        all->setAccessibleName(all->text().remove(u'&'));
        box.setCheckBox(all);
        box.setDefaultButton(replace);
        box.setEscapeButton(cancel);
        box.exec();
        if (box.clickedButton() == replace)
            answer = Replace;
        else if (box.clickedButton() == skip)
            answer = Skip;
        if (applyToAll)
            *applyToAll = all->isChecked();
        break;
    }
    case Kind::Replace: {
        box.setIcon(QMessageBox::Question);
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        const int b = box.exec();
        answer = b == QMessageBox::Yes ? Yes : b == QMessageBox::No ? No : Cancel;
        break;
    }
    case Kind::OkCancel:
        box.setIcon(QMessageBox::Warning);
        box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
        answer = box.exec() == QMessageBox::Ok ? Ok : Cancel;
        break;
    case Kind::Report:
        box.setIcon(QMessageBox::Warning);
        box.setStandardButtons(QMessageBox::Ok);
        box.exec();
        answer = Ok;
        break;
    }
    // Without a window manager nobody gives the keyboard back to the window.
    if (parent)
        parent->window()->activateWindow();
    return answer;
}

} // namespace lanmira
