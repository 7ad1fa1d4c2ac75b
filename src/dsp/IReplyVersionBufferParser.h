#pragma once

#include <string>
#include <vector>

#include "dsp/DspProtocol.h"

namespace TesselFX {

/// Reads the DSP's answer to the get-version request.
class IReplyVersionBufferParser {
  public:
    virtual ~IReplyVersionBufferParser() = default;
    virtual status_t ParseReplyVersionBuffer(const std::vector<char>& reply,
                                             std::string& version) = 0;
};

}  // namespace TesselFX
