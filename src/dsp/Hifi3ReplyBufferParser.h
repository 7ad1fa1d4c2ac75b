#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "dsp/IReplyBufferParser.h"
#include "dsp/IReplyMetersBufferParser.h"
#include "dsp/IReplyVersionBufferParser.h"
#include "dsp/IZorbEffectWrapper.h"

namespace TesselFX {

/// Reads the DSP's answers to the get-meters and get-version requests. The meter answer is
/// the DSP's serialised meter buffer, which only the algorithm library can read: it is loaded
/// into the host copy of the effect and the values are read from there. Shares the wrapper;
/// no lock of its own.
class Hifi3ReplyBufferParser : public IReplyBufferParser,
                               public IReplyMetersBufferParser,
                               public IReplyVersionBufferParser {
  public:
    /// Sizes the meter arrays to the library's meter count (0 without a wrapper or when the
    /// library cannot tell).
    explicit Hifi3ReplyBufferParser(std::shared_ptr<IZorbEffectWrapper> zorbEffect);
    ~Hifi3ReplyBufferParser() override = default;

    /// Reply: u32 3, u32 size S, S bytes of meter buffer. Meters whose flag the library
    /// raised get their value (type 1 float, type 2 integer, other types no entry); the
    /// others get their reset value. -22 for a wrong id, 0x80000000 for other failures.
    status_t ParseReplyMetersBuffer(const std::vector<char>& reply,
                                    const std::map<uint32_t, CMeterInfo>& infos,
                                    std::map<uint32_t, CMeterValue>& values) override;
    /// Reply: u32 6, u32 length N, N bytes of text. -22 for a wrong id or a short reply.
    status_t ParseReplyVersionBuffer(const std::vector<char>& reply, std::string& version) override;

    /// Whether the flag of a meter index is raised; clears it. Out of range is logged.
    bool FlagTestAndClear(size_t index);

  private:
    uint32_t m_meterCount = 0;
    std::vector<float> m_meterValues;
    std::vector<int32_t> m_meterFlags;
    std::shared_ptr<IZorbEffectWrapper> m_pZorbEffect;
};

}  // namespace TesselFX
