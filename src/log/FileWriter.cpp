#include "log/FileWriter.h"

#include <cerrno>
#include <cstring>

#include "log/TesselLog.h"

namespace TesselFX {

FileWriter::~FileWriter() {
    Close();
    for (FILE* stream : m_replaced) fclose(stream);
}

bool FileWriter::Open(const std::string& path, const std::string& mode) {
    if (m_stream != nullptr) m_replaced.push_back(m_stream);
    m_stream = fopen(path.c_str(), mode.c_str());
    if (m_stream == nullptr) {
        const int error = errno;
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "FileWriter::Open %s fail %s", path.c_str(),
                         strerror(error));
        return false;
    }
    return true;
}

void FileWriter::Close() {
    if (m_stream == nullptr) return;
    fclose(m_stream);
    m_stream = nullptr;
}

void FileWriter::Write(const std::string& text) {
    if (m_stream != nullptr) fputs(text.c_str(), m_stream);
}

void FileWriter::Flush() {
    if (m_stream != nullptr) fflush(m_stream);
}

}  // namespace TesselFX
