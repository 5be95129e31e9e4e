#pragma once

#include <QDialog>

#include <cstdint>
#include <vector>

class QLabel;
class QLineEdit;

namespace lanmira {

class CSpinButton;

// Asks for an exposure time in milliseconds within the camera's range. OK keeps the dialog
// open, with a message, until the text is a number in range.
class CExposureTimeDlg final : public QDialog {
    Q_OBJECT
public:
    static constexpr int kEdit = 1061;
    static constexpr int kSpin = 1058;
    static constexpr int kRangeText = 1107;
    static constexpr int kUnit = 4001;

    CExposureTimeDlg(std::uint32_t minimum, std::uint32_t maximum, std::uint32_t initial,
                     QWidget* parent = nullptr);

    static const char* dialogName();
    static std::vector<int> controlIds();

    std::uint32_t result() const { return m_result; }
    QLineEdit* edit() const { return m_edit; }
    int spinPosition() const;
    // The text of the last message shown for a refused time; empty when none.
    QString lastMessage() const { return m_lastMessage; }

    void accept() override;

private:
    void spinStepped();
    void editChanged(const QString& text);

    std::uint32_t m_min;
    std::uint32_t m_max;
    std::uint32_t m_result = 0;
    QLineEdit* m_edit;
    CSpinButton* m_spin;
    QLabel* m_range;
    QString m_lastMessage;
};

} // namespace lanmira
