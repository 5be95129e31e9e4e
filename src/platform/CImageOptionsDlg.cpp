#include "platform/CImageOptionsDlg.h"

#include "i18n/i18n.h"
#include "imagelib/imagelib.h"
#include "platform/TextFormat.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

namespace lanmira {
namespace {

constexpr char kDialog[] = "IDD_IMAGEOPTIONS";
constexpr int kCaption = 0;
constexpr int kOk = 1;
constexpr int kCancel = 2;
constexpr int kQuality = 1201;
constexpr int kProgressive = 1202;
constexpr int kLevel = 1203;
constexpr int kCompression = 1204;
constexpr int kLossless = 1205;
// The TIFF compressions' names follow as 1210 + their index.
constexpr int kFirstCompressionName = 1210;

QString text(int id) {
    return i18n_dialogText(kDialog, id);
}

} // namespace

const std::vector<std::uint32_t>& CImageOptionsDlg::tiffCompressions() {
    static const std::vector<std::uint32_t> values = {1, 5, 8, 32773, 7};
    return values;
}

std::vector<int> CImageOptionsDlg::controlIds() {
    std::vector<int> ids = {kCaption,     kOk,    kCancel,      kQuality,
                            kProgressive, kLevel, kCompression, kLossless};
    for (std::size_t i = 0; i < tiffCompressions().size(); ++i)
        ids.push_back(kFirstCompressionName + static_cast<int>(i));
    return ids;
}

CImageOptionsDlg::CImageOptionsDlg(int format, IoptOptions current, QWidget* parent)
    : QDialog(parent), m_format(format) {
    setObjectName(QStringLiteral("CImageOptionsDlg"));
    const ImageLibFmtInfo* info = ImageLib_GetFmtInfo(format);
    setWindowTitle(formatText(text(kCaption), {info ? info->name : ""}));
    auto* form = new QFormLayout;

    auto addLevel = [&](int label, int lo, int hi, int value) {
        m_level = new QSlider(Qt::Horizontal, this);
        m_level->setRange(lo, hi);
        m_levelValue = new QSpinBox(this);
        m_levelValue->setRange(lo, hi);
        connect(m_level, &QSlider::valueChanged, m_levelValue, &QSpinBox::setValue);
        connect(m_levelValue, &QSpinBox::valueChanged, m_level, &QSlider::setValue);
        m_level->setValue(std::clamp(value, lo, hi));
        auto* row = new QHBoxLayout;
        row->addWidget(m_level, 1);
        row->addWidget(m_levelValue);
        form->addRow(text(label), row);
    };
    auto addFlag = [&](int label, bool on) {
        m_flag = new QCheckBox(text(label), this);
        m_flag->setChecked(on);
        form->addRow(m_flag);
    };

    switch (format) {
    case IMAGELIB_FMT_JPEG:
        addLevel(kQuality, 1, 100, current.value1 ? static_cast<int>(current.value1) : 90);
        addFlag(kProgressive, current.value2 & IOPT_JPEG_PROGRESSIVE);
        break;
    case IMAGELIB_FMT_WEBP:
        addLevel(kQuality, 1, 100, current.value1 ? static_cast<int>(current.value1) : 90);
        addFlag(kLossless, current.value2 & IOPT_WEBP_LOSSLESS);
        break;
    case IMAGELIB_FMT_PNG:
        // Stored as level + 1 so that 0 can mean "the default".
        addLevel(kLevel, 0, 9, current.value1 ? static_cast<int>(current.value1) - 1 : 6);
        break;
    case IMAGELIB_FMT_TIFF: {
        m_compression = new QComboBox(this);
        const auto& values = tiffCompressions();
        for (std::size_t i = 0; i < values.size(); ++i)
            m_compression->addItem(text(kFirstCompressionName + static_cast<int>(i)), values[i]);
        const int at = m_compression->findData(current.value1 ? current.value1 : 5u);
        m_compression->setCurrentIndex(at < 0 ? 1 : at);
        form->addRow(text(kCompression), m_compression);
        break;
    }
    default:
        break;
    }

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(text(kOk));
    buttons->button(QDialogButtonBox::Cancel)->setText(text(kCancel));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
    setMinimumWidth(320);
}

IoptOptions CImageOptionsDlg::options() const {
    switch (m_format) {
    case IMAGELIB_FMT_JPEG:
        return {static_cast<std::uint32_t>(m_level->value()),
                m_flag->isChecked() ? IOPT_JPEG_PROGRESSIVE : 0u};
    case IMAGELIB_FMT_WEBP:
        return {static_cast<std::uint32_t>(m_level->value()),
                m_flag->isChecked() ? IOPT_WEBP_LOSSLESS : 0u};
    case IMAGELIB_FMT_PNG:
        return {static_cast<std::uint32_t>(m_level->value() + 1), 0};
    case IMAGELIB_FMT_TIFF:
        return {m_compression->currentData().toUInt(), 0};
    default:
        return {0, 0};
    }
}

IoptOptions iopt_Dlg(int format, QWidget* owner, int /*flags*/) {
    const IoptOptions current = iopt_get_default(format);
    if (!iopt_bDlg(format))
        return current;
    CImageOptionsDlg dialog(format, current, owner);
    if (dialog.exec() != QDialog::Accepted)
        return current;
    const IoptOptions chosen = dialog.options();
    iopt_set_default(format, chosen);
    return chosen;
}

} // namespace lanmira
