#pragma once

#include <cstdint>
#include <map>
#include <vector>

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
    /// As Convert, with the blocks concatenated in ascending id.
    virtual bool ConvertToBuffer(const std::map<unsigned int, double>& parameters,
                                 std::vector<char>& buffer) = 0;
};

}  // namespace TesselFX
