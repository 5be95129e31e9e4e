#pragma once

#include "acquire/PackedDib.h"
#include "camera/frame/VideoFrameHost.h"

#include <QObject>
#include <QSet>
#include <QString>

namespace lanmira {

// Saves captured frames through the image library on a worker thread: a full-size PNG
// takes seconds, which the window must not wait for. A save that the window does not live
// to hear of still completes.
class CaptureWriter final : public QObject {
    Q_OBJECT
public:
    explicit CaptureWriter(QObject* parent = nullptr);

    void save(PackedDib picture, const QString& path, const CaptureFormat& format);
    // Saves under the next capture name ("%s%04d.%s" from the counter) and moves the counter
    // past it. With `advance`, a taken name (on disk or being written) moves the counter on
    // to a free one; without it, a taken name saves nothing. The name used, or empty.
    QString saveNext(PackedDib picture, const CaptureFormat& format, int& counter, bool advance);
    // Names being written now: taken, although the file is not there yet.
    bool isPending(const QString& path) const { return m_pending.contains(path); }
    int pendingCount() const { return static_cast<int>(m_pending.size()); }

Q_SIGNALS:
    void saved(const QString& path);
    void failed(const QString& path, const QString& error);

private:
    void finish(const QString& path, bool ok, const QString& error);

    QSet<QString> m_pending;
};

} // namespace lanmira
