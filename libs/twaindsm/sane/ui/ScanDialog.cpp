#include "sane/ui/ScanDialog.h"

#include "i18n/i18n.h"
#include "sane/ui/PreviewArea.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include <cmath>
#include <mutex>

namespace twaindsm {

namespace {

// The plug-in carries its own copy of the localisation library: it loads the program's
// catalogs from the same place the program does.
void loadCatalogs() {
    static std::once_flag once;
    std::call_once(once, [] { i18n_init(QStringLiteral("../share/lanmira/i18n"), 0); });
}

QImage imageOf(const ScanPage& page) {
    if (page.width <= 0 || page.height <= 0 || page.data.empty())
        return {};
    const QImage::Format format = page.kind == ScanPage::Kind::Rgb    ? QImage::Format_RGB888
                                  : page.kind == ScanPage::Kind::Gray ? QImage::Format_Grayscale8
                                                                      : QImage::Format_Mono;
    QImage image(page.data.data(), page.width, page.height,
                 static_cast<qsizetype>(page.bytesPerLine), format);
    if (format == QImage::Format_Mono)
        image.setColorTable({qRgb(255, 255, 255), qRgb(0, 0, 0)});
    return image.copy();
}

QDoubleSpinBox* lengthSpin(double max, QWidget* parent) {
    auto* spin = new QDoubleSpinBox(parent);
    spin->setRange(0, max);
    spin->setDecimals(1);
    spin->setSuffix(QStringLiteral(" mm"));
    return spin;
}

} // namespace

QString scanText(const char* name) {
    loadCatalogs();
    return i18n_stringW(name);
}

ScanDialog::ScanDialog(SaneSession& session, QWidget* parent)
    : QDialog(parent), m_session(session), m_mode(new QComboBox(this)),
      m_resolution(new QSpinBox(this)), m_left(lengthSpin(session.device().bedWidth(), this)),
      m_top(lengthSpin(session.device().bedHeight(), this)),
      m_width(lengthSpin(session.device().bedWidth(), this)),
      m_height(lengthSpin(session.device().bedHeight(), this)),
      m_preview(
          new PreviewArea(QSizeF(session.device().bedWidth(), session.device().bedHeight()), this)),
      m_status(new QLabel(this)),
      m_previewButton(new QPushButton(scanText("ids_lanmira_scan_preview"), this)),
      m_scanButton(new QPushButton(scanText("ids_lanmira_scan_scan"), this)),
      m_cancelButton(new QPushButton(scanText("ids_lanmira_scan_cancel"), this)) {
    setObjectName(QStringLiteral("ScanDialog"));
    setWindowTitle(scanText("ids_lanmira_scan_title"));
    setWindowModality(Qt::ApplicationModal);
    setAttribute(Qt::WA_DeleteOnClose, false);

    SourceSettings& s = session.settings();
    const struct {
        ScanPage::Kind kind;
        const char* name;
    } modes[] = {{ScanPage::Kind::BlackWhite, "ids_lanmira_scan_bw"},
                 {ScanPage::Kind::Gray, "ids_lanmira_scan_gray"},
                 {ScanPage::Kind::Rgb, "ids_lanmira_scan_colour"}};
    for (const auto& m : modes)
        if (session.device().supports(m.kind)) {
            m_mode->addItem(scanText(m.name), static_cast<int>(m.kind));
            if (m.kind == s.kind)
                m_mode->setCurrentIndex(m_mode->count() - 1);
        }
    const SaneDevice::Resolutions r = session.device().resolutions();
    m_resolution->setRange(static_cast<int>(std::max(1.0, r.min)),
                           static_cast<int>(r.max > 0 ? r.max : 9600));
    m_resolution->setSuffix(QStringLiteral(" dpi"));
    m_resolution->setValue(static_cast<int>(std::lround(s.dpi)));
    const double bedW = session.device().bedWidth(), bedH = session.device().bedHeight();
    m_left->setValue(s.left);
    m_top->setValue(s.top);
    m_width->setValue(s.width > 0 ? s.width : bedW);
    m_height->setValue(s.height > 0 ? s.height : bedH);
    m_preview->setArea(
        QRectF(m_left->value(), m_top->value(), m_width->value(), m_height->value()));

    auto* form = new QFormLayout;
    const auto row = [&](const char* name, QWidget* field) {
        auto* label = new QLabel(scanText(name), this);
        label->setBuddy(field);
        field->setAccessibleName(label->text().remove(QLatin1Char('&')));
        form->addRow(label, field);
    };
    auto* device = new QLabel(QString::fromStdString(session.device().name()), this);
    device->setObjectName(QStringLiteral("scanDevice"));
    form->addRow(new QLabel(scanText("ids_lanmira_scan_device"), this), device);
    row("ids_lanmira_scan_mode", m_mode);
    row("ids_lanmira_scan_resolution", m_resolution);
    row("ids_lanmira_scan_left", m_left);
    row("ids_lanmira_scan_top", m_top);
    row("ids_lanmira_scan_width", m_width);
    row("ids_lanmira_scan_height", m_height);

    auto* left = new QVBoxLayout;
    left->addLayout(form);
    left->addWidget(m_status);
    left->addStretch(1);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_previewButton);
    buttons->addStretch(1);
    buttons->addWidget(m_scanButton);
    buttons->addWidget(m_cancelButton);
    left->addLayout(buttons);
    auto* top = new QHBoxLayout(this);
    top->addLayout(left);
    top->addWidget(m_preview, 1);
    m_status->setWordWrap(true);
    m_status->setText(scanText("ids_lanmira_scan_hint"));
    for (QPushButton* b : {m_previewButton, m_scanButton, m_cancelButton})
        b->setAccessibleName(b->text().remove(QLatin1Char('&')));
    m_scanButton->setDefault(true);

    connect(m_scanButton, &QPushButton::clicked, this, &ScanDialog::scan);
    connect(m_previewButton, &QPushButton::clicked, this, &ScanDialog::preview);
    connect(m_cancelButton, &QPushButton::clicked, this, &ScanDialog::reject);
    connect(m_preview, &PreviewArea::areaChosen, this, [this](const QRectF& mm) {
        for (QDoubleSpinBox* spin : {m_left, m_top, m_width, m_height})
            spin->blockSignals(true);
        m_left->setValue(mm.left());
        m_top->setValue(mm.top());
        m_width->setValue(mm.width());
        m_height->setValue(mm.height());
        for (QDoubleSpinBox* spin : {m_left, m_top, m_width, m_height})
            spin->blockSignals(false);
    });
    for (QDoubleSpinBox* spin : {m_left, m_top, m_width, m_height})
        connect(spin, &QDoubleSpinBox::valueChanged, this, &ScanDialog::areaFromSpins);
    show();
    raise();
    activateWindow();
}

ScanDialog::~ScanDialog() {
    m_closing = true;
}

void ScanDialog::areaFromSpins() {
    m_preview->setArea(
        QRectF(m_left->value(), m_top->value(), m_width->value(), m_height->value()));
}

void ScanDialog::setBusy(bool busy, const QString& status) {
    for (QWidget* w : std::initializer_list<QWidget*>{m_mode, m_resolution, m_left, m_top, m_width,
                                                      m_height, m_previewButton, m_scanButton})
        w->setEnabled(!busy);
    m_status->setText(status);
}

void ScanDialog::scan() {
    SourceSettings& s = m_session.settings();
    s.kind = static_cast<ScanPage::Kind>(m_mode->currentData().toInt());
    s.dpi = m_session.device().nearestResolution(m_resolution->value());
    s.left = m_left->value();
    s.top = m_top->value();
    s.width = m_width->value();
    s.height = m_height->value();
    if (m_session.startScan())
        setBusy(true, scanText("ids_lanmira_scan_scanning"));
    else
        m_status->setText(scanText("ids_lanmira_scan_refused"));
}

void ScanDialog::preview() {
    QPointer<ScanDialog> self(this);
    const bool started = m_session.startPreview([self](ScanPage page) {
        QImage image = imageOf(page);
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, image] {
                if (self)
                    self->previewDone(image);
            },
            Qt::QueuedConnection);
    });
    if (started)
        setBusy(true, scanText("ids_lanmira_scan_scanning"));
}

void ScanDialog::previewDone(const QImage& image) {
    setBusy(false, image.isNull() ? scanText("ids_lanmira_scan_previewfailed")
                                  : scanText("ids_lanmira_scan_hint"));
    m_preview->setPreview(image);
    // The buttons were disabled while the preview ran, which took the focus away.
    m_scanButton->setFocus();
}

void ScanDialog::scanFinished(const std::string& error, const std::string& detail) {
    if (error.empty()) {
        // The pages go to the application now; the dialog's part is done.
        hide();
        return;
    }
    QString text = scanText(error.c_str());
    text.replace(QStringLiteral("%s"), QString::fromStdString(detail));
    setBusy(false, text);
    m_scanButton->setFocus();
}

void ScanDialog::reject() {
    if (m_closing)
        return;
    m_session.requestClose();
    QDialog::reject();
}

} // namespace twaindsm
