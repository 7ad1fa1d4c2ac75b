#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "dsp/CMeterInfo.h"
#include "dsp/CMeterValue.h"
#include "dsp/DspProtocol.h"

namespace TesselFX {

/// Reads the DSP's answer to the get-meters request into values, one entry per meter of
/// infos (under the same key); entries of values not in infos are kept.
class IReplyMetersBufferParser {
  public:
    virtual ~IReplyMetersBufferParser() = default;
    virtual status_t ParseReplyMetersBuffer(const std::vector<char>& reply,
                                            const std::map<uint32_t, CMeterInfo>& infos,
                                            std::map<uint32_t, CMeterValue>& values) = 0;
};

}  // namespace TesselFX
