#pragma once

#include "viewer/SaveSetupLogic.h"

#include <QDialog>

#include <vector>

class QComboBox;
class QLineEdit;
class QPushButton;

namespace lanmira {

// "IDD_FILESAVESETUP": the title and extension of captured files, and the save options of
// that extension's format.
class CFileSaveSetup final : public QDialog {
    Q_OBJECT
public:
    CFileSaveSetup(const QStringList& extensions, const QString& title, const QString& extension,
                   QWidget* parent = nullptr);

    // What OK hands back.
    SaveSetupChoice choice() const;

    QLineEdit* titleEdit() const { return m_title; }
    QComboBox* extensionCombo() const { return m_extension; }
    QPushButton* optionButton() const { return m_option; }
    const SaveSetupLogic& logic() const { return m_logic; }

    static const char* dialogName();
    static std::vector<int> controlIds();

private:
    void extensionChanged();
    void runOptions();

    SaveSetupLogic m_logic;
    QLineEdit* m_title;
    QComboBox* m_extension;
    QPushButton* m_option;
};

} // namespace lanmira
