#include "viewer/CFmtDlg.h"

#include "i18n/i18n.h"
#include "platform/DialogButtons.h"
#include "viewer/CFmtListCtrl.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>

namespace lanmira {

namespace {
constexpr char kDialog[] = "IDD_IMAGEFMT";
constexpr int kOk = 1;
constexpr int kCancel = 2;
constexpr int kList = 1047;
constexpr int kDefault = 1048;
} // namespace

const char* CFmtDlg::dialogName() {
    return kDialog;
}

std::vector<int> CFmtDlg::controlIds() {
    return {0, kOk, kCancel, kDefault};
}

CFmtDlg::CFmtDlg(const QString& appName, const FormatListLogic::Words& words, QWidget* parent)
    : QDialog(parent), m_list(new CFmtListCtrl(appName, words, this)) {
    setObjectName(QStringLiteral("CFmtDlg"));
    m_list->setProperty("controlId", kList);

    auto* buttons = makeOkCancelButtons(this);
    QPushButton* byDefault = buttons->addButton(QString(), QDialogButtonBox::ResetRole);
    byDefault->setObjectName(QStringLiteral("default"));
    byDefault->setProperty("i18nId", kDefault);
    byDefault->setAutoDefault(false);
    connect(byDefault, &QPushButton::clicked, m_list, &CFmtListCtrl::setDefaults);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_list, 1);
    layout->addWidget(buttons);
    i18n_dialog(this, kDialog);

    // Wide enough for every column without a horizontal scroll bar.
    int width = m_list->verticalScrollBar()->sizeHint().width() + 2 * m_list->frameWidth();
    for (int c = 0; c < FormatListLogic::ColumnCount; ++c)
        width += m_list->columnWidth(c);
    m_list->setMinimumWidth(width);
    const int rows = m_list->model()->rowCount();
    m_list->setMinimumHeight(m_list->horizontalHeader()->sizeHint().height() +
                             m_list->verticalHeader()->defaultSectionSize() * std::min(rows, 10) +
                             2 * m_list->frameWidth() + 2);
    m_list->setFocus();
    if (rows > 0)
        m_list->setCurrentIndex(m_list->model()->index(0, FormatListLogic::Listed));
}

const FormatListLogic::Words& CFmtDlg::words() const {
    return m_list->words();
}

} // namespace lanmira
