#pragma once

#include <map>
#include <vector>

namespace TesselFX {
namespace TesselTuning {

/// The whole state of one preset: parameters, the link-law chunk (index ZBAC_LINKLAWS) and
/// the link-law source values, each with a valid flag. A default object has all flags false
/// and is empty. The layout has natural alignment: the record holds standard containers,
/// whose pointers must stay aligned; the wire form is written field by field.
struct FullPreset {
    bool hasParameters = false;
    std::map<unsigned int, double> parameters;
    bool hasLlChunk = false;
    std::vector<char> llChunk;
    bool hasLlSources = false;
    std::map<unsigned int, double> llSources;
};

}  // namespace TesselTuning
}  // namespace TesselFX
