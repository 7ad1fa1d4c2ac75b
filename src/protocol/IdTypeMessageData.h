#pragma once

#include "protocol/MessageData.h"

namespace TesselFX {

/// A message that is its id alone: the payload is empty and any payload is accepted.
class IdTypeMessageData : public MessageData {
  public:
    std::vector<char> GetPayload() const override { return {}; }
    bool SetPayload(const char*, unsigned int) override { return true; }
};

}  // namespace TesselFX
