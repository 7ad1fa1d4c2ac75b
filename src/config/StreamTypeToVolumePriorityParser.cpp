#include "config/StreamTypeToVolumePriorityParser.h"

#include "config/ConfigTypes.h"
#include "log/TesselLog.h"

namespace TesselFX {

StreamTypeToVolumePriorityParser::StreamTypeToVolumePriorityParser(
    std::map<int32_t, int32_t>& volumePriorities)
    : m_volumePriorities(volumePriorities) {}

const std::map<std::string, int32_t>& StreamTypeToVolumePriorityParser::StreamTypes() {
    static const std::map<std::string, int32_t> kStreamTypes = {
        {"AUDIO_STREAM_VOICE_CALL", 0},     {"AUDIO_STREAM_SYSTEM", 1},
        {"AUDIO_STREAM_RING", 2},           {"AUDIO_STREAM_MUSIC", 3},
        {"AUDIO_STREAM_ALARM", 4},          {"AUDIO_STREAM_NOTIFICATION", 5},
        {"AUDIO_STREAM_BLUETOOTH_SCO", 6},  {"AUDIO_STREAM_ENFORCED_AUDIBLE", 7},
        {"AUDIO_STREAM_DTMF", 8},           {"AUDIO_STREAM_TTS", 9},
        {"AUDIO_STREAM_ACCESSIBILITY", 10}, {"AUDIO_STREAM_REROUTING", 11},
        {"AUDIO_STREAM_PATCH", 12},
    };
    return kStreamTypes;
}

const std::map<std::string, int32_t>& StreamTypeToVolumePriorityParser::Priorities() {
    static const std::map<std::string, int32_t> kPriorities = {
        {"VOLUME_PRIORITY_IGNORE", 0},
        {"VOLUME_PRIORITY_LOW", 1},
        {"VOLUME_PRIORITY_MID", 2},
        {"VOLUME_PRIORITY_HIGH", 3},
    };
    return kPriorities;
}

void StreamTypeToVolumePriorityParser::Parse(const std::string& name, const std::string& value) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "StreamTypeToVolumePriorityParser::Parse %s, %s",
               name.c_str(), value.c_str());
    const int32_t stream = MapAt(StreamTypes(), name);
    const int32_t priority = MapAt(Priorities(), value);
    m_volumePriorities[stream] = priority;
}

}  // namespace TesselFX
