#pragma once

#include <vector>

#include "dsp/DspProtocol.h"

namespace TesselFX {

/// Builds the request that sets one parameter.
class ISetParameterBufferGenerator {
  public:
    virtual ~ISetParameterBufferGenerator() = default;
    virtual status_t MakeSetParameterBuffer(std::vector<char>& out, unsigned int id,
                                            double value) = 0;
};

}  // namespace TesselFX
