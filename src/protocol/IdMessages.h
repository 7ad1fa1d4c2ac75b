#pragma once

#include "protocol/IdTypeMessageData.h"

namespace TesselFX {

/// Id 29: asks for all link-law parameters.
class GetLinkLawParameterArrayMessageData : public IdTypeMessageData {
  public:
    static constexpr uint32_t kId = 29;
    uint32_t GetId() const override { return kId; }
};

/// Id 45: flush.
class FlushMessageData : public IdTypeMessageData {
  public:
    static constexpr uint32_t kId = 45;
    uint32_t GetId() const override { return kId; }
};

/// Id 46: wait for a flush to end.
class WaitForFlushMessageData : public IdTypeMessageData {
  public:
    static constexpr uint32_t kId = 46;
    uint32_t GetId() const override { return kId; }
};

/// Id 48: asks whether tuning mode is valid.
class GetTuningModeValidationMessageData : public IdTypeMessageData {
  public:
    static constexpr uint32_t kId = 48;
    uint32_t GetId() const override { return kId; }
};

}  // namespace TesselFX
