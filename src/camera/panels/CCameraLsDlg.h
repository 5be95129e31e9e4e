#pragma once

#include "camera/pane/CCameraBaseDlg.h"

#include <QPointer>

class QRadioButton;

namespace lanmira {

// The lighting's mains frequency (or DC), against which the camera times its exposure to
// avoid flicker. Fixed while automatic exposure runs, which chooses the timing itself.
class CCameraLsDlg final : public CCameraBaseDlg {
    Q_OBJECT
public:
    static constexpr int kAc50 = 1141;
    static constexpr int kAc60 = 1142;
    static constexpr int kDc = 1143;

    explicit CCameraLsDlg(QObject* owner, QWidget* parent = nullptr);

    static const char* dialogName();
    static std::vector<int> controlIds() { return {kAc50, kAc60, kDc}; }

    // Where the panel posts that the real exposure time is to be shown anew.
    void setExposurePanel(QObject* panel) { m_exposure = panel; }

    void UpdateControls() override;

protected:
    void customEvent(QEvent* event) override;

private:
    void choose(std::int32_t source);
    void enableForAutoExposure();

    QRadioButton* m_ac50;
    QRadioButton* m_ac60;
    QRadioButton* m_dc;
    QPointer<QObject> m_exposure;
};

} // namespace lanmira
