#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace TesselFX {

/// The stream of the log file. Not thread safe: the file output drives it from its queue
/// thread only. A stream replaced by a later Open stays open until the writer is destroyed.
class FileWriter {
  public:
    FileWriter() = default;
    virtual ~FileWriter();
    FileWriter(const FileWriter&) = delete;
    FileWriter& operator=(const FileWriter&) = delete;

    /// fopen(path, mode); the result replaces the current stream even when the open failed,
    /// which is then logged. The earlier stream is not closed.
    bool Open(const std::string& path, const std::string& mode);
    /// Closes the current stream, if any.
    void Close();
    /// Writes the text to the current stream; nothing without one.
    void Write(const std::string& text);
    void Flush();
    bool IsOpen() const { return m_stream != nullptr; }

  private:
    FILE* m_stream = nullptr;
    std::vector<FILE*> m_replaced;
};

}  // namespace TesselFX
