#pragma once

#include "protocol/FullPresetTypeMessageData.h"

namespace TesselFX {

/// Id 50: writes a full preset.
class SetFullPresetMessageData : public FullPresetTypeMessageData {
  public:
    static constexpr uint32_t kId = 50;
    using FullPresetTypeMessageData::FullPresetTypeMessageData;
    uint32_t GetId() const override { return kId; }
};

/// Id 51: asks for a full preset; it carries a full payload, which the answer overwrites.
class GetFullPresetMessageData : public FullPresetTypeMessageData {
  public:
    static constexpr uint32_t kId = 51;
    using FullPresetTypeMessageData::FullPresetTypeMessageData;
    uint32_t GetId() const override { return kId; }
};

/// Id 51: a full preset sent as a notification when the current system preset changes.
class ReplyFullPresetMessageData : public FullPresetTypeMessageData {
  public:
    static constexpr uint32_t kId = 51;
    using FullPresetTypeMessageData::FullPresetTypeMessageData;
    explicit ReplyFullPresetMessageData(const TesselTuning::FullPreset& preset)
        : FullPresetTypeMessageData(preset, false) {}
    uint32_t GetId() const override { return kId; }
};

}  // namespace TesselFX
