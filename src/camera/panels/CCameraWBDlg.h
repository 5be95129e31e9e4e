#pragma once

#include "camera/pane/CCameraBaseDlg.h"
#include "platform/ReceiverRegistry.h"

class QLabel;
class QPushButton;
class QSlider;

namespace lanmira {

// White balance as colour temperature and tint, and a one-push white balance over the
// region the live view shows. Colour cameras only.
class CCameraWBDlg final : public CCameraBaseDlg {
    Q_OBJECT
public:
    static constexpr int kTemperature = 1108;
    static constexpr int kTint = 1109;
    static constexpr int kOnePush = 1110;
    static constexpr int kDefaults = 1111;
    static constexpr int kTemperatureLabel = 1112;
    static constexpr int kTemperatureText = 1113;
    static constexpr int kTintLabel = 1114;
    static constexpr int kTintText = 1115;
    static constexpr int kInstruction = 1059;

    explicit CCameraWBDlg(QObject* owner, QWidget* parent = nullptr);

    static const char* dialogName();
    static std::vector<int> controlIds();

    void InitControls() override;
    void UpdateControls() override;

    void restoreDefaults();
    void whiteBalanceOnce();

protected:
    void customEvent(QEvent* event) override;

private:
    bool usable() const { return attached() && colour(); }
    void show(int temperature, int tint);
    void moved(bool temperatureMoved);

    QSlider* m_temperature;
    QLabel* m_temperatureText;
    QSlider* m_tint;
    QLabel* m_tintText;
    QPushButton* m_onePush;
    QPushButton* m_defaults;
    ReceiverRegistration m_receiver{this};
};

} // namespace lanmira
