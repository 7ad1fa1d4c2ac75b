#pragma once

#include <map>
#include <vector>

namespace TesselFX {

/// Writes each entry of source into target, overwriting equal ids.
inline void MergeParameterMap(std::map<unsigned int, double>& target,
                              const std::map<unsigned int, double>& source) {
    for (const auto& parameter : source) target[parameter.first] = parameter.second;
}

/// Replaces ids and values with the map's entries in id order.
inline void SplitParameterMap(const std::map<unsigned int, double>& parameters,
                              std::vector<unsigned int>& ids, std::vector<double>& values) {
    ids.clear();
    values.clear();
    ids.reserve(parameters.size());
    values.reserve(parameters.size());
    for (const auto& parameter : parameters) {
        ids.push_back(parameter.first);
        values.push_back(parameter.second);
    }
}

}  // namespace TesselFX
