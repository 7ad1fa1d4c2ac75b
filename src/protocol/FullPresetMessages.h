#pragma once

#include "protocol/FullPresetTypeMessageData.h"
#include "protocol/MessageWithId.h"

namespace TesselFX {

/// Writes a full preset.
using SetFullPresetMessageData = MessageWithId<FullPresetTypeMessageData, 50>;
/// Asks for a full preset; it carries a full payload, which the answer overwrites.
using GetFullPresetMessageData = MessageWithId<FullPresetTypeMessageData, 51>;

/// A full preset sent as a notification when the current system preset changes.
class ReplyFullPresetMessageData : public MessageWithId<FullPresetTypeMessageData, 51> {
  public:
    using MessageWithId::MessageWithId;
    explicit ReplyFullPresetMessageData(const TesselTuning::FullPreset& preset)
        : MessageWithId(preset, false) {}
};

}  // namespace TesselFX
