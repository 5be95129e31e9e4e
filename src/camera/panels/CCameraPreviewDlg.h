#pragma once

#include "camera/pane/CCameraBaseDlg.h"

class QComboBox;
class QPushButton;

namespace lanmira {

// Snap and Record buttons for the camera window's commands, and the resolution list.
class CCameraPreviewDlg final : public CCameraBaseDlg {
    Q_OBJECT
public:
    static constexpr int kSnap = 1063;
    static constexpr int kResolutions = 1150;
    static constexpr int kRecord = 3259;

    explicit CCameraPreviewDlg(QObject* owner, QWidget* parent = nullptr);

    static const char* dialogName();
    static std::vector<int> controlIds();

    void UpdateControls() override;
    void SetStateFlag(bool on, unsigned bits) override;

    QComboBox* resolutionList() const { return m_list; }
    bool recordShowsStop() const { return m_recordStop; }

private:
    // 4 when the camera has a capture handle but no control interface.
    int sourceKind() const { return handle() && !control() ? 4 : 0; }
    void selectVideoSize();
    void resolutionChosen(int index);
    void showRecordImages(bool stop);

    QPushButton* m_snap;
    QPushButton* m_record;
    QComboBox* m_list;
    bool m_updating = false;
    bool m_recordStop = false;
};

} // namespace lanmira
