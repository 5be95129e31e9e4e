#pragma once

#include "sane/SaneSession.h"

#include <QDialog>

class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QPushButton;
class QSpinBox;

namespace twaindsm {

class PreviewArea;

// The source's own dialog: the device, colour mode, resolution and scan area, a preview
// scan, and Scan and Cancel. It never waits for the scanner: scans run on the session's
// thread and their end comes back as scanFinished.
class ScanDialog final : public QDialog {
    Q_OBJECT
public:
    ScanDialog(SaneSession& session, QWidget* parent);
    ~ScanDialog() override;

    // The scan thread finished; see SourceUi.
    void scanFinished(const std::string& error, const std::string& detail);

protected:
    void reject() override;

private:
    void scan();
    void preview();
    void previewDone(const QImage& image);
    void setBusy(bool busy, const QString& status);
    void areaFromSpins();

    SaneSession& m_session;
    QComboBox* m_mode;
    QSpinBox* m_resolution;
    QDoubleSpinBox* m_left;
    QDoubleSpinBox* m_top;
    QDoubleSpinBox* m_width;
    QDoubleSpinBox* m_height;
    PreviewArea* m_preview;
    QLabel* m_status;
    QPushButton* m_previewButton;
    QPushButton* m_scanButton;
    QPushButton* m_cancelButton;
    bool m_closing = false;
};

// A text of the catalogs by name, from the plug-in's own copy of them.
QString scanText(const char* name);

} // namespace twaindsm
