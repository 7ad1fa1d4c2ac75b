#include "log/StdLog.h"

#include <sstream>

namespace TesselFX {

std::string StdLog::FormatLine(const std::string& timestamp, uint32_t pid, uint32_t tid,
                               const char* levelWord, const std::string& tag,
                               const std::string& text) {
    std::ostringstream line;
    line << timestamp << ' ' << pid << ' ' << tid << ' ' << levelWord << ' ' << tag << ' ' << text;
    return line.str();
}

void StdLog::Print(const std::string& timestamp, uint32_t pid, uint32_t tid, uint32_t level,
                   const std::string& tag, const std::string& text) {
    fprintf(m_stream, "%s\n",
            FormatLine(timestamp, pid, tid, LogLevelWord(level), tag, text).c_str());
}

}  // namespace TesselFX
