#include "preset/ZpsReader.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "log/TesselLog.h"

namespace TesselFX {

namespace {

struct FileCloser {
    void operator()(FILE* file) const { fclose(file); }
};

/// The bytes of a file in pages of their own, which are given back to the system as the parse
/// moves past them: the file and the presets made of it are then not held in memory at once.
/// Without such pages (mmap failed) the bytes are held as usual to the end.
class FilePages {
  public:
    explicit FilePages(size_t size) : m_size(size) {
        void* pages =
            mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        m_mapped = pages != MAP_FAILED;
        if (m_mapped) {
            m_data = static_cast<char*>(pages);
        } else {
            m_fallback.resize(size);
            m_data = m_fallback.data();
        }
    }
    ~FilePages() {
        if (m_mapped) munmap(m_data, m_size);
    }
    FilePages(const FilePages&) = delete;
    FilePages& operator=(const FilePages&) = delete;

    char* Data() { return m_data; }

    /// Gives back the whole pages before cursor; their bytes read as zeros from then on.
    void ReleaseBefore(const char* cursor) {
        static const size_t pageSize = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        if (!m_mapped) return;
        const size_t whole = static_cast<size_t>(cursor - m_data) / pageSize * pageSize;
        if (whole <= m_released) return;
        madvise(m_data + m_released, whole - m_released, MADV_DONTNEED);
        m_released = whole;
    }

  private:
    size_t m_size;
    bool m_mapped = false;
    char* m_data = nullptr;
    std::vector<char> m_fallback;
    size_t m_released = 0;
};

}  // namespace

ZpsReader::ZpsReader(const std::string& systemPath, const std::string& userPath,
                     const std::shared_ptr<IPresetFactory>& presetFactory,
                     const std::shared_ptr<IPresetSetFactory>& presetSetFactory,
                     const std::shared_ptr<IPresetHandleFactory>& presetHandleFactory)
    : ZpsBufferReader(presetFactory, presetSetFactory, presetHandleFactory),
      m_systemPath(systemPath),
      m_userPath(userPath) {}

ZpsReader::ZpsReader(const char* systemPath, const char* userPath,
                     const std::shared_ptr<IPresetFactory>& presetFactory,
                     const std::shared_ptr<IPresetSetFactory>& presetSetFactory,
                     const std::shared_ptr<IPresetHandleFactory>& presetHandleFactory)
    : ZpsReader(std::string(systemPath != nullptr ? systemPath : ""),
                std::string(userPath != nullptr ? userPath : ""), presetFactory, presetSetFactory,
                presetHandleFactory) {}

void ZpsReader::SetZps(const std::string& systemPath, const std::string& userPath) {
    m_systemPath = systemPath;
    m_userPath = userPath;
}

bool ZpsReader::LoadFile(const std::string& path, bool isUser) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s zps : %s isUserZps : %s", "LoadFile", path.c_str(),
               isUser ? "yes" : "no");
    if (path.empty()) {
        if (isUser) {
            TESSEL_LOG(1, TESSEL_LOG_FXModule, "user zps is empty string");
            return true;
        }
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "system zps is empty string");
        return false;
    }
    std::unique_ptr<FILE, FileCloser> file(fopen(path.c_str(), "rbe"));
    struct stat status;
    if (file && fstat(fileno(file.get()), &status) == 0 && S_ISDIR(status.st_mode)) {
        // A directory opens for reading but cannot be read. A device has no size to seek to
        // and counts as an empty file.
        file.reset();
        errno = EISDIR;
    }
    if (!file) {
        const int error = errno;
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "open file (%s) failed! %d, %s", path.c_str(), error,
                         strerror(error));
        return false;
    }
    fseek(file.get(), 0, SEEK_END);
    const long position = ftell(file.get());
    const uint32_t size = position > 0 ? static_cast<uint32_t>(position) : 0;
    if (size == 0) {
        if (isUser) {
            TESSEL_LOG(1, TESSEL_LOG_FXModule, "the size of user zps is 0");
            return true;
        }
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "LoadFile: %s size = 0", path.c_str());
        return false;
    }
    fseek(file.get(), 0, SEEK_SET);
    FilePages pages(size);
    const size_t read = fread(pages.Data(), 1, size, file.get());
    return ParseBytes(pages.Data(), read, isUser,
                      [&pages](const char* cursor) { pages.ReleaseBefore(cursor); });
}

std::shared_ptr<IPresetSet> ZpsReader::Read() {
    if (!LoadFile(m_systemPath, false)) return nullptr;
    if (!LoadFile(m_userPath, true)) return nullptr;
    return CreatePresetSet();
}

bool ZpsReader::Read(const std::shared_ptr<IPresetSet>& presetSet) {
    if (!presetSet) return false;
    if (!LoadFile(m_systemPath, false) || !LoadFile(m_userPath, true)) return false;
    presetSet->SetPresets(m_systemPresets, true, m_userPresets, true);
    SetupPresetSet(presetSet);
    return true;
}

}  // namespace TesselFX
