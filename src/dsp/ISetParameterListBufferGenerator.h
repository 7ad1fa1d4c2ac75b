#pragma once

#include <vector>

#include "dsp/DspProtocol.h"
#include "preset/ParameterMaps.h"

namespace TesselFX {

/// The differential parameter send of ISetParameterArrayBufferGeneratorV2 for a caller that
/// knows what it changed: parameters may leave out any entry whose value the generator has
/// already converted, since only the ids given are compared with the cache. The result and
/// the caches then come out as from MakeSetParameterArrayBufferV2 with the full set.
class ISetParameterListBufferGenerator {
  public:
    virtual ~ISetParameterListBufferGenerator() = default;
    virtual status_t MakeSetParameterListBuffer(std::vector<std::vector<char>>& out,
                                                const ParameterList& parameters,
                                                bool onlyChanged) = 0;
};

}  // namespace TesselFX
