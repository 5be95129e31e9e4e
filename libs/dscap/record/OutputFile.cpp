#include "dscap/record/OutputFile.h"

extern "C" {
#include <libavformat/avio.h>
#include <libavutil/error.h>
#include <libavutil/mem.h>
}

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace dscap {
namespace {

constexpr int kBufferBytes = 256 * 1024;

} // namespace

OutputFile::OutputFile(std::filesystem::path path, int fd) : path_(std::move(path)), fd_(fd) {}

OutputFile::~OutputFile() {
    close();
}

std::unique_ptr<OutputFile> OutputFile::create(const std::filesystem::path& path, int& averror) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY, 0666);
    if (fd < 0) {
        averror = AVERROR(errno);
        return nullptr;
    }
    std::unique_ptr<OutputFile> file(new OutputFile(path, fd));
    auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferBytes));
    if (buffer) {
        file->io_.reset(avio_alloc_context(buffer, kBufferBytes, 1, file.get(), nullptr,
                                           &OutputFile::writeBytes, &OutputFile::seekTo));
        if (!file->io_)
            av_free(buffer);
    }
    if (!file->io_) {
        averror = AVERROR(ENOMEM);
        return nullptr;
    }
    return file;
}

int OutputFile::writeBytes(void* opaque, std::uint8_t* data, int size) {
    const int fd = static_cast<OutputFile*>(opaque)->fd_;
    for (int done = 0; done < size;) {
        const ssize_t n = ::write(fd, data + done, static_cast<std::size_t>(size - done));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return AVERROR(errno);
        if (n == 0)
            return AVERROR(EIO);
        done += static_cast<int>(n);
    }
    return size;
}

std::int64_t OutputFile::seekTo(void* opaque, std::int64_t offset, int whence) {
    const int fd = static_cast<OutputFile*>(opaque)->fd_;
    if (whence & AVSEEK_SIZE) {
        struct stat st {};
        return ::fstat(fd, &st) == 0 ? static_cast<std::int64_t>(st.st_size) : AVERROR(errno);
    }
    const off_t position = ::lseek(fd, offset, whence & ~AVSEEK_FORCE);
    return position < 0 ? AVERROR(errno) : position;
}

bool OutputFile::flushComplete() {
    avio_flush(io_.get());
    if (io_->error < 0)
        return false;
    // The Matroska trailer seeks back to fill in the header; the end is what counts.
    completeBytes_ = std::max(completeBytes_, avio_tell(io_.get()));
    return true;
}

void OutputFile::closeAtLastComplete() {
    if (fd_ < 0)
        return;
    // Data that failed to go out is thrown away, not retried at close.
    io_.reset();
    struct stat st {};
    if (::fstat(fd_, &st) == 0 && S_ISREG(st.st_mode))
        (void)::ftruncate(fd_, completeBytes_);
    ::close(fd_);
    fd_ = -1;
}

int OutputFile::close() {
    if (fd_ < 0)
        return 0;
    int result = 0;
    if (io_) {
        avio_flush(io_.get());
        result = io_->error;
        io_.reset();
    }
    if (::close(fd_) != 0 && result == 0)
        result = AVERROR(errno);
    fd_ = -1;
    return result;
}

void OutputFile::discard() {
    struct stat st {};
    const bool regular = fd_ >= 0 && ::fstat(fd_, &st) == 0 && S_ISREG(st.st_mode);
    closeAtLastComplete();
    if (regular)
        ::unlink(path_.c_str());
}

} // namespace dscap
