#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "dsp/ICoefsConverter.h"
#include "dsp/IZorbEffectWrapper.h"

namespace TesselFX {

/// Converts parameters to coefficient blocks with the host copy of the effect: sets them,
/// lets the library recompute, reads the blocks it reports as changed. Failures are written
/// straight to the Android log. Shares the wrapper; not thread safe.
class ZorbEffectCoefsConverter : public ICoefsConverter {
  public:
    explicit ZorbEffectCoefsConverter(std::shared_ptr<IZorbEffectWrapper> zorbEffect);
    ~ZorbEffectCoefsConverter() override = default;

    /// Sizes the work areas once to the library's maxima; must succeed before Convert.
    bool InitCheck() override;
    bool Convert(const std::map<unsigned int, double>& parameters,
                 std::map<uint32_t, std::vector<char>>& coefficients) override;
    bool ConvertList(const ParameterList& parameters,
                     std::map<uint32_t, std::vector<char>>& coefficients) override;
    bool ConvertToBuffer(const std::map<unsigned int, double>& parameters,
                         std::vector<char>& buffer) override;

  private:
    /// Convert over a sequence of (id, value) in ascending id.
    template <typename Sorted>
    bool ConvertSorted(const Sorted& parameters,
                       std::map<uint32_t, std::vector<char>>& coefficients);
    std::vector<int32_t> m_ids;
    int32_t* m_pIds = nullptr;
    std::vector<char> m_coefficientBuffer;
    char* m_pCoefficientBuffer = nullptr;
    std::shared_ptr<IZorbEffectWrapper> m_pZorbEffect;
};

}  // namespace TesselFX
