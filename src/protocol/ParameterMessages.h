#pragma once

#include "protocol/MessageWithId.h"
#include "protocol/ParameterMessageData.h"

namespace TesselFX {

/// Sets one parameter.
using SetParameterMessageData = MessageWithId<ParameterMessageData, 1>;
/// The value of one parameter, answering GetParameterMessageData.
using ReplyParameterMessageData = MessageWithId<ParameterMessageData, 2>;

/// Notification of one link-law source value.
class UpdateLinkLawsSourceParameterMessageData : public MessageWithId<ParameterMessageData, 31> {
  public:
    using MessageWithId::MessageWithId;
    /// The parameter id of the source.
    virtual unsigned int GetSourceParameterId() const { return GetParameterId(); }
};

}  // namespace TesselFX
