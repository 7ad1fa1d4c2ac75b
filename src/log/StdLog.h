#pragma once

#include <cstdio>

#include "log/TesselLogInterface.h"

namespace TesselFX {

/// Writes one console line per message to a stream it does not own; never flushes.
class StdLog : public TesselLogInterface {
  public:
    StdLog(std::string name, FILE* stream)
        : TesselLogInterface(std::move(name)), m_stream(stream) {}
    void Print(const std::string& timestamp, uint32_t pid, uint32_t tid, uint32_t level,
               const std::string& tag, const std::string& text) override;

    /// "timestamp pid tid LEVEL: tag text", without the line feed; the file output shares it.
    static std::string FormatLine(const std::string& timestamp, uint32_t pid, uint32_t tid,
                                  const char* levelWord, const std::string& tag,
                                  const std::string& text);

  private:
    FILE* m_stream;
};

}  // namespace TesselFX
