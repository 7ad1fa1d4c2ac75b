#pragma once

#include "protocol/MessageWithId.h"
#include "protocol/UintTypeMessageData.h"

namespace TesselFX {

/// Asks for the chunk of an index.
using GetChunkMessageData = MessageWithId<UintTypeMessageData, 6>;
/// Asks for one parameter.
using GetParameterMessageData = MessageWithId<UintTypeMessageData, 10>;
using SetSoundModeMessageData = MessageWithId<UintTypeMessageData, 12>;
using SetOutputModeMessageData = MessageWithId<UintTypeMessageData, 14>;
/// Asks for one link-law source value.
using RequestLinkLawsSourceParameterMessageData = MessageWithId<UintTypeMessageData, 30>;

}  // namespace TesselFX
