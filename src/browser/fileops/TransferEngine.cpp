#include "browser/fileops/TransferEngine.h"

#include "i18n/i18n.h"
#include "platform/TextFormat.h"

#include <sys/stat.h>

#include <QFile>
#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <unistd.h>
#include <vector>

namespace lanmira {
namespace {

constexpr std::size_t kCopyChunk = 8 * 1024 * 1024;
constexpr std::size_t kBufferSize = 1024 * 1024;
constexpr int kTempAttempts = 100;
// Copies waiting for one flush together: enough to share the flush, little enough that the
// names appear as the transfer goes.
constexpr std::size_t kPendingFiles = 32;
constexpr std::int64_t kPendingBytes = 64 * 1024 * 1024;

struct Fd {
    int fd = -1;
    explicit Fd(int f) : fd(f) {}
    ~Fd() {
        if (fd >= 0)
            ::close(fd);
    }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    // Close and report: a late write error (NFS, a full quota) shows only here.
    bool close() {
        const int f = fd;
        fd = -1;
        return ::close(f) == 0;
    }
};

struct DirCloser {
    void operator()(DIR* d) const { ::closedir(d); }
};

QByteArray baseName(const QByteArray& path) {
    QByteArray p = path;
    while (p.size() > 1 && p.endsWith('/'))
        p.chop(1);
    return p.mid(p.lastIndexOf('/') + 1);
}

QByteArray folderOf(const QByteArray& path) {
    const qsizetype slash = path.lastIndexOf('/');
    return slash <= 0 ? QByteArrayLiteral("/") : path.left(slash);
}

QByteArray join(const QByteArray& folder, const QByteArray& name) {
    return folder.endsWith('/') ? QByteArray(folder + name) : QByteArray(folder + '/' + name);
}

QByteArray realPath(const QByteArray& path) {
    std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(path.constData(), nullptr),
                                                         &std::free);
    return resolved ? QByteArray(resolved.get()) : QByteArray();
}

std::vector<QByteArray> namesIn(const QByteArray& folder, int* error) {
    std::vector<QByteArray> names;
    std::unique_ptr<DIR, DirCloser> dir(::opendir(folder.constData()));
    if (!dir) {
        *error = errno;
        return names;
    }
    while (const dirent* e = ::readdir(dir.get())) {
        if (std::strcmp(e->d_name, ".") != 0 && std::strcmp(e->d_name, "..") != 0)
            names.emplace_back(e->d_name);
    }
    *error = 0;
    return names;
}

void countTree(const QByteArray& path, const struct stat& st, int* files, std::int64_t* bytes) {
    if (!S_ISDIR(st.st_mode)) {
        ++*files;
        if (S_ISREG(st.st_mode))
            *bytes += st.st_size;
        return;
    }
    int error = 0;
    for (const QByteArray& name : namesIn(path, &error)) {
        const QByteArray child = join(path, name);
        struct stat cs {};
        if (::lstat(child.constData(), &cs) == 0)
            countTree(child, cs, files, bytes);
    }
}

// Makes a rename or a new name durable before a source that depends on it is removed.
void syncFolder(const QByteArray& folder) {
    Fd dir(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (dir.fd >= 0)
        ::fsync(dir.fd);
}

QString shown(const QByteArray& path) {
    return QFile::decodeName(path);
}

} // namespace

TransferEngine::TransferEngine(Mode mode, QList<QByteArray> sources, QByteArray targetFolder,
                               Hooks hooks)
    : m_mode(mode), m_sources(std::move(sources)), m_target(std::move(targetFolder)),
      m_hooks(std::move(hooks)) {
    while (m_target.size() > 1 && m_target.endsWith('/'))
        m_target.chop(1);
}

TransferEngine::~TransferEngine() {
    // run() finishes what it wrote; this is for an engine left mid-way.
    for (const Pending& p : m_pending) {
        ::close(p.fd);
        ::unlink(p.temp.constData());
    }
}

TransferEngine::Progress TransferEngine::progress() const {
    std::lock_guard lock(m_progressLock);
    return m_progress;
}

void TransferEngine::fail(const QByteArray& path, const QString& reason) {
    m_result.failures.push_back({shown(path), reason});
}

void TransferEngine::fail(const QByteArray& path, int error) {
    fail(path, QString::fromLocal8Bit(std::strerror(error)));
}

void TransferEngine::fileDone(std::int64_t bytes) {
    std::lock_guard lock(m_progressLock);
    ++m_progress.filesDone;
    m_progress.bytesDone += bytes;
}

void TransferEngine::addBytes(std::int64_t bytes) {
    std::lock_guard lock(m_progressLock);
    m_progress.bytesDone += bytes;
}

void TransferEngine::setCurrent(const QByteArray& path) {
    std::lock_guard lock(m_progressLock);
    m_progress.current = shown(baseName(path));
}

TransferEngine::Result TransferEngine::run() {
    State expected = State::Ready;
    if (!m_state.compare_exchange_strong(expected, State::Running))
        return m_result;

    struct Top {
        QByteArray path;
        struct stat st;
    };
    std::vector<Top> tops;
    struct stat targetStat {};
    const bool targetOk =
        ::stat(m_target.constData(), &targetStat) == 0 && S_ISDIR(targetStat.st_mode);
    const QByteArray realTarget = realPath(m_target);
    for (const QByteArray& source : m_sources) {
        struct stat st {};
        if (::lstat(source.constData(), &st) != 0) {
            fail(source, i18n_stringW("ids_lanmira_transfer_gone"));
            continue;
        }
        if (!targetOk) {
            fail(source,
                 formatText(i18n_stringW("ids_lanmira_transfer_notarget"), {shown(m_target)}));
            continue;
        }
        if (S_ISDIR(st.st_mode)) {
            const QByteArray real = realPath(source);
            if (real == realTarget || realTarget.startsWith(QByteArray(real + '/'))) {
                fail(source, i18n_stringW("ids_lanmira_transfer_intoitself"));
                continue;
            }
        }
        int files = 0;
        std::int64_t bytes = 0;
        countTree(source, st, &files, &bytes);
        {
            std::lock_guard lock(m_progressLock);
            m_progress.filesTotal += files;
            m_progress.bytesTotal += bytes;
        }
        tops.push_back({source, st});
    }

    for (const Top& top : tops) {
        if (transfer(top.path, top.st, join(m_target, baseName(top.path))) == Outcome::Cancelled)
            break;
    }
    // Copies written before a cancel are whole: they end as they would have one by one.
    finishPending();
    m_result.cancelled = m_cancel.load();
    m_state.store(State::Finished);
    return m_result;
}

TransferEngine::Outcome TransferEngine::transfer(const QByteArray& source, const struct stat& st,
                                                 const QByteArray& target) {
    if (m_cancel.load())
        return Outcome::Cancelled;
    setCurrent(source);
    if (S_ISDIR(st.st_mode))
        return transferFolder(source, st, target);
    if (!S_ISREG(st.st_mode) && !S_ISLNK(st.st_mode)) {
        fail(source, i18n_stringW("ids_lanmira_transfer_notfile"));
        return Outcome::Failed;
    }
    return transferFile(source, st, target);
}

TransferEngine::Outcome TransferEngine::resolveConflict(const QByteArray& target, bool* replace) {
    Conflict answer = Conflict::Skip;
    if (m_haveAnswerForAll) {
        answer = m_answerForAll;
    } else if (m_hooks.askConflict) {
        bool all = false;
        answer = m_hooks.askConflict(shown(target), &all);
        if (all && answer != Conflict::Cancel) {
            m_haveAnswerForAll = true;
            m_answerForAll = answer;
        }
    }
    switch (answer) {
    case Conflict::Replace:
        *replace = true;
        return Outcome::Done;
    case Conflict::Skip:
        return Outcome::Skipped;
    case Conflict::Cancel:
        break;
    }
    cancel();
    return Outcome::Cancelled;
}

TransferEngine::Outcome TransferEngine::transferFile(const QByteArray& source,
                                                     const struct stat& st,
                                                     const QByteArray& target) {
    const std::int64_t bytes = S_ISREG(st.st_mode) ? st.st_size : 0;
    bool replace = false;
    // A waiting copy to the same name (two sources of one name) is asked about as any other.
    if (pendingTarget(target))
        finishPending();
    struct stat ts {};
    if (::lstat(target.constData(), &ts) == 0) {
        if (ts.st_dev == st.st_dev && ts.st_ino == st.st_ino) {
            fail(source, i18n_stringW("ids_lanmira_transfer_itself"));
            return Outcome::Failed;
        }
        if (S_ISDIR(ts.st_mode)) {
            fail(source, i18n_stringW("ids_lanmira_transfer_folderexists"));
            return Outcome::Failed;
        }
        const Outcome o = resolveConflict(target, &replace);
        if (o == Outcome::Skipped) {
            ++m_result.skipped;
            fileDone(bytes);
        }
        if (o != Outcome::Done)
            return o;
    }

    if (m_mode == Mode::Move) {
        int error = 0;
        if (moveIntoPlace(source, target, replace, &error)) {
            ++m_result.transferred;
            fileDone(bytes);
            return Outcome::Done;
        }
        if (error != EXDEV) {
            fail(source, error);
            return Outcome::Failed;
        }
    }
    // Counted, and a moved source removed, once the copy is flushed and named.
    return copyFile(source, st, target, replace);
}

bool TransferEngine::pendingTarget(const QByteArray& target) const {
    return std::any_of(m_pending.begin(), m_pending.end(),
                       [&](const Pending& p) { return p.target == target; });
}

bool TransferEngine::finishPending() {
    bool ok = true;
    std::vector<const Pending*> named;
    for (Pending& p : m_pending) {
        int error = 0;
        bool good = ::fsync(p.fd) == 0;
        if (!good)
            error = errno;
        // Close and check: a late write error (NFS, a full quota) shows only here.
        if (::close(p.fd) != 0 && good)
            good = false, error = errno;
        p.fd = -1;
        if (good && !moveIntoPlace(p.temp, p.target, p.replace, &error))
            good = false;
        if (!good) {
            ::unlink(p.temp.constData());
            fail(p.source, error);
            ok = false;
            continue;
        }
        named.push_back(&p);
    }
    if (m_mode == Mode::Move) {
        // The copies are flushed and named; only now may the sources go.
        std::vector<QByteArray> folders;
        for (const Pending* p : named) {
            const QByteArray folder = folderOf(p->target);
            if (std::find(folders.begin(), folders.end(), folder) == folders.end())
                folders.push_back(folder);
        }
        for (const QByteArray& folder : folders)
            syncFolder(folder);
    }
    for (const Pending* p : named) {
        if (m_mode == Mode::Move && ::unlink(p->source.constData()) != 0 && errno != ENOENT) {
            fail(p->source, formatText(i18n_stringW("ids_lanmira_transfer_copiedonly"),
                                       {QString::fromLocal8Bit(std::strerror(errno))}));
            ok = false;
            continue;
        }
        ++m_result.transferred;
        fileDone(0); // the bytes were counted as they went
    }
    m_pending.clear();
    m_pendingBytes = 0;
    return ok;
}

TransferEngine::Outcome TransferEngine::transferFolder(const QByteArray& source,
                                                       const struct stat& st,
                                                       const QByteArray& target) {
    struct stat ts {};
    const bool exists = ::lstat(target.constData(), &ts) == 0;
    if (exists && ts.st_dev == st.st_dev && ts.st_ino == st.st_ino) {
        fail(source, i18n_stringW("ids_lanmira_transfer_itself"));
        return Outcome::Failed;
    }
    if (exists && !S_ISDIR(ts.st_mode)) {
        fail(source, i18n_stringW("ids_lanmira_transfer_fileexists"));
        return Outcome::Failed;
    }
    if (!exists && m_mode == Mode::Move) {
        int error = 0;
        if (moveIntoPlace(source, target, false, &error)) {
            int files = 0;
            std::int64_t bytes = 0;
            countTree(target, st, &files, &bytes);
            m_result.transferred += files;
            std::lock_guard lock(m_progressLock);
            m_progress.filesDone += files;
            m_progress.bytesDone += bytes;
            return Outcome::Done;
        }
        if (error != EXDEV) {
            fail(source, error);
            return Outcome::Failed;
        }
    }
    if (!exists && ::mkdir(target.constData(), 0700) != 0) {
        fail(source, errno);
        return Outcome::Failed;
    }

    int error = 0;
    const std::vector<QByteArray> names = namesIn(source, &error);
    if (error != 0) {
        fail(source, error);
        return Outcome::Failed;
    }
    bool complete = true;
    for (const QByteArray& name : names) {
        const QByteArray child = join(source, name);
        struct stat cs {};
        if (::lstat(child.constData(), &cs) != 0) {
            fail(child, i18n_stringW("ids_lanmira_transfer_gone"));
            complete = false;
            continue;
        }
        const Outcome o = transfer(child, cs, join(target, name));
        if (o == Outcome::Cancelled)
            return o;
        complete = complete && o == Outcome::Done;
    }
    // The folder's own mode and time come after everything in it has its name.
    complete = finishPending() && complete;
    if (!exists) {
        ::chmod(target.constData(), st.st_mode & 07777);
        const struct timespec times[2] = {st.st_atim, st.st_mtim};
        ::utimensat(AT_FDCWD, target.constData(), times, 0);
    }
    // A moved folder goes once everything in it has gone; what stayed keeps it.
    if (m_mode == Mode::Move && complete)
        ::rmdir(source.constData());
    return complete ? Outcome::Done : Outcome::Failed;
}

bool TransferEngine::moveIntoPlace(const QByteArray& from, const QByteArray& target, bool replace,
                                   int* error) {
    if (replace) {
        if (::rename(from.constData(), target.constData()) == 0)
            return true;
        *error = errno;
        return false;
    }
    // Never over a file that appeared after the question was settled.
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE) ==
        0)
        return true;
    *error = errno;
    if (*error != EINVAL && *error != ENOSYS)
        return false;
    // File systems without the flag: a second name cannot replace anything.
    struct stat st {};
    if (::lstat(from.constData(), &st) == 0 && !S_ISDIR(st.st_mode)) {
        if (::link(from.constData(), target.constData()) != 0) {
            *error = errno;
            return false;
        }
        ::unlink(from.constData());
        return true;
    }
    if (::lstat(target.constData(), &st) == 0) {
        *error = EEXIST;
        return false;
    }
    if (::rename(from.constData(), target.constData()) == 0)
        return true;
    *error = errno;
    return false;
}

TransferEngine::Outcome TransferEngine::copyFile(const QByteArray& source, const struct stat& st,
                                                 const QByteArray& target, bool replace) {
    const QByteArray folder = folderOf(target);
    QByteArray temp;
    int error = 0;

    if (S_ISLNK(st.st_mode)) {
        QByteArray link(static_cast<qsizetype>(st.st_size > 0 ? st.st_size + 1 : 4096), '\0');
        const ssize_t n = ::readlink(source.constData(), link.data(), link.size());
        if (n < 0) {
            fail(source, errno);
            return Outcome::Failed;
        }
        link.truncate(n);
        for (int attempt = 0; attempt < kTempAttempts; ++attempt) {
            temp = join(folder, '.' + baseName(target) + '.' +
                                    QByteArray::number(QRandomGenerator::global()->generate(), 36) +
                                    kTempSuffix);
            if (::symlink(link.constData(), temp.constData()) == 0)
                break;
            error = errno;
            temp.clear();
            if (error != EEXIST)
                break;
        }
        if (temp.isEmpty()) {
            fail(source, error);
            return Outcome::Failed;
        }
        if (!moveIntoPlace(temp, target, replace, &error)) {
            ::unlink(temp.constData());
            fail(source, error);
            return Outcome::Failed;
        }
        if (m_mode == Mode::Move) {
            syncFolder(folder);
            if (::unlink(source.constData()) != 0 && errno != ENOENT) {
                fail(source, formatText(i18n_stringW("ids_lanmira_transfer_copiedonly"),
                                        {QString::fromLocal8Bit(std::strerror(errno))}));
                return Outcome::Failed;
            }
        }
        ++m_result.transferred;
        fileDone(0);
        return Outcome::Done;
    }

    Fd in(::open(source.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (in.fd < 0) {
        fail(source, errno == ENOENT ? i18n_stringW("ids_lanmira_transfer_gone")
                                     : QString::fromLocal8Bit(std::strerror(errno)));
        return Outcome::Failed;
    }
    Fd out(-1);
    for (int attempt = 0; attempt < kTempAttempts && out.fd < 0; ++attempt) {
        temp = join(folder, '.' + baseName(target) + '.' +
                                QByteArray::number(QRandomGenerator::global()->generate(), 36) +
                                kTempSuffix);
        out.fd = ::open(temp.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        error = errno;
        if (out.fd < 0 && error != EEXIST)
            break;
    }
    if (out.fd < 0) {
        fail(source, error);
        return Outcome::Failed;
    }

    bool ok = copyBytes(in.fd, out.fd, source, &error);
    if (ok && ::fchmod(out.fd, st.st_mode & 07777) != 0)
        ok = false, error = errno;
    if (ok) {
        const struct timespec times[2] = {st.st_atim, st.st_mtim};
        ::futimens(out.fd, times);
    }
    if (!ok) {
        out.close();
        ::unlink(temp.constData());
        if (m_cancel.load())
            return Outcome::Cancelled;
        fail(source, error);
        return Outcome::Failed;
    }
    // Flushed, then named, together with the next few.
    m_pending.push_back({out.fd, temp, target, source, replace});
    out.fd = -1;
    m_pendingBytes += st.st_size;
    if (m_pending.size() >= kPendingFiles || m_pendingBytes >= kPendingBytes)
        finishPending();
    return Outcome::Done;
}

bool TransferEngine::copyBytes(int from, int to, const QByteArray& source, int* error) {
    Q_UNUSED(source);
    // The kernel copies without bringing the bytes up here, and may share blocks.
    bool kernelCopy = !m_hooks.write;
    while (kernelCopy) {
        if (m_cancel.load()) {
            *error = ECANCELED;
            return false;
        }
        const ssize_t n = ::copy_file_range(from, nullptr, to, nullptr, kCopyChunk, 0);
        if (n > 0) {
            // Start writing back now, so the flush before the rename has little left.
            const off_t end = ::lseek(to, 0, SEEK_CUR);
            ::sync_file_range(to, end - n, n, SYNC_FILE_RANGE_WRITE);
            addBytes(n);
            continue;
        }
        if (n == 0)
            return true;
        if (errno == EINTR)
            continue;
        if (errno != EXDEV && errno != ENOSYS && errno != EINVAL && errno != EOPNOTSUPP) {
            *error = errno;
            return false;
        }
        kernelCopy = false; // from here on by hand, after whatever was already copied
    }
    std::vector<char> buffer(kBufferSize);
    for (;;) {
        if (m_cancel.load()) {
            *error = ECANCELED;
            return false;
        }
        const ssize_t n = ::read(from, buffer.data(), buffer.size());
        if (n == 0)
            return true;
        if (n < 0) {
            if (errno == EINTR)
                continue;
            *error = errno;
            return false;
        }
        if (!writeAll(to, buffer.data(), static_cast<std::size_t>(n), error))
            return false;
        addBytes(n);
    }
}

bool TransferEngine::writeAll(int fd, const char* data, std::size_t size, int* error) {
    while (size > 0) {
        const ssize_t n = m_hooks.write ? m_hooks.write(fd, data, size) : ::write(fd, data, size);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            *error = errno;
            return false;
        }
        if (n == 0) {
            *error = ENOSPC;
            return false;
        }
        data += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

} // namespace lanmira
