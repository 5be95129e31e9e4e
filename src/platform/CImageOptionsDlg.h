#pragma once

#include "imagelib/iopt.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QSlider;
class QSpinBox;

namespace lanmira {

// A format's save options: JPEG quality and progressive, PNG compression level, TIFF
// compression, WebP quality and lossless.
class CImageOptionsDlg final : public QDialog {
    Q_OBJECT
public:
    CImageOptionsDlg(int format, IoptOptions current, QWidget* parent = nullptr);

    IoptOptions options() const;

    static const char* dialogName() { return "IDD_IMAGEOPTIONS"; }
    static std::vector<int> controlIds();

    // TIFF compressions offered, as the tag values the library takes.
    static const std::vector<std::uint32_t>& tiffCompressions();

private:
    int m_format;
    QSlider* m_level = nullptr; // quality or compression level
    QSpinBox* m_levelValue = nullptr;
    QCheckBox* m_flag = nullptr; // progressive or lossless
    QComboBox* m_compression = nullptr;
};

// Runs the format's options dialog; on OK the choice becomes the format's default and is
// returned, on Cancel the current default comes back unchanged.
IoptOptions iopt_Dlg(int format, QWidget* owner, int flags);

} // namespace lanmira
