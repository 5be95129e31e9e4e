#pragma once

#include "acquire/PackedDib.h"
#include "camera/frame/VideoFrameHost.h"

#include <QObject>
#include <QString>

namespace lanmira {

class CaptureWriter;

// Saves scanned pages under the capture names ("Lanmira0007.jpg"): the counter may move on
// past names that are taken, so nothing is overwritten, and the file is written off the UI
// thread by the capture writer.
class ScanSaver final : public QObject {
    Q_OBJECT
public:
    explicit ScanSaver(QObject* parent = nullptr);

    // The name the page goes to, or empty when it could not be named.
    QString save(PackedDib page, const CaptureFormat& format, int& counter);
    CaptureWriter* writer() const { return m_writer; }

private:
    CaptureWriter* m_writer;
};

} // namespace lanmira
