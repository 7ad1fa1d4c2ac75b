#include "FileAccess.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "ZbctlError.h"

namespace TesselFX {
namespace zbctl {

namespace {

constexpr size_t kReadBlock = 1 << 16;

// Closes a descriptor when it goes, unless Release took it.
class Descriptor {
  public:
    explicit Descriptor(int fd) : m_fd(fd) {}
    ~Descriptor() {
        if (m_fd >= 0) close(m_fd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Get() const { return m_fd; }
    int Release() {
        const int fd = m_fd;
        m_fd = -1;
        return fd;
    }

  private:
    int m_fd;
};

std::string ReadFailure(const std::string& path, const std::string& what) {
    return "cannot read " + (what.empty() ? "" : what + " ") + path + ": " + std::strerror(errno);
}

// The permissions of a new file as open(2) would give them.
mode_t NewFileMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

}  // namespace

std::vector<char> ReadFileBytes(const std::string& path, const std::string& what) {
    Descriptor fd(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status {};
    if (fd.Get() < 0 || fstat(fd.Get(), &status) != 0) throw ZbctlError(ReadFailure(path, what));
    if (S_ISDIR(status.st_mode)) {
        errno = EISDIR;
        throw ZbctlError(ReadFailure(path, what));
    }
    // A regular file is read in one go into a buffer of its size; anything else grows block by
    // block until its end.
    std::vector<char> bytes(S_ISREG(status.st_mode) ? static_cast<size_t>(status.st_size) + 1
                                                    : kReadBlock);
    size_t used = 0;
    for (;;) {
        if (used == bytes.size()) bytes.resize(bytes.size() + std::max(kReadBlock, used / 2));
        const ssize_t got = read(fd.Get(), bytes.data() + used, bytes.size() - used);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) throw ZbctlError(ReadFailure(path, what));
        if (got == 0) break;
        used += static_cast<size_t>(got);
    }
    bytes.resize(used);
    return bytes;
}

std::string ReadText(const std::string& path, const std::string& what) {
    const std::vector<char> bytes = ReadFileBytes(path, what);
    return std::string(bytes.begin(), bytes.end());
}

void RefuseOutputOverInputs(const std::string& output, const std::vector<std::string>& inputs) {
    struct stat target {};
    if (output.empty() || stat(output.c_str(), &target) != 0) return;
    for (const std::string& input : inputs) {
        struct stat source {};
        if (input.empty() || stat(input.c_str(), &source) != 0) continue;
        if (source.st_dev == target.st_dev && source.st_ino == target.st_ino) {
            throw UsageError("the output " + output + " is the input " + input +
                             ": writing it would destroy what is read");
        }
    }
}

std::string WriteFailure(const std::string& target) {
    return "cannot write " + target + ": " + std::strerror(errno);
}

void WriteAll(int fd, const char* data, size_t size, const std::string& target) {
    while (size > 0) {
        const ssize_t written = write(fd, data, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) {
            if (written == 0) errno = EIO;
            throw ZbctlError(WriteFailure(target));
        }
        data += written;
        size -= static_cast<size_t>(written);
    }
}

void WriteFileWhole(const std::string& target, const std::function<void(int fd)>& content) {
    std::string path = target;
    char* resolved = realpath(target.c_str(), nullptr);
    if (resolved != nullptr) {
        path = resolved;
        free(resolved);
    }
    struct stat status {};
    const bool exists = stat(path.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) {
        errno = EISDIR;
        throw ZbctlError(WriteFailure(target));
    }
    if (exists && !S_ISREG(status.st_mode)) {
        Descriptor fd(open(path.c_str(), O_WRONLY | O_CLOEXEC));
        if (fd.Get() < 0) throw ZbctlError(WriteFailure(target));
        content(fd.Get());
        if (close(fd.Release()) != 0) throw ZbctlError(WriteFailure(target));
        return;
    }
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    std::string temporary = folder + (slash == std::string::npos ? "/." : ".") + name + ".XXXXXX";
    Descriptor fd(mkostemp(temporary.data(), O_CLOEXEC));
    if (fd.Get() < 0) throw ZbctlError(WriteFailure(target));
    try {
        if (fchmod(fd.Get(), exists ? status.st_mode & 07777 : NewFileMode()) != 0)
            throw ZbctlError(WriteFailure(target));
        content(fd.Get());
        if (fsync(fd.Get()) != 0 || close(fd.Release()) != 0 ||
            rename(temporary.c_str(), path.c_str()) != 0) {
            throw ZbctlError(WriteFailure(target));
        }
    } catch (...) {
        unlink(temporary.c_str());
        throw;
    }
}

void WriteFileWhole(const std::string& target, const std::vector<char>& bytes) {
    WriteFileWhole(target, [&](int fd) { WriteAll(fd, bytes.data(), bytes.size(), target); });
}

}  // namespace zbctl
}  // namespace TesselFX
