#pragma once

#include <vector>

#include "dsp/DspProtocol.h"

namespace TesselFX {

/// Builds the request that applies the system volume.
class ISetSystemVolumeBufferGenerator {
  public:
    virtual ~ISetSystemVolumeBufferGenerator() = default;
    virtual status_t MakeSetSystemVolumeBuffer(std::vector<char>& out, bool apply) = 0;
};

}  // namespace TesselFX
