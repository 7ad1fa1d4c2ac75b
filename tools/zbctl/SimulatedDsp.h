#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace TesselFX {

class IZorbEffectWrapper;

namespace zbctl {

/// What the simulated DSP saw of one request and what it answered.
struct DspExchange {
    uint32_t opcode = 0;
    uint32_t size = 0;
    std::vector<uint32_t> blockIds;  ///< set coefficients: the id word of each block applied
    uint32_t replyCode = 0;          ///< 3 or 6 for an answered request, else 0
    uint32_t replySize = 0;
    std::string version;  ///< the text of a version reply
    std::string error;    ///< why the request was refused; empty when it was served
};

/// The DSP end of the control protocol, for one effect instance: its own effect of the
/// stand-in algorithm library (loaded with dlopen), to which each set-coefficients frame is
/// applied block by block. It answers get-meters with reply 3 and the meter buffer, and
/// get-version with reply 6 and the library's revision text, and renders audio through the
/// coefficients applied so far. Parameter 1 (the effect's "pass audio unprocessed" switch,
/// carried in the first generic block) makes rendering a plain copy. Not thread safe.
class SimulatedDsp {
  public:
    /// Throws ZbctlError when the library does not load or the effect does not initialise.
    SimulatedDsp(const std::string& dspKitPath, uint32_t sampleRate, uint32_t channels,
                 uint32_t sampleSize);
    ~SimulatedDsp();

    /// Serves one request as the host's buffer_sender passes it. replySize holds the room in
    /// reply on entry (0 with a null reply) and the reply length on return. Returns 0 when the
    /// request was served, -1 otherwise.
    int Handle(const void* data, uint32_t size, void* reply, uint32_t* replySize,
               DspExchange& exchange);

    /// Renders interleaved audio of Channels() channels; in and out may be the same buffer.
    void Process(const float* in, float* out, size_t frames);

    uint32_t Channels() const { return m_channels; }
    uint32_t SampleRate() const { return m_sampleRate; }
    bool PassThrough() const { return m_passThrough; }

  private:
    int SetCoefficients(const unsigned char* data, uint32_t size, DspExchange& exchange);

    std::shared_ptr<IZorbEffectWrapper> m_effect;
    uint32_t m_sampleRate;
    uint32_t m_channels;
    bool m_passThrough = false;
};

}  // namespace zbctl
}  // namespace TesselFX
