#include "ProfileWriter.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr const char* kUsage =
    "Usage: lanmira-profile-writer --key PRIVATE.pem INPUT.xml OUTPUT.exml\n"
    "       lanmira-profile-writer --key PRIVATE.pem --print-public-key\n"
    "       lanmira-profile-writer --help\n"
    "\n"
    "Writes a product profile: the XML (UTF-8, or UTF-16 with a byte-order mark) is\n"
    "stored as UTF-16LE and enciphered block by block with the 1024-bit RSA private key.\n"
    "--print-public-key prints the key's public half as src/app/ProfilePublicKey.h.\n";

// Removes the temporary file unless it has been renamed into place.
class TempFile {
public:
    explicit TempFile(std::string path) : path_(std::move(path)) {}
    ~TempFile() {
        if (!committed_)
            ::unlink(path_.c_str());
    }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    void commit() { committed_ = true; }

private:
    std::string path_;
    bool committed_ = false;
};

bool writeAll(int fd, const std::vector<std::uint8_t>& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        done += static_cast<std::size_t>(n);
    }
    return true;
}

// A reader never sees a half-written profile: write beside the target, then rename.
bool writeAtomically(const std::string& output, const std::vector<std::uint8_t>& bytes,
                     std::string& error) {
    std::string pattern = output + ".XXXXXX";
    const int fd = ::mkstemp(pattern.data());
    if (fd < 0) {
        error = "cannot create a temporary file beside " + output + ": " + std::strerror(errno);
        return false;
    }
    TempFile temp(pattern);
    const bool written = writeAll(fd, bytes) && ::fchmod(fd, 0644) == 0 && ::fsync(fd) == 0;
    const int savedErrno = errno;
    if (::close(fd) != 0 || !written) {
        error = "cannot write " + pattern + ": " + std::strerror(written ? errno : savedErrno);
        return false;
    }
    if (::rename(pattern.c_str(), output.c_str()) != 0) {
        error = "cannot rename " + pattern + " to " + output + ": " + std::strerror(errno);
        return false;
    }
    temp.commit();
    return true;
}

int fail(const std::string& message) {
    std::cerr << "lanmira-profile-writer: " << message << '\n';
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    std::string keyFile;
    bool printPublicKey = false;
    std::vector<std::string> files;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--help" || arg == "-h") {
            std::cout << kUsage;
            return 0;
        }
        if (arg == "--key" && i + 1 < argc) {
            keyFile = argv[++i];
        } else if (arg == "--print-public-key") {
            printPublicKey = true;
        } else if (arg.starts_with("-") && arg != "-") {
            std::cerr << "lanmira-profile-writer: unknown option " << arg << "\n" << kUsage;
            return 2;
        } else {
            files.push_back(arg);
        }
    }
    if (keyFile.empty() || (printPublicKey ? !files.empty() : files.size() != 2)) {
        std::cerr << kUsage;
        return 2;
    }

    std::string error;
    const auto writer = lanmira::ProfileWriter::fromPemFile(keyFile, error);
    if (!writer)
        return fail(error);
    if (printPublicKey) {
        std::cout << writer->publicKeyHeader();
        return 0;
    }

    std::ifstream in(files[0], std::ios::binary);
    if (!in)
        return fail("cannot open " + files[0]);
    const std::vector<std::uint8_t> xml{std::istreambuf_iterator<char>(in),
                                        std::istreambuf_iterator<char>()};
    if (in.bad())
        return fail("cannot read " + files[0]);

    std::vector<std::uint8_t> exml;
    if (!writer->write(xml, exml, error))
        return fail(files[0] + ": " + error);
    if (!writeAtomically(files[1], exml, error))
        return fail(error);
    return 0;
}
