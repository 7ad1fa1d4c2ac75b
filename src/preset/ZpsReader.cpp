#include "preset/ZpsReader.h"

#include <sys/stat.h>

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
    FILE* const stream = file.get();
    return ParseStream(size, isUser,
                       [stream](char* to, size_t count) { return fread(to, 1, count, stream); });
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
