#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "log/FileWriter.h"
#include "log/Message.h"

namespace TesselFX {

/// One log line for the file. The line is built on the logging thread, so that the queue
/// thread only writes. A line that follows refused messages starts with the mark "* ".
class FileLogPrintMessage : public TesselInterprocess::Message {
  public:
    FileLogPrintMessage(std::shared_ptr<FileWriter> writer, const std::string& timestamp,
                        uint32_t pid, uint32_t tid, const char* levelWord, const std::string& tag,
                        const std::string& text);
    void Execute() override;

    const std::string& GetLine() const { return m_line; }

  private:
    std::shared_ptr<FileWriter> m_writer;
    std::string m_line;
};

}  // namespace TesselFX
