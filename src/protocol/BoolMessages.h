#pragma once

#include "protocol/BoolTypeMessageData.h"

namespace TesselFX {

/// Id 39: asks for the enable state; its u32 must be there but is not read.
class GetEnableMessageData : public BoolTypeMessageData {
  public:
    static constexpr uint32_t kId = 39;
    using BoolTypeMessageData::BoolTypeMessageData;
    uint32_t GetId() const override { return kId; }
};

/// Id 40: the enable state, answering id 39.
class UpdateEnableMessageData : public BoolTypeMessageData {
  public:
    static constexpr uint32_t kId = 40;
    using BoolTypeMessageData::BoolTypeMessageData;
    uint32_t GetId() const override { return kId; }
};

/// Id 41: sets the enable state.
class SetEnableMessageData : public BoolTypeMessageData {
  public:
    static constexpr uint32_t kId = 41;
    using BoolTypeMessageData::BoolTypeMessageData;
    uint32_t GetId() const override { return kId; }
};

/// Id 42: asks for the bypass state; its u32 must be there but is not read.
class GetBypassMessageData : public BoolTypeMessageData {
  public:
    static constexpr uint32_t kId = 42;
    using BoolTypeMessageData::BoolTypeMessageData;
    uint32_t GetId() const override { return kId; }
};

/// Id 43: the bypass state, answering id 42.
class UpdateBypassMessageData : public BoolTypeMessageData {
  public:
    static constexpr uint32_t kId = 43;
    using BoolTypeMessageData::BoolTypeMessageData;
    uint32_t GetId() const override { return kId; }
};

/// Id 44: sets the bypass state.
class SetBypassMessageData : public BoolTypeMessageData {
  public:
    static constexpr uint32_t kId = 44;
    using BoolTypeMessageData::BoolTypeMessageData;
    uint32_t GetId() const override { return kId; }
};

/// Id 47: enters (true) or leaves tuning mode.
class StartTuningModeMessageData : public BoolTypeMessageData {
  public:
    static constexpr uint32_t kId = 47;
    using BoolTypeMessageData::BoolTypeMessageData;
    uint32_t GetId() const override { return kId; }
};

/// Id 48: whether tuning mode is valid, answering GetTuningModeValidationMessageData.
class ReplyTuningModeValidationMessageData : public BoolTypeMessageData {
  public:
    static constexpr uint32_t kId = 48;
    using BoolTypeMessageData::BoolTypeMessageData;
    uint32_t GetId() const override { return kId; }
    virtual bool GetTuningModeValidation() const { return GetValue(); }
};

/// Id 49: whether tuning mode is on. The request is a frame of this id with any payload.
class ReplyTuningModeMessageData : public BoolTypeMessageData {
  public:
    static constexpr uint32_t kId = 49;
    using BoolTypeMessageData::BoolTypeMessageData;
    uint32_t GetId() const override { return kId; }
    virtual bool GetTuningMode() const { return GetValue(); }
};

}  // namespace TesselFX
