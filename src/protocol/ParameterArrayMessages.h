#pragma once

#include "protocol/MessageWithId.h"
#include "protocol/ParameterArrayMessageData.h"

namespace TesselFX {

/// Sets many parameters.
using SetParameterArrayMessageData = MessageWithId<ParameterArrayMessageData, 3>;
/// Parameter values, answering GetParameterArrayMessageData and
/// GetLinkLawParameterArrayMessageData.
using ReplyParameterArrayMessageData = MessageWithId<ParameterArrayMessageData, 4>;
/// Link-law source values, answering the two link-law source requests.
using UpdateLinkLawsSourceParameterArrayMessageData = MessageWithId<ParameterArrayMessageData, 34>;

}  // namespace TesselFX
