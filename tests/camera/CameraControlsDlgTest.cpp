#include "../libs/dscap/FakeV4l2System.h"
#include "camera/CCameraControlsDlg.h"
#include "dscap/core/Library.h"
#include "dscap/v4l2/V4l2Provider.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QScopeGuard>
#include <QSpinBox>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace lanmira;
using dscap::v4l2::FakeV4l2System;

// The dialog shows the camera's extra controls and every change reaches the device.
TEST(CameraControlsDlgTest, ChangesAndDefaultsReachTheCamera) {
    QTemporaryDir config;
    // The library saves a closed camera's settings in the background: let it finish before
    // the folder goes.
    const auto settle = qScopeGuard([] { dscap::Library::instance().waitForBackgroundWork(); });
    const dscap_messages messages{0x465, 0x470, 0x466, 32830, 0x473};
    dscap_init(config.path().toUtf8().constData(), "Vornalt", "Lanmira", "", "", &messages);
    auto system = std::make_shared<FakeV4l2System>();
    const std::string node = "/dev/video0";
    system->addNode(FakeV4l2System::webcam(node, "usb-Acme-video-index0"));
    std::vector<std::unique_ptr<dscap::CameraProvider>> providers;
    providers.push_back(dscap::v4l2::makeV4l2Provider(system));
    dscap::Library::instance().setProviders(std::move(providers));
    dscap_dsvi camera{const_cast<char*>("v4l2:usb-Acme-video-index0"), const_cast<char*>("Acme"),
                      0};
    dscap_handle h = dscap_device(nullptr, nullptr, &camera);
    ASSERT_NE(h, nullptr);

    int count = 0;
    dscap_control* controls = dscap_get_controls(h, &count);
    ASSERT_GT(count, 0);
    std::uint32_t firstInteger = 0, firstBoolean = 0;
    std::int32_t integerMax = 0, integerDefault = 0, booleanDefault = 0;
    for (int i = 0; i < count; ++i) {
        if (controls[i].kind == DSCAP_CONTROL_INTEGER && !firstInteger) {
            firstInteger = controls[i].id;
            integerMax = controls[i].max;
            integerDefault = controls[i].def;
        }
        if (controls[i].kind == DSCAP_CONTROL_BOOLEAN && !firstBoolean) {
            firstBoolean = controls[i].id;
            booleanDefault = controls[i].def;
        }
    }
    dscap_free_controls(controls, count);
    ASSERT_NE(firstInteger, 0u);
    ASSERT_NE(firstBoolean, 0u);

    CCameraControlsDlg dialog(h, QStringLiteral("Camera Controls"));
    EXPECT_EQ(dialog.rowCount(), count);
    dialog.findChildren<QSpinBox*>().front()->setValue(integerMax);
    EXPECT_EQ(system->controlValue(node, firstInteger), integerMax);
    QCheckBox* box = dialog.findChildren<QCheckBox*>().front();
    box->setChecked(!box->isChecked());
    EXPECT_NE(system->controlValue(node, firstBoolean), booleanDefault);

    dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::RestoreDefaults)->click();
    EXPECT_EQ(system->controlValue(node, firstInteger), integerDefault);
    EXPECT_EQ(system->controlValue(node, firstBoolean), booleanDefault);
    dscap_stop(h);
    dscap::Library::instance().setProviders({});
}
