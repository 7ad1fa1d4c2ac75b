#pragma once

#include "protocol/IdTypeMessageData.h"
#include "protocol/MessageWithId.h"

namespace TesselFX {

/// Asks for all link-law parameters.
using GetLinkLawParameterArrayMessageData = MessageWithId<IdTypeMessageData, 29>;
using FlushMessageData = MessageWithId<IdTypeMessageData, 45>;
/// Waits for a flush to end.
using WaitForFlushMessageData = MessageWithId<IdTypeMessageData, 46>;
/// Asks whether tuning mode is valid.
using GetTuningModeValidationMessageData = MessageWithId<IdTypeMessageData, 48>;

}  // namespace TesselFX
