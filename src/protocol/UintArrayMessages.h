#pragma once

#include "protocol/UintArrayTypeMessageData.h"

namespace TesselFX {

/// Id 11: asks for many parameters.
class GetParameterArrayMessageData : public UintArrayTypeMessageData {
  public:
    static constexpr uint32_t kId = 11;
    using UintArrayTypeMessageData::UintArrayTypeMessageData;
    uint32_t GetId() const override { return kId; }
};

/// Id 33: asks for many link-law source values.
class RequestLinkLawsSourceParameterArrayMessageData : public UintArrayTypeMessageData {
  public:
    static constexpr uint32_t kId = 33;
    using UintArrayTypeMessageData::UintArrayTypeMessageData;
    uint32_t GetId() const override { return kId; }
};

}  // namespace TesselFX
