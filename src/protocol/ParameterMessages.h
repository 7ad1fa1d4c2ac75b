#pragma once

#include "protocol/ParameterMessageData.h"

namespace TesselFX {

/// Id 1: sets one parameter.
class SetParameterMessageData : public ParameterMessageData {
  public:
    static constexpr uint32_t kId = 1;
    using ParameterMessageData::ParameterMessageData;
    uint32_t GetId() const override { return kId; }
};

/// Id 2: the value of one parameter, answering id 10.
class ReplyParameterMessageData : public ParameterMessageData {
  public:
    static constexpr uint32_t kId = 2;
    using ParameterMessageData::ParameterMessageData;
    uint32_t GetId() const override { return kId; }
};

/// Id 31: notification of one link-law source value.
class UpdateLinkLawsSourceParameterMessageData : public ParameterMessageData {
  public:
    static constexpr uint32_t kId = 31;
    using ParameterMessageData::ParameterMessageData;
    uint32_t GetId() const override { return kId; }
    /// The parameter id of the source.
    virtual unsigned int GetSourceParameterId() const { return GetParameterId(); }
};

}  // namespace TesselFX
