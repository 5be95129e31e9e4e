#pragma once

#include "platform/DeviceEventSource.h"

#include <QObject>
#include <QSet>
#include <QString>

#include <memory>

class QFileSystemWatcher;
class QSocketNotifier;

namespace lanmira {

// Tells the GUI thread when a video capture device comes, goes or changes, so that device
// lists can be refreshed without polling.
class VideoDeviceWatcher final : public QObject {
    Q_OBJECT
public:
    enum class State {
        Listening,      // reading notices from a source
        WatchingFolder, // comparing the video* entries of a device folder
        Stopped,        // no source, or it broke; nothing more is reported
    };
    Q_ENUM(State)

    // Reads the source whenever its descriptor turns readable. A null source, or one
    // without a descriptor, gives a Stopped watcher.
    explicit VideoDeviceWatcher(std::unique_ptr<DeviceEventSource> source,
                                QObject* parent = nullptr);
    // Watches a folder (normally /dev) and reports video* entries that appear ("add") or
    // vanish ("remove"). Entries present at the start are not reported.
    explicit VideoDeviceWatcher(const QString& deviceFolder, QObject* parent = nullptr);
    ~VideoDeviceWatcher() override;

    // The udev watcher, or the /dev watcher where udev cannot be used. Owned by parent.
    static VideoDeviceWatcher* create(QObject* parent);

    State state() const { return m_state; }

Q_SIGNALS:
    // action is "add", "remove" or "change"; node is the device file, e.g. /dev/video0.
    void devicesChanged(const QString& action, const QString& node);

private:
    void setState(State state);
    void readSource();
    void rescanFolder();
    QSet<QString> scanFolder() const;

    State m_state = State::Stopped;
    std::unique_ptr<DeviceEventSource> m_source;
    QSocketNotifier* m_notifier = nullptr;
    QString m_folder;
    QFileSystemWatcher* m_folderWatcher = nullptr;
    QSet<QString> m_nodes; // video* entries seen in m_folder
};

} // namespace lanmira
