#pragma once

#include "browser/fileops/TiffJoiner.h"
#include "browser/fileops/UiQuestion.h"

#include <QDialog>

#include <atomic>
#include <thread>
#include <vector>

class QProgressBar;
class QPushButton;

namespace lanmira {

// The multi-page TIFF tool's progress bar; the pages are joined on a worker thread and its
// questions asked here. Emits `joinDone` once, on the user-interface thread.
class CTiffJoinDlg final : public QDialog {
    Q_OBJECT
public:
    enum class State { Ready, Running, Finished };

    CTiffJoinDlg(std::vector<TiffJoiner::Source> sources, QString output,
                 QWidget* parent = nullptr);
    ~CTiffJoinDlg() override;

    void start();
    State state() const { return m_state; }
    const TiffJoiner::Result& result() const { return m_result; }
    const QString& output() const { return m_output; }
    // For tests: no pause after each picture.
    void setPauseMs(int ms) { m_pauseMs = ms; }

Q_SIGNALS:
    void joinDone();

protected:
    void reject() override;

private:
    State m_state = State::Ready;
    std::vector<TiffJoiner::Source> m_sources;
    QString m_output;
    int m_pauseMs = 100;
    std::atomic<bool> m_cancel{false};
    std::atomic<int> m_percent{0};
    UiQuestion m_question{this};
    std::thread m_worker;
    TiffJoiner::Result m_result;
    QProgressBar* m_bar;
    QPushButton* m_cancelButton;
};

} // namespace lanmira
