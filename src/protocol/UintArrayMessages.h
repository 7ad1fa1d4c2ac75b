#pragma once

#include "protocol/MessageWithId.h"
#include "protocol/UintArrayTypeMessageData.h"

namespace TesselFX {

/// Asks for many parameters.
using GetParameterArrayMessageData = MessageWithId<UintArrayTypeMessageData, 11>;
/// Asks for many link-law source values.
using RequestLinkLawsSourceParameterArrayMessageData = MessageWithId<UintArrayTypeMessageData, 33>;

}  // namespace TesselFX
