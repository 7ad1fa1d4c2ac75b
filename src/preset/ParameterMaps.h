#pragma once

#include <map>
#include <vector>

#include "log/TesselLog.h"

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

/// What a read of several ids found: all of them, and at least one.
struct ParameterLookup {
    bool foundAll = true;
    bool foundOne = false;
};

/// Resizes values to the size of ids and writes the value of each id found at its place. The
/// place of a missing id keeps what it held, and the id is logged at warning level.
inline ParameterLookup LookUpParameters(const std::map<unsigned int, double>& parameters,
                                        const std::vector<unsigned int>& ids,
                                        std::vector<double>& values) {
    ParameterLookup lookup;
    values.resize(ids.size());
    for (size_t i = 0; i < ids.size(); ++i) {
        const auto found = parameters.find(ids[i]);
        if (found == parameters.end()) {
            TESSEL_LOG(3, TESSEL_LOG_FXModule, "GetParameterArray: Could not find parameter %u",
                       ids[i]);
            lookup.foundAll = false;
            continue;
        }
        values[i] = found->second;
        lookup.foundOne = true;
    }
    return lookup;
}

}  // namespace TesselFX
