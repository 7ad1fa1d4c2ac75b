#pragma once

#include <map>

#include "preset/FullPreset.h"
#include "protocol/MessageData.h"

namespace TesselFX {

/// A whole preset in one message. Payload: u32 messageFlag, u32 hasParameters, u32 hasLlChunk,
/// u32 hasLlSources, u32 N, N x (u32 id, f64 value), u32 M, M bytes of link-law chunk, u32 K,
/// K x (u32 id, f64 value): 28 + M + 12 x (N + K) bytes. The three parts are written whatever
/// the flags say. Flags are written as 1 or 0 and read as true for any non-zero value.
class FullPresetTypeMessageData : public MessageData {
  public:
    FullPresetTypeMessageData() = default;
    FullPresetTypeMessageData(const TesselTuning::FullPreset& preset, bool messageFlag)
        : m_preset(preset), m_messageFlag(messageFlag) {}

    std::vector<char> GetPayload() const override;
    bool SetPayload(const char* data, unsigned int size) override {
        return FromSubBuffer(data, size);
    }

    /// Parses a payload; bytes after the last field are ignored. On failure the parts read
    /// before the failing one stay.
    bool FromSubBuffer(const char* data, const unsigned int size);

    TesselTuning::FullPreset GetFullPreset() const { return m_preset; }
    bool GetMessageFlag() const { return m_messageFlag; }

  private:
    void ClearMemberVariables();
    bool ReadFullPresetAllBoolVariables(const char*& cursor, const char* end);
    bool ReadFullPresetParametersArray(const char*& cursor, const char* end);
    bool ReadFullPresetLlChunk(const char*& cursor, const char* end);
    bool ReadFullPresetLlSources(const char*& cursor, const char* end);

    TesselTuning::FullPreset m_preset;
    bool m_messageFlag = false;
};

}  // namespace TesselFX
