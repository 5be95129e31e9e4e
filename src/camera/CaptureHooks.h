#pragma once

#include <QString>

class QWidget;

namespace lanmira {

// Connects the capture library to the windows: its posts become the program's messages to
// live receivers (the windows handed to dscap_device are receiver contexts), and its
// request for a recording file opens a save dialog.
class CaptureHooks {
public:
    static void install();

    // The file chosen for a recording, with the extension of the chosen type added when
    // the name has none; empty when cancelled. Kept apart from the dialog for tests.
    static QString withVideoExtension(const QString& path, bool matroska);
    static QString askRecordFile(QWidget* parent, const QString& suggested);
};

} // namespace lanmira
