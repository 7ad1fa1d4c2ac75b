#pragma once

#include <map>
#include <vector>

#include "dsp/DspProtocol.h"

namespace TesselFX {

/// Appends to out the frames that carry a parameter set: with onlyChanged the blocks of
/// what changed since the last call, otherwise every block known so far. 0 or -22.
class ISetParameterArrayBufferGeneratorV2 {
  public:
    virtual ~ISetParameterArrayBufferGeneratorV2() = default;
    virtual status_t MakeSetParameterArrayBufferV2(std::vector<std::vector<char>>& out,
                                                   const std::map<unsigned int, double>& parameters,
                                                   bool onlyChanged) = 0;
};

}  // namespace TesselFX
