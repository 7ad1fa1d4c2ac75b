#pragma once

#include <vector>

#include "dsp/DspProtocol.h"

namespace TesselFX {

/// Builds the request that swaps the left and right channels or undoes it.
class ISetLrSwapBufferGenerator {
  public:
    virtual ~ISetLrSwapBufferGenerator() = default;
    virtual status_t MakeSetLrSwapBuffer(std::vector<char>& out, bool swap) = 0;
};

}  // namespace TesselFX
