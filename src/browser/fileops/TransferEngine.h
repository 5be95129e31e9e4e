#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <QByteArray>
#include <QList>
#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

namespace lanmira {

// Copies or moves files and folders into a folder without ever losing one: a file is
// written under a temporary name beside its target, flushed, given its permissions and
// times, and only then renamed into place; a move across file systems removes a source
// only after its copy is complete and flushed. Runs on a worker thread; `cancel` may come
// from any thread and leaves every source intact and no partial file under a final name.
class TransferEngine {
public:
    enum class Mode { Copy, Move };
    enum class State { Ready, Running, Finished };
    enum class Conflict { Replace, Skip, Cancel };

    struct Progress {
        int filesDone = 0;
        int filesTotal = 0;
        std::int64_t bytesDone = 0;
        std::int64_t bytesTotal = 0;
        QString current; // file name being transferred
    };

    struct Failure {
        QString path; // as shown to the user
        QString reason;
    };

    struct Result {
        int transferred = 0; // files and links now at their target
        int skipped = 0;
        bool cancelled = false;
        std::vector<Failure> failures;
        bool ok() const { return !cancelled && failures.empty(); }
    };

    struct Hooks {
        // Worker thread: a target of this name exists. `applyToAll` may be set to give the
        // same answer to every later conflict. Unset: Skip.
        std::function<Conflict(const QString& targetPath, bool* applyToAll)> askConflict;
        // For tests: stands in for write(2) when set (a full disk, a failing device).
        std::function<ssize_t(int fd, const void* data, std::size_t size)> write;
    };

    TransferEngine(Mode mode, QList<QByteArray> sources, QByteArray targetFolder, Hooks hooks);
    ~TransferEngine();
    TransferEngine(const TransferEngine&) = delete;
    TransferEngine& operator=(const TransferEngine&) = delete;

    // Worker thread; once.
    Result run();
    void cancel() { m_cancel.store(true); }
    bool cancelled() const { return m_cancel.load(); }

    Progress progress() const;
    State state() const { return m_state.load(); }

    // The temporary names this engine writes: a hidden prefix and this suffix.
    static constexpr const char* kTempSuffix = ".lanmira-part";

private:
    enum class Outcome { Done, Skipped, Failed, Cancelled };

    void plan(const QByteArray& path, const struct stat& st);
    Outcome transfer(const QByteArray& source, const struct stat& st, const QByteArray& target);
    Outcome transferFolder(const QByteArray& source, const struct stat& st,
                           const QByteArray& target);
    Outcome transferFile(const QByteArray& source, const struct stat& st, const QByteArray& target);
    Outcome copyFile(const QByteArray& source, const struct stat& st, const QByteArray& target,
                     bool replace);
    bool copyBytes(int from, int to, const QByteArray& source, int* error);
    bool writeAll(int fd, const char* data, std::size_t size, int* error);
    bool moveIntoPlace(const QByteArray& temp, const QByteArray& target, bool replace, int* error);
    // Flushes the copies waiting under temporary names, then names them (and, moving,
    // removes their sources); false when one of them failed.
    bool finishPending();
    bool pendingTarget(const QByteArray& target) const;
    // Asks about an existing target; Replace or Skip, or Cancelled.
    Outcome resolveConflict(const QByteArray& target, bool* replace);

    void fail(const QByteArray& path, const QString& reason);
    void fail(const QByteArray& path, int error);
    void fileDone(std::int64_t bytes);
    void setCurrent(const QByteArray& path);
    void addBytes(std::int64_t bytes);

    Mode m_mode;
    QList<QByteArray> m_sources;
    QByteArray m_target;
    Hooks m_hooks;
    std::atomic<bool> m_cancel{false};
    std::atomic<State> m_state{State::Ready};
    bool m_haveAnswerForAll = false;
    Conflict m_answerForAll = Conflict::Skip;
    Result m_result;

    // A copy written whole, waiting for its flush. Flushing several at once lets one journal
    // commit and one device flush serve them all.
    struct Pending {
        int fd;
        QByteArray temp;
        QByteArray target;
        QByteArray source;
        bool replace;
    };
    std::vector<Pending> m_pending;
    std::int64_t m_pendingBytes = 0;

    mutable std::mutex m_progressLock; // guards m_progress
    Progress m_progress;
};

} // namespace lanmira
