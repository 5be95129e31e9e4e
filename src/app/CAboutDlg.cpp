#include "app/CAboutDlg.h"

#include "app/ProductVersion.h"
#include "i18n/i18n.h"
#include "platform/TextFormat.h"
#include "vnupdate/vnupdate.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#ifndef LANMIRA_BUILD_DATE
#define LANMIRA_BUILD_DATE __DATE__
#endif

namespace lanmira {
namespace {
constexpr char kDialog[] = "IDD_ABOUTBOX";
constexpr int kProductLabel = 1001;
constexpr int kVersionLabel = 1002;
constexpr int kBuildLabel = 1003;
constexpr int kCopyrightLabel = 1004;
constexpr int kOkButton = 1;
} // namespace

const char* CAboutDlg::dialogName() {
    return kDialog;
}

std::vector<int> CAboutDlg::controlIds() {
    return {0, kOkButton, kProductLabel, kVersionLabel, kBuildLabel, kCopyrightLabel};
}

QString CAboutDlg::buildDate() {
    return QStringLiteral(LANMIRA_BUILD_DATE);
}

CAboutDlg::CAboutDlg(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("CAboutDlg"));
    setWindowTitle(i18n_dialogText(kDialog, 0));

    auto* icon = new QLabel(this);
    icon->setPixmap(QApplication::windowIcon().pixmap(64, 64));
    icon->setAlignment(Qt::AlignTop);

    auto* product = new QLabel(i18n_dialogText(kDialog, kProductLabel), this);
    QFont bold = product->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.4);
    product->setFont(bold);
    product->setObjectName(QStringLiteral("product"));

    auto* version = new QLabel(
        formatText(i18n_dialogText(kDialog, kVersionLabel), {LANMIRA_VERSION_TEXT}), this);
    version->setObjectName(QStringLiteral("version"));
    auto* build =
        new QLabel(formatText(i18n_dialogText(kDialog, kBuildLabel), {buildDate()}), this);
    build->setObjectName(QStringLiteral("buildDate"));
    auto* copyright = new QLabel(i18n_dialogText(kDialog, kCopyrightLabel), this);

    auto* texts = new QVBoxLayout;
    texts->addWidget(product);
    texts->addWidget(version);
    texts->addWidget(build);
    const QString updateText = QString::fromUtf8(vnupdate_get(VNUPDATE_TEXT));
    if (!updateText.isEmpty()) {
        auto* update =
            new QLabel(formatText(i18n_stringW("ids_lanmira_update"), {updateText}), this);
        update->setObjectName(QStringLiteral("updateText"));
        update->setWordWrap(true);
        update->setTextInteractionFlags(Qt::TextBrowserInteraction);
        texts->addWidget(update);
    }
    texts->addSpacing(8);
    texts->addWidget(copyright);

    auto* top = new QHBoxLayout;
    top->addWidget(icon);
    top->addSpacing(12);
    top->addLayout(texts, 1);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    buttons->button(QDialogButtonBox::Ok)->setText(i18n_dialogText(kDialog, kOkButton));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

} // namespace lanmira
