#include "viewer/CFileSaveSetup.h"

#include "i18n/i18n.h"
#include "platform/CImageOptionsDlg.h"
#include "platform/DialogButtons.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>

namespace lanmira {

namespace {
constexpr char kDialog[] = "IDD_FILESAVESETUP";
constexpr int kOk = 1;
constexpr int kCancel = 2;
constexpr int kOption = 1003;
constexpr int kTitleLabel = 1031;
constexpr int kTitle = 1032;
constexpr int kExtensionLabel = 1033;
constexpr int kExtension = 1034;
// Room for the counter and the extension within a file name's 255 bytes.
constexpr int kMaxTitle = 200;
} // namespace

const char* CFileSaveSetup::dialogName() {
    return kDialog;
}

std::vector<int> CFileSaveSetup::controlIds() {
    return {0, kOk, kCancel, kOption, kTitleLabel, kExtensionLabel};
}

CFileSaveSetup::CFileSaveSetup(const QStringList& extensions, const QString& title,
                               const QString& extension, QWidget* parent)
    : QDialog(parent), m_logic(extensions, extension), m_title(new QLineEdit(this)),
      m_extension(new QComboBox(this)), m_option(new QPushButton(this)) {
    setObjectName(QStringLiteral("CFileSaveSetup"));
    m_title->setObjectName(QStringLiteral("title"));
    m_title->setProperty("controlId", kTitle);
    // The title starts a file name: a slash would put captures into another folder.
    m_title->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[^/\\x00]*")), this));
    m_title->setMaxLength(kMaxTitle);
    m_title->setText(title.left(kMaxTitle).remove(u'/'));

    m_extension->setObjectName(QStringLiteral("extension"));
    m_extension->setProperty("controlId", kExtension);
    m_extension->addItems(m_logic.extensions());
    m_extension->setCurrentIndex(m_logic.selectedIndex());
    m_extension->setMaxVisibleItems(16);

    m_option->setObjectName(QStringLiteral("option"));
    m_option->setProperty("i18nId", kOption);
    m_option->setAutoDefault(false);
    m_option->setEnabled(m_logic.hasOptionDialog());

    auto* titleLabel = new QLabel(this);
    titleLabel->setProperty("i18nId", kTitleLabel);
    titleLabel->setBuddy(m_title);
    auto* extensionLabel = new QLabel(this);
    extensionLabel->setProperty("i18nId", kExtensionLabel);
    extensionLabel->setBuddy(m_extension);
    auto* extensionRow = new QHBoxLayout;
    extensionRow->addWidget(m_extension, 1);
    extensionRow->addWidget(m_option);
    auto* form = new QFormLayout;
    form->addRow(titleLabel, m_title);
    form->addRow(extensionLabel, extensionRow);

    auto* buttons = makeOkCancelButtons(this);
    connect(m_extension, &QComboBox::currentIndexChanged, this, &CFileSaveSetup::extensionChanged);
    connect(m_option, &QPushButton::clicked, this, &CFileSaveSetup::runOptions);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
    i18n_dialog(this, kDialog);
    setMinimumWidth(380);
    m_title->setFocus();
    m_title->selectAll();
}

void CFileSaveSetup::extensionChanged() {
    m_logic.select(m_extension->currentText());
    m_option->setEnabled(m_logic.hasOptionDialog());
}

void CFileSaveSetup::runOptions() {
    // The combo box's text decides, not what was selected when the dialog opened.
    m_logic.select(m_extension->currentText());
    m_logic.setOptions(iopt_Dlg(m_logic.format(), this, 0));
}

SaveSetupChoice CFileSaveSetup::choice() const {
    return m_logic.choice(m_title->text());
}

} // namespace lanmira
