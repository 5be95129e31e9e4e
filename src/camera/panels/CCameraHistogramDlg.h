#pragma once

#include "camera/pane/CCameraBaseDlg.h"
#include "camera/panels/HistogramLevels.h"
#include "platform/ReceiverRegistry.h"

class QComboBox;
class QPushButton;

namespace lanmira {

class CHistogramGraph;
class CMFCEditWithReturn;
class CSpinButton;

// The live histogram and the camera's input levels: markers to drag, edits for typed
// edges, and the channel they apply to.
class CCameraHistogramDlg final : public CCameraBaseDlg {
    Q_OBJECT
public:
    static constexpr int kLowSpin = 1058;
    static constexpr int kLowEdit = 1061;
    static constexpr int kChannels = 1102;
    static constexpr int kRefresh = 1103;
    static constexpr int kDefaults = 1104;
    static constexpr int kAuto = 1105;
    static constexpr int kGraph = 1106;
    static constexpr int kHighEdit = 3257;
    static constexpr int kHighSpin = 3258;

    explicit CCameraHistogramDlg(QObject* owner, QWidget* parent = nullptr);

    static const char* dialogName();
    static std::vector<int> controlIds();

    void InitControls() override;
    void OnDetach() override;
    void UpdateControls() override;

    int channel() const { return m_channel; }
    CHistogramGraph* graph() const { return m_graph; }
    CMFCEditWithReturn* lowEdit() const { return m_low; }
    CMFCEditWithReturn* highEdit() const { return m_high; }
    QComboBox* channelList() const { return m_list; }

    void chooseEntry(int entry);
    void refreshHistogram();
    void autoLevels();
    void defaultLevels();
    // The edit's text as an edge (Return or spin), low or high.
    void edgeTyped(bool low);
    void markerDropped(bool low, int level);

protected:
    void customEvent(QEvent* event) override;

private:
    HistogramLevels readLevels() const;
    void writeLevels(const HistogramLevels& levels);
    void rebuildList();
    void updateTexts();
    void spin(bool low, int delta);

    CHistogramGraph* m_graph;
    QComboBox* m_list;
    QPushButton* m_refresh;
    QPushButton* m_defaults;
    QPushButton* m_auto;
    CMFCEditWithReturn* m_low;
    CSpinButton* m_lowSpin;
    CMFCEditWithReturn* m_high;
    CSpinButton* m_highSpin;
    ReceiverRegistration m_receiver{this};
    int m_channel = HistogramLevels::kAllColours;
    bool m_grey = false;
};

} // namespace lanmira
