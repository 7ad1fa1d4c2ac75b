#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "preset/ParameterMaps.h"

namespace TesselFX {

/// Turns parameters into the coefficient blocks the DSP accepts.
class ICoefsConverter {
  public:
    virtual ~ICoefsConverter() = default;
    /// Prepares the work areas; false makes the converter unusable.
    virtual bool InitCheck() = 0;
    /// Sets the parameters and gives the blocks that changed, by coefficient id.
    virtual bool Convert(const std::map<unsigned int, double>& parameters,
                         std::map<uint32_t, std::vector<char>>& coefficients) = 0;
    /// Convert for parameters in flat storage; the same result without a map of them.
    virtual bool ConvertList(const ParameterList& parameters,
                             std::map<uint32_t, std::vector<char>>& coefficients) {
        return Convert(ToParameterMap(parameters), coefficients);
    }
    /// As Convert, with the blocks concatenated in ascending id.
    virtual bool ConvertToBuffer(const std::map<unsigned int, double>& parameters,
                                 std::vector<char>& buffer) = 0;
};

}  // namespace TesselFX
