#pragma once

#include <QDialog>

#include <functional>
#include <vector>

class QCheckBox;
class QSpinBox;

namespace lanmira {

// The settings of capture on a timer, as kept in the "Auto" section.
struct AutoCaptureSettings {
    bool limit = true;
    int slot = 6;    // seconds, 1..3600
    int times = 100; // 1..99999

    using Reader = std::function<int(const char* key, int def)>;
    using Writer = std::function<void(const char* key, int value)>;
    // Clamped as read, so a stored 0 shows as 1.
    static AutoCaptureSettings read(const Reader& read);
    // "Limit", "Slot", "Times", in that order.
    void write(const Writer& write) const;
};

// "Auto Capture...": whether to stop after a number of captures, the time between them and
// that number.
class CAutoDlg final : public QDialog {
    Q_OBJECT
public:
    static const char* dialogName();
    static std::vector<int> controlIds() { return {0, 1, 2, kTimesLabel, kLimit, kSlotLabel}; }
    static constexpr int kTimesLabel = 1040;
    static constexpr int kSlot = 1041;
    static constexpr int kTimes = 1042;
    static constexpr int kLimit = 1043;
    static constexpr int kSlotLabel = 1044;

    CAutoDlg(const AutoCaptureSettings& settings, QWidget* parent = nullptr);

    AutoCaptureSettings settings() const;

private:
    QCheckBox* m_limit;
    QSpinBox* m_slot;
    QSpinBox* m_times;
};

} // namespace lanmira
