#pragma once

#include "imagelib/iopt.h"

#include <QString>
#include <QStringList>

namespace lanmira {

// What the default file options dialog hands back to the application.
struct SaveSetupChoice {
    QString title;
    QString extension;
    int format = 0;
    IoptOptions options{0, 0};
};

// The rules of the default file options dialog: which extension is selected, which format
// it is, whether that format has an options dialog, and the save options kept for it.
class SaveSetupLogic {
public:
    static constexpr int kMaxExtension = 256;

    // Selects the first entry equal to `currentExtension` ignoring case, else entry 0.
    SaveSetupLogic(QStringList extensions, const QString& currentExtension);

    // The entry equal to `extension` ignoring case; 0 when none is, -1 for an empty list.
    static int indexOf(const QStringList& extensions, const QString& extension);
    // The format of the first format-table row with this extension ignoring case; 0 (whose
    // options are the library's defaults for "no format") when none has it.
    static int formatOf(const QString& extension);

    const QStringList& extensions() const { return m_extensions; }
    int selectedIndex() const { return m_index; }
    const QString& extension() const { return m_extension; }
    int format() const { return m_format; }
    bool hasOptionDialog() const;
    const IoptOptions& options() const { return m_options; }

    // The combo box now shows `text`: its format, and that format's default options.
    void select(const QString& text);
    // What the format's options dialog returned.
    void setOptions(IoptOptions options) { m_options = options; }

    SaveSetupChoice choice(const QString& title) const;

private:
    QStringList m_extensions;
    int m_index = -1;
    QString m_extension;
    int m_format = 0;
    IoptOptions m_options{0, 0};
};

} // namespace lanmira
