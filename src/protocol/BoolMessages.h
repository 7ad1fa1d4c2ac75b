#pragma once

#include "protocol/BoolTypeMessageData.h"
#include "protocol/MessageWithId.h"

namespace TesselFX {

/// Asks for the enable state; its u32 must be there but is not read.
using GetEnableMessageData = MessageWithId<BoolTypeMessageData, 39>;
/// The enable state, answering GetEnableMessageData.
using UpdateEnableMessageData = MessageWithId<BoolTypeMessageData, 40>;
using SetEnableMessageData = MessageWithId<BoolTypeMessageData, 41>;
/// Asks for the bypass state; its u32 must be there but is not read.
using GetBypassMessageData = MessageWithId<BoolTypeMessageData, 42>;
/// The bypass state, answering GetBypassMessageData.
using UpdateBypassMessageData = MessageWithId<BoolTypeMessageData, 43>;
using SetBypassMessageData = MessageWithId<BoolTypeMessageData, 44>;
/// Enters (true) or leaves tuning mode.
using StartTuningModeMessageData = MessageWithId<BoolTypeMessageData, 47>;

/// Whether tuning mode is valid, answering GetTuningModeValidationMessageData.
class ReplyTuningModeValidationMessageData : public MessageWithId<BoolTypeMessageData, 48> {
  public:
    using MessageWithId::MessageWithId;
    virtual bool GetTuningModeValidation() const { return GetValue(); }
};

/// Whether tuning mode is on. The request is a frame of this id with any payload.
class ReplyTuningModeMessageData : public MessageWithId<BoolTypeMessageData, 49> {
  public:
    using MessageWithId::MessageWithId;
    virtual bool GetTuningMode() const { return GetValue(); }
};

}  // namespace TesselFX
