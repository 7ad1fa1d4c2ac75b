#pragma once

#include "protocol/ParameterArrayMessageData.h"

namespace TesselFX {

/// Id 3: sets many parameters.
class SetParameterArrayMessageData : public ParameterArrayMessageData {
  public:
    static constexpr uint32_t kId = 3;
    using ParameterArrayMessageData::ParameterArrayMessageData;
    uint32_t GetId() const override { return kId; }
};

/// Id 4: parameter values, answering ids 11 and 29.
class ReplyParameterArrayMessageData : public ParameterArrayMessageData {
  public:
    static constexpr uint32_t kId = 4;
    using ParameterArrayMessageData::ParameterArrayMessageData;
    uint32_t GetId() const override { return kId; }
};

/// Id 34: link-law source values, answering ids 30 and 33.
class UpdateLinkLawsSourceParameterArrayMessageData : public ParameterArrayMessageData {
  public:
    static constexpr uint32_t kId = 34;
    using ParameterArrayMessageData::ParameterArrayMessageData;
    uint32_t GetId() const override { return kId; }
};

}  // namespace TesselFX
