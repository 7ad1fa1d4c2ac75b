#pragma once

#include <vector>

#include "dsp/DspProtocol.h"

namespace TesselFX {

/// Builds the request that sets one parameter, skipping it when unchanged if asked.
class ISetParameterBufferGeneratorV2 {
  public:
    virtual ~ISetParameterBufferGeneratorV2() = default;
    virtual status_t MakeSetParameterBufferV2(std::vector<char>& out, unsigned int id, double value,
                                              bool onlyChanged) = 0;
};

}  // namespace TesselFX
