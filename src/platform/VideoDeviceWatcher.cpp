#include "platform/VideoDeviceWatcher.h"

#include "platform/UdevEventSource.h"

#include <QDir>
#include <QFileSystemWatcher>
#include <QPointer>
#include <QRegularExpression>
#include <QSocketNotifier>

#include <algorithm>

namespace lanmira {
namespace {

// A burst larger than this is read over several turns of the event loop, so the GUI
// thread keeps drawing.
constexpr int kMaxEventsPerTurn = 64;

bool isReported(const QString& action) {
    return action == QLatin1String("add") || action == QLatin1String("remove") ||
           action == QLatin1String("change");
}

QStringList sorted(const QSet<QString>& set) {
    QStringList list(set.begin(), set.end());
    std::sort(list.begin(), list.end());
    return list;
}

} // namespace

VideoDeviceWatcher::VideoDeviceWatcher(std::unique_ptr<DeviceEventSource> source, QObject* parent)
    : QObject(parent), m_source(std::move(source)) {
    if (!m_source || m_source->fd() < 0)
        return;
    m_notifier = new QSocketNotifier(m_source->fd(), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &VideoDeviceWatcher::readSource);
    setState(State::Listening);
}

VideoDeviceWatcher::VideoDeviceWatcher(const QString& deviceFolder, QObject* parent)
    : QObject(parent), m_folder(deviceFolder) {
    m_folderWatcher = new QFileSystemWatcher(this);
    if (!m_folderWatcher->addPath(m_folder))
        return;
    connect(m_folderWatcher, &QFileSystemWatcher::directoryChanged, this,
            &VideoDeviceWatcher::rescanFolder);
    m_nodes = scanFolder();
    setState(State::WatchingFolder);
}

// The notifier must go before the source that owns its descriptor.
VideoDeviceWatcher::~VideoDeviceWatcher() {
    delete m_notifier;
}

VideoDeviceWatcher* VideoDeviceWatcher::create(QObject* parent) {
    if (auto source = UdevEventSource::open())
        return new VideoDeviceWatcher(std::move(source), parent);
    return new VideoDeviceWatcher(QStringLiteral("/dev"), parent);
}

void VideoDeviceWatcher::setState(State state) {
    m_state = state;
}

void VideoDeviceWatcher::readSource() {
    if (m_state != State::Listening)
        return;
    // A receiver may delete us from its slot.
    const QPointer<VideoDeviceWatcher> alive(this);
    for (int i = 0; i < kMaxEventsPerTurn; ++i) {
        std::optional<DeviceEvent> e = m_source->receive();
        if (!e) {
            if (m_source->failed()) {
                // A closed descriptor stays readable: listening on would spin.
                m_notifier->setEnabled(false);
                setState(State::Stopped);
            }
            return;
        }
        if (isReported(e->action) && !e->node.isEmpty()) {
            Q_EMIT devicesChanged(e->action, e->node);
            if (!alive || m_state != State::Listening)
                return;
        }
    }
    // Notices may wait in the source's own buffer without the descriptor being readable.
    QMetaObject::invokeMethod(this, &VideoDeviceWatcher::readSource, Qt::QueuedConnection);
}

QSet<QString> VideoDeviceWatcher::scanFolder() const {
    static const QRegularExpression videoNode(QStringLiteral("^video[0-9]+$"));
    QSet<QString> nodes;
    const QStringList names =
        QDir(m_folder).entryList({QStringLiteral("video*")}, QDir::System | QDir::Files);
    for (const QString& name : names) {
        if (videoNode.match(name).hasMatch())
            nodes.insert(QDir(m_folder).filePath(name));
    }
    return nodes;
}

void VideoDeviceWatcher::rescanFolder() {
    if (m_state != State::WatchingFolder)
        return;
    const QSet<QString> now = scanFolder();
    const QSet<QString> gone = m_nodes - now;
    const QSet<QString> came = now - m_nodes;
    m_nodes = now;
    const QPointer<VideoDeviceWatcher> alive(this);
    for (const QString& node : sorted(gone)) {
        Q_EMIT devicesChanged(QStringLiteral("remove"), node);
        if (!alive)
            return;
    }
    for (const QString& node : sorted(came)) {
        Q_EMIT devicesChanged(QStringLiteral("add"), node);
        if (!alive)
            return;
    }
}

} // namespace lanmira
