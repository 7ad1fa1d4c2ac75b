#include "log/FileLogPrintMessage.h"

#include "log/StdLog.h"

namespace TesselFX {

FileLogPrintMessage::FileLogPrintMessage(std::shared_ptr<FileWriter> writer,
                                         const std::string& timestamp, uint32_t pid, uint32_t tid,
                                         const char* levelWord, const std::string& tag,
                                         const std::string& text)
    : m_writer(std::move(writer)),
      m_line(StdLog::FormatLine(timestamp, pid, tid, levelWord, tag, text) + "\n") {}

void FileLogPrintMessage::Execute() {
    if (!m_writer) return;
    if (IsLostBefore()) m_writer->Write("* ");
    m_writer->Write(m_line);
    m_writer->Flush();
}

}  // namespace TesselFX
