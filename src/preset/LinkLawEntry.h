#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace TesselFX {

/// Chunk index of the link-law entry stream in a preset.
constexpr unsigned int ZBAC_LINKLAWS = 1;

/// Source id of the clearing marker: an entry with it empties the laws gathered so far.
constexpr uint32_t kLinkLawClearMarkerSource = static_cast<uint32_t>(-3);

/// Parameter that switches link laws on (any value other than 0.0).
constexpr unsigned int kLinkLawsActiveParameter = 2821;
/// Parameter that switches link-law simulation on (any value other than 0.0).
constexpr unsigned int kLinkLawsSimulationParameter = 2820;

/// One link law: a target parameter that follows a source control along a table of points.
struct LinkLawEntry {
    uint32_t size = 0;     ///< bytes of the entry in its serialized form
    uint32_t version = 1;  ///< 1 in all new entries
    uint32_t MasterControlId = static_cast<uint32_t>(-1);
    uint32_t SourceControlId = static_cast<uint32_t>(-1);
    uint32_t TargetParamId = static_cast<uint32_t>(-1);
    std::string ConversionMethod = "Linear";
    std::vector<float> masterValues;  ///< point abscissas, ascending
    std::vector<float> targetValues;  ///< point ordinates, same length
    float extraValue0 = 0.0f;         ///< kept through every copy and stream, not interpreted
    float extraValue1 = 0.0f;

    bool operator==(const LinkLawEntry& other) const {
        return size == other.size && version == other.version &&
               MasterControlId == other.MasterControlId &&
               SourceControlId == other.SourceControlId && TargetParamId == other.TargetParamId &&
               ConversionMethod == other.ConversionMethod && masterValues == other.masterValues &&
               targetValues == other.targetValues && extraValue0 == other.extraValue0 &&
               extraValue1 == other.extraValue1;
    }
    bool operator!=(const LinkLawEntry& other) const { return !(*this == other); }
};

}  // namespace TesselFX
