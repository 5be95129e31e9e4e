#pragma once

#include <QObject>

class QSocketNotifier;

namespace lanmira {

// Turns SIGTERM, SIGINT and SIGHUP into a Qt signal on the GUI thread, so that being asked
// to stop closes the program the way "Exit" does: settings written, nothing lost. Modal
// dialogs open at the time are dismissed first, so the request works from any state.
class UnixSignalBridge final : public QObject {
    Q_OBJECT
public:
    explicit UnixSignalBridge(QObject* parent = nullptr);
    ~UnixSignalBridge() override;

Q_SIGNALS:
    void terminationRequested(int signalNumber);

private:
    void drain();
    static void endModalDialogs();

    QSocketNotifier* m_notifier = nullptr;
};

} // namespace lanmira
