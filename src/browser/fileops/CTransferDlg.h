#pragma once

#include "browser/fileops/TransferEngine.h"
#include "browser/fileops/UiQuestion.h"

#include <QDialog>
#include <QTimer>

#include <memory>
#include <thread>

class QLabel;
class QProgressBar;
class QPushButton;

namespace lanmira {

// Runs one transfer on a worker thread and shows its progress: files, bytes, the current
// name and Cancel. Conflicts are asked here while the worker waits. Emits `transferDone` once,
// on the user-interface thread.
class CTransferDlg final : public QDialog {
    Q_OBJECT
public:
    enum class State { Ready, Running, Finished };

    CTransferDlg(TransferEngine::Mode mode, QList<QByteArray> sources, QByteArray folder,
                 QWidget* parent = nullptr);
    ~CTransferDlg() override;

    void start();
    void cancelTransfer();
    State state() const { return m_state; }
    const TransferEngine::Result& result() const { return m_result; }
    TransferEngine::Mode mode() const { return m_mode; }

    // For tests: stands in for write(2) in the engine.
    void setWriteHook(std::function<ssize_t(int, const void*, std::size_t)> hook);

Q_SIGNALS:
    void transferDone();

protected:
    void reject() override; // Escape and the close button cancel

private:
    void updateProgress();
    void workerDone(TransferEngine::Result result);

    State m_state = State::Ready;
    TransferEngine::Mode m_mode;
    QList<QByteArray> m_sources;
    QByteArray m_folder;
    TransferEngine::Hooks m_hooks;
    std::unique_ptr<TransferEngine> m_engine;
    UiQuestion m_question{this};
    std::thread m_worker;
    TransferEngine::Result m_result;
    QTimer m_poll;
    QTimer m_showLater;
    QLabel* m_count;
    QLabel* m_name;
    QLabel* m_bytes;
    QProgressBar* m_bar;
    QPushButton* m_cancel;
};

} // namespace lanmira
