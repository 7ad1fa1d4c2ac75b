#pragma once

#include <vector>

#include "dsp/DspProtocol.h"

namespace TesselFX {

/// Builds the request that switches the effect on or off.
class ISetEnableBufferGenerator {
  public:
    virtual ~ISetEnableBufferGenerator() = default;
    virtual status_t MakeSetEnableBuffer(std::vector<char>& out, bool enable) = 0;
};

}  // namespace TesselFX
