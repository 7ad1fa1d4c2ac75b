#pragma once

#include <vector>

#include "dsp/DspProtocol.h"

namespace TesselFX {

/// Builds the get-version request.
class IGetVersionBufferGenerator {
  public:
    virtual ~IGetVersionBufferGenerator() = default;
    virtual status_t MakeGetVersionBuffer(std::vector<char>& out) = 0;
};

}  // namespace TesselFX
