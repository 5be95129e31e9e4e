#include "camera/CCameraControlsDlg.h"

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

CCameraControlsDlg::CCameraControlsDlg(dscap_handle camera, const QString& title, QWidget* parent)
    : QDialog(parent), m_camera(camera) {
    setWindowTitle(title);
    auto* layout = new QVBoxLayout(this);
    auto* form = new QFormLayout;
    layout->addLayout(form);
    int count = 0;
    dscap_control* controls = dscap_get_controls(camera, &count);
    for (int i = 0; i < count; ++i)
        addRow(form, controls[i]);
    dscap_free_controls(controls, count);

    auto* buttons =
        new QDialogButtonBox(QDialogButtonBox::Close | QDialogButtonBox::RestoreDefaults);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons->button(QDialogButtonBox::RestoreDefaults), &QPushButton::clicked, this,
            [this] { restoreDefaults(); });
    layout->addWidget(buttons);
}

void CCameraControlsDlg::addRow(QFormLayout* form, const dscap_control& control) {
    const std::uint32_t id = control.id;
    auto send = [this, id](std::int32_t value) { dscap_set_control(m_camera, id, value); };
    const QString label = QString::fromUtf8(control.name);
    Row row{id, control.def, {}};
    switch (control.kind) {
    case DSCAP_CONTROL_BOOLEAN: {
        auto* box = new QCheckBox;
        box->setChecked(control.value != 0);
        connect(box, &QCheckBox::toggled, this, [send](bool on) { send(on ? 1 : 0); });
        row.show = [box](std::int32_t v) { box->setChecked(v != 0); };
        form->addRow(label, box);
        break;
    }
    case DSCAP_CONTROL_MENU: {
        auto* combo = new QComboBox;
        for (int m = 0; m < control.menuCount; ++m)
            combo->addItem(QString::fromUtf8(control.menu[m].label), control.menu[m].value);
        combo->setCurrentIndex(combo->findData(control.value));
        connect(combo, &QComboBox::currentIndexChanged, this,
                [combo, send](int index) { send(combo->itemData(index).toInt()); });
        row.show = [combo](std::int32_t v) { combo->setCurrentIndex(combo->findData(v)); };
        form->addRow(label, combo);
        break;
    }
    case DSCAP_CONTROL_BUTTON: {
        auto* button = new QPushButton(label);
        connect(button, &QPushButton::clicked, this, [send] { send(1); });
        form->addRow(QString(), button);
        return; // nothing to restore
    }
    default: {
        auto* slider = new QSlider(Qt::Horizontal);
        auto* spin = new QSpinBox;
        slider->setRange(control.min, control.max);
        slider->setSingleStep(std::max(1, control.step));
        spin->setRange(control.min, control.max);
        spin->setSingleStep(std::max(1, control.step));
        slider->setValue(control.value);
        spin->setValue(control.value);
        connect(slider, &QSlider::valueChanged, spin, &QSpinBox::setValue);
        connect(spin, &QSpinBox::valueChanged, slider, &QSlider::setValue);
        connect(spin, &QSpinBox::valueChanged, this, [send](int v) { send(v); });
        auto* line = new QHBoxLayout;
        line->addWidget(slider, 1);
        line->addWidget(spin);
        row.show = [spin](std::int32_t v) { spin->setValue(v); };
        form->addRow(label, line);
        break;
    }
    }
    m_rows.push_back(std::move(row));
}

void CCameraControlsDlg::restoreDefaults() {
    for (const Row& row : m_rows)
        row.show(row.def); // the widgets send the value on
}

} // namespace lanmira
