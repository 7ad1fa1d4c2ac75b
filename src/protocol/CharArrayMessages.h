#pragma once

#include "protocol/CharArrayTypeMessageData.h"
#include "protocol/MessageWithId.h"

namespace TesselFX {

/// Asks for the version of a type ("dsp", "halcontroller", "dspkit"), the name in its bytes.
using GetVersionMessageData = MessageWithId<CharArrayTypeMessageData, 7>;

/// A version text, answering GetVersionMessageData.
class UpdateVersionMessageData : public MessageWithId<CharArrayTypeMessageData, 38> {
  public:
    using MessageWithId::MessageWithId;
    virtual std::string GetVersion() const { return GetText(); }
};

}  // namespace TesselFX
