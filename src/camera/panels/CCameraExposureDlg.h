#pragma once

#include "camera/pane/CCameraBaseDlg.h"
#include "camera/panels/CExposureTimeDlg.h"
#include "platform/ReceiverRegistry.h"

#include <QPointer>

#include <cstdint>

class QCheckBox;
class QLabel;
class QPushButton;
class QSlider;

namespace lanmira {

class CExposureButton;

// Automatic exposure with its target, the exposure time on a cubic slider with a button
// showing the time in force, and the gain. Follows the camera while automatic exposure
// changes time and gain by itself.
class CCameraExposureDlg final : public CCameraBaseDlg {
    Q_OBJECT
public:
    static constexpr int kAuto = 1117;
    static constexpr int kTarget = 1118;
    static constexpr int kTargetText = 1119;
    static constexpr int kTime = 1120;
    static constexpr int kGain = 1121;
    static constexpr int kGainText = 1122;
    static constexpr int kTimeButton = 1123;
    static constexpr int kDefaults = 1124;

    explicit CCameraExposureDlg(QObject* owner, QWidget* parent = nullptr);

    static const char* dialogName();
    static std::vector<int> controlIds();

    // Where the panel posts the news that automatic exposure was switched.
    void setLightSourcePanel(QObject* panel) { m_lightSource = panel; }

    void InitControls() override;
    void OnDetach() override;
    void UpdateControls() override;
    void SetStateFlag(bool on, unsigned bits) override;

    void restoreDefaults();
    // Opens the time dialog; the time goes to the camera when it closes with OK.
    void openTimeDialog();
    CExposureTimeDlg* timeDialog() const { return m_timeDialog; }
    std::uint32_t currentTime() const { return m_time; }

protected:
    void customEvent(QEvent* event) override;

private:
    void refresh();
    void applyAutoRule(bool automatic);
    void updateTimeButton();
    void showGain(int gain);
    void setTimeSlider(std::uint32_t microseconds);
    void followCamera();
    void timeChosen(std::uint32_t microseconds);

    QCheckBox* m_auto;
    QSlider* m_target;
    QLabel* m_targetText;
    QSlider* m_timeSlider;
    CExposureButton* m_timeButton;
    QSlider* m_gain;
    QLabel* m_gainText;
    QPushButton* m_defaults;
    QPointer<QObject> m_lightSource;
    QPointer<CExposureTimeDlg> m_timeDialog;
    ReceiverRegistration m_receiver{this};

    std::uint16_t m_gainMin = 0, m_gainMax = 0, m_gainDefault = 0;
    std::uint32_t m_timeMin = 0, m_timeMax = 0, m_timeDefault = 0;
    std::uint32_t m_time = 0;
    std::uint32_t m_shownRealTime = 0;
};

} // namespace lanmira
