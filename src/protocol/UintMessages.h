#pragma once

#include "protocol/UintTypeMessageData.h"

namespace TesselFX {

/// Id 6: asks for the chunk of an index.
class GetChunkMessageData : public UintTypeMessageData {
  public:
    static constexpr uint32_t kId = 6;
    using UintTypeMessageData::UintTypeMessageData;
    uint32_t GetId() const override { return kId; }
};

/// Id 10: asks for one parameter.
class GetParameterMessageData : public UintTypeMessageData {
  public:
    static constexpr uint32_t kId = 10;
    using UintTypeMessageData::UintTypeMessageData;
    uint32_t GetId() const override { return kId; }
};

/// Id 12: sets the sound mode.
class SetSoundModeMessageData : public UintTypeMessageData {
  public:
    static constexpr uint32_t kId = 12;
    using UintTypeMessageData::UintTypeMessageData;
    uint32_t GetId() const override { return kId; }
};

/// Id 14: sets the output mode.
class SetOutputModeMessageData : public UintTypeMessageData {
  public:
    static constexpr uint32_t kId = 14;
    using UintTypeMessageData::UintTypeMessageData;
    uint32_t GetId() const override { return kId; }
};

/// Id 30: asks for one link-law source value.
class RequestLinkLawsSourceParameterMessageData : public UintTypeMessageData {
  public:
    static constexpr uint32_t kId = 30;
    using UintTypeMessageData::UintTypeMessageData;
    uint32_t GetId() const override { return kId; }
};

}  // namespace TesselFX
