#pragma once

#include <vector>

#include "dsp/DspProtocol.h"

namespace TesselFX {

/// Builds the request that bypasses the effect or takes it out of bypass.
class ISetBypassBufferGenerator {
  public:
    virtual ~ISetBypassBufferGenerator() = default;
    virtual status_t MakeSetBypassBuffer(std::vector<char>& out, bool bypass) = 0;
};

}  // namespace TesselFX
