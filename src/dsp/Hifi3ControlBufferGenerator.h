#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "dsp/ICoefsConverter.h"
#include "dsp/IControlBufferGenerator.h"
#include "dsp/IGetMetersBufferGenerator.h"
#include "dsp/IGetVersionBufferGenerator.h"
#include "dsp/ISetParameterArrayBufferGeneratorV2.h"
#include "dsp/ISetParameterListBufferGenerator.h"
#include "preset/ParameterMaps.h"

namespace TesselFX {

/// Builds the DSP requests of the HiFi 3z core. Parameters reach the DSP only as coefficient
/// blocks: the generator remembers the last converted value of every parameter and the
/// latest block of every coefficient id, so that a change converts and sends only what it
/// touches. No lock of its own: the control handler serialises all calls.
class Hifi3ControlBufferGenerator : public IControlBufferGenerator,
                                    public ISetParameterArrayBufferGeneratorV2,
                                    public IGetMetersBufferGenerator,
                                    public ISetParameterListBufferGenerator,
                                    public IGetVersionBufferGenerator {
  public:
    explicit Hifi3ControlBufferGenerator(std::shared_ptr<ICoefsConverter> converter);
    ~Hifi3ControlBufferGenerator() override = default;

    /// Appends set-coefficients frames to out: with onlyChanged the blocks of the parameters
    /// that differ from the cache, otherwise every block known so far. Both caches are
    /// updated before anything is packed. 0, or -22 when the converter fails (caches kept).
    status_t MakeSetParameterArrayBufferV2(std::vector<std::vector<char>>& out,
                                           const std::map<unsigned int, double>& parameters,
                                           bool onlyChanged) override;
    /// The same for a caller that passes only what it may have changed.
    status_t MakeSetParameterListBuffer(std::vector<std::vector<char>>& out,
                                        const ParameterList& parameters, bool onlyChanged) override;
    /// out becomes the 4-byte get-meters request; the DSP always answers with every meter.
    status_t MakeGetMetersBuffer(std::vector<char>& out,
                                 const std::map<uint32_t, CMeterInfo>& infos) override;
    /// out becomes the 4-byte get-version request.
    status_t MakeGetVersionBuffer(std::vector<char>& out) override;
    /// Appends one frame per group of blocks (see GroupCoefficients) to out.
    virtual void PackCoefficientBuffers(std::vector<std::vector<char>>& out,
                                        const std::map<uint32_t, std::vector<char>>& coefficients);
    /// Overlays source on target: blocks of existing ids are replaced, others inserted.
    virtual void MergeCoefficients(std::map<uint32_t, std::vector<char>>& target,
                                   const std::map<uint32_t, std::vector<char>>& source);

    /// Concatenates the blocks in ascending id into groups of at most limit bytes, never
    /// cutting a block: before a block that would overflow the current group, that group is
    /// emitted even when empty (so an oversized first block gives an empty group first).
    static std::vector<std::vector<char>> GroupCoefficients(
        const std::map<uint32_t, std::vector<char>>& coefficients, size_t limit);

  private:
    /// Both make operations: parameters is a sequence of (id, value) in ascending id.
    template <typename Sorted>
    status_t MakeBuffers(std::vector<std::vector<char>>& out, const Sorted& parameters,
                         size_t count, bool onlyChanged);

    std::shared_ptr<ICoefsConverter> m_converter;
    std::map<uint32_t, std::vector<char>> m_coefficients;
    /// The blocks of the latest conversion, kept between calls so that blocks converted again
    /// reuse their storage.
    std::map<uint32_t, std::vector<char>> m_changedCoefficients;
    ParameterList m_lastParameters;
};

}  // namespace TesselFX
