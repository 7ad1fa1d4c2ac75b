#pragma once

#include <map>
#include <vector>

#include "dsp/DspProtocol.h"

namespace TesselFX {

/// Builds the frames that carry a parameter set.
class ISetParameterArrayBufferGenerator {
  public:
    virtual ~ISetParameterArrayBufferGenerator() = default;
    virtual status_t MakeSetParameterArrayBuffer(std::vector<std::vector<char>>& out,
                                                 const std::map<unsigned int, double>& parameters,
                                                 bool onlyChanged) = 0;
};

}  // namespace TesselFX
