// The manager's "select source" dialog, kept in its own plug-in so the manager needs no
// toolkit. Without a Qt application it does not ask, and the manager takes its default.

#include "i18n/i18n.h"
#include "twain/twain.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include <mutex>

namespace {

QString text(const char* name) {
    static std::once_flag once;
    std::call_once(once, [] { i18n_init(QStringLiteral("../share/lanmira/i18n"), 0); });
    return i18n_stringW(name);
}

QString fixed(const char* field, std::size_t size) {
    std::size_t n = 0;
    while (n < size && field[n])
        ++n;
    return QString::fromUtf8(field, static_cast<qsizetype>(n));
}

} // namespace

extern "C" __attribute__((visibility("default"))) int
twaindsm_choose(void* parent, const TW_IDENTITY* sources, int count, int current) {
    if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
        return current;
    auto* object = static_cast<QObject*>(parent);
    QWidget* owner = object && object->isWidgetType() ? static_cast<QWidget*>(object) : nullptr;

    QDialog dialog(owner);
    dialog.setObjectName(QStringLiteral("SourceChooser"));
    dialog.setWindowTitle(text("ids_lanmira_twain_select_title"));
    auto* label = new QLabel(text("ids_lanmira_twain_select_sources"), &dialog);
    auto* list = new QListWidget(&dialog);
    list->setObjectName(QStringLiteral("sourceList"));
    list->setAccessibleName(label->text().remove(QLatin1Char('&')));
    label->setBuddy(list);
    for (int i = 0; i < count; ++i) {
        const TW_IDENTITY& s = sources[i];
        const QString maker = fixed(s.Manufacturer, sizeof s.Manufacturer);
        const QString family = fixed(s.ProductFamily, sizeof s.ProductFamily);
        QString line = fixed(s.ProductName, sizeof s.ProductName);
        if (!maker.isEmpty() || !family.isEmpty())
            line +=
                QStringLiteral(" \u2014 ") + QString(maker + QLatin1Char(' ') + family).trimmed();
        list->addItem(line);
    }
    list->setCurrentRow(current >= 0 && current < count ? current : 0);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    QObject::connect(list, &QListWidget::itemActivated, &dialog, &QDialog::accept);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(label);
    layout->addWidget(list);
    layout->addWidget(buttons);
    dialog.resize(420, 260);
    list->setFocus();
    if (dialog.exec() != QDialog::Accepted || !list->currentItem())
        return -1;
    return list->currentRow();
}
