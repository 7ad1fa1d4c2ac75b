#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "dsp/CMeterInfo.h"
#include "dsp/DspProtocol.h"

namespace TesselFX {

/// Builds the get-meters request.
class IGetMetersBufferGenerator {
  public:
    virtual ~IGetMetersBufferGenerator() = default;
    virtual status_t MakeGetMetersBuffer(std::vector<char>& out,
                                         const std::map<uint32_t, CMeterInfo>& infos) = 0;
};

}  // namespace TesselFX
