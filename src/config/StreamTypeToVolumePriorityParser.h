#pragma once

#include <map>
#include <string>

#include "config/ISingleLineParser.h"

namespace TesselFX {

/// "AUDIO_STREAM_x=VOLUME_PRIORITY_y" -> volumePriorities[stream] = priority. An unknown name
/// on either side throws std::out_of_range.
class StreamTypeToVolumePriorityParser : public ISingleLineParser {
  public:
    explicit StreamTypeToVolumePriorityParser(std::map<int32_t, int32_t>& volumePriorities);
    void Parse(const std::string& name, const std::string& value) override;

    /// Stream type names and priority names with their numbers; immutable, process-wide.
    static const std::map<std::string, int32_t>& StreamTypes();
    static const std::map<std::string, int32_t>& Priorities();

  private:
    std::map<int32_t, int32_t>& m_volumePriorities;
};

}  // namespace TesselFX
