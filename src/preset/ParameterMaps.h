#pragma once

#include <algorithm>
#include <cstddef>
#include <map>
#include <utility>
#include <vector>

#include "log/TesselLog.h"

namespace TesselFX {

/// Parameters in flat storage: (id, value) pairs in strictly ascending id. The form that the
/// presets, the merged views and the DSP caches keep, since it copies, merges and walks in
/// linear time without an allocation per entry.
using ParameterList = std::vector<std::pair<unsigned int, double>>;

/// Writes each entry of source into target, overwriting equal ids.
inline void MergeParameterMap(std::map<unsigned int, double>& target,
                              const std::map<unsigned int, double>& source) {
    for (const auto& parameter : source) target[parameter.first] = parameter.second;
}

/// Replaces ids and values with the entries in id order.
template <typename Parameters>
void SplitParameterMap(const Parameters& parameters, std::vector<unsigned int>& ids,
                       std::vector<double>& values) {
    ids.clear();
    values.clear();
    ids.reserve(parameters.size());
    values.reserve(parameters.size());
    for (const auto& parameter : parameters) {
        ids.push_back(parameter.first);
        values.push_back(parameter.second);
    }
}

/// The entry of id, or end.
inline ParameterList::const_iterator FindParameter(const ParameterList& list, unsigned int id) {
    const auto found = std::lower_bound(
        list.begin(), list.end(), id,
        [](const std::pair<unsigned int, double>& p, unsigned int i) { return p.first < i; });
    return found != list.end() && found->first == id ? found : list.end();
}

/// Inserts or overwrites the entry of id.
inline void SetParameterInList(ParameterList& list, unsigned int id, double value) {
    if (list.empty() || list.back().first < id) {
        list.emplace_back(id, value);
        return;
    }
    const auto found = std::lower_bound(
        list.begin(), list.end(), id,
        [](const std::pair<unsigned int, double>& p, unsigned int i) { return p.first < i; });
    if (found != list.end() && found->first == id) {
        found->second = value;
    } else {
        list.emplace(found, id, value);
    }
}

/// Erases the entry of id; false when there was none.
inline bool EraseParameterFromList(ParameterList& list, unsigned int id) {
    const auto found = FindParameter(list, id);
    if (found == list.end()) return false;
    list.erase(found);
    return true;
}

/// Overlays the entries of source, a sequence of (id, value) in ascending id, on target in one
/// linear merge: equal ids take the source's value.
template <typename Sorted>
void OverlayParameterList(ParameterList& target, const Sorted& source) {
    if (source.begin() == source.end()) return;
    if (target.empty() || target.back().first < source.begin()->first) {
        target.insert(target.end(), source.begin(), source.end());
        return;
    }
    // Where every id of source is known already, the values change in place.
    auto known = target.begin();
    auto given = source.begin();
    for (; given != source.end(); ++given, ++known) {
        while (known != target.end() && known->first < given->first) ++known;
        if (known == target.end() || known->first != given->first) break;
        known->second = given->second;
    }
    if (given == source.end()) return;
    ParameterList merged;
    merged.reserve(target.size() +
                   static_cast<size_t>(std::distance(source.begin(), source.end())));
    auto t = target.begin();
    auto s = source.begin();
    while (t != target.end() && s != source.end()) {
        if (t->first < s->first) {
            merged.push_back(*t++);
        } else {
            if (t->first == s->first) ++t;
            merged.emplace_back(s->first, s->second);
            ++s;
        }
    }
    merged.insert(merged.end(), t, target.end());
    for (; s != source.end(); ++s) merged.emplace_back(s->first, s->second);
    target.swap(merged);
}

/// Overlays pairs by position (ids[i], values[i]) over the shorter length, a later equal id
/// replacing an earlier one, on target. Ascending ids cost one linear merge, or an append when
/// they all lie beyond target's last.
inline void OverlayParameterPairs(ParameterList& target, const std::vector<unsigned int>& ids,
                                  const std::vector<double>& values) {
    const size_t count = std::min(ids.size(), values.size());
    if (count == 0) return;
    bool ascending = true;
    for (size_t i = 1; ascending && i < count; ++i) ascending = ids[i - 1] < ids[i];
    if (ascending && (target.empty() || target.back().first < ids[0])) {
        const size_t first = target.size();
        target.resize(first + count);
        for (size_t i = 0; i < count; ++i) target[first + i] = {ids[i], values[i]};
        return;
    }
    ParameterList pairs;
    pairs.reserve(count);
    for (size_t i = 0; i < count; ++i) pairs.emplace_back(ids[i], values[i]);
    if (!ascending) {
        std::stable_sort(
            pairs.begin(), pairs.end(),
            [](const std::pair<unsigned int, double>& x, const std::pair<unsigned int, double>& y) {
                return x.first < y.first;
            });
        // Of equal ids the last one given stays.
        size_t kept = 0;
        for (size_t i = 0; i < pairs.size(); ++i) {
            if (kept != 0 && pairs[kept - 1].first == pairs[i].first) {
                pairs[kept - 1].second = pairs[i].second;
            } else {
                pairs[kept++] = pairs[i];
            }
        }
        pairs.resize(kept);
    }
    OverlayParameterList(target, pairs);
}

/// The entries as an ordered map, built in linear time.
template <typename Sorted>
std::map<unsigned int, double> ToParameterMap(const Sorted& parameters) {
    std::map<unsigned int, double> map;
    for (const auto& parameter : parameters)
        map.emplace_hint(map.end(), parameter.first, parameter.second);
    return map;
}

/// The entries of a map as a list.
inline ParameterList ToParameterList(const std::map<unsigned int, double>& parameters) {
    return ParameterList(parameters.begin(), parameters.end());
}

/// The value of id, or null.
inline const double* FindValue(const std::map<unsigned int, double>& parameters, unsigned int id) {
    const auto found = parameters.find(id);
    return found == parameters.end() ? nullptr : &found->second;
}
inline const double* FindValue(const ParameterList& parameters, unsigned int id) {
    const auto found = FindParameter(parameters, id);
    return found == parameters.end() ? nullptr : &found->second;
}

/// What a read of several ids found: all of them, and at least one.
struct ParameterLookup {
    bool foundAll = true;
    bool foundOne = false;
};

/// Resizes values to the size of ids and writes the value of each id found at its place. The
/// place of a missing id keeps what it held, and the id is logged at warning level.
template <typename Parameters>
ParameterLookup LookUpParameters(const Parameters& parameters, const std::vector<unsigned int>& ids,
                                 std::vector<double>& values) {
    ParameterLookup lookup;
    values.resize(ids.size());
    for (size_t i = 0; i < ids.size(); ++i) {
        const double* found = FindValue(parameters, ids[i]);
        if (found == nullptr) {
            TESSEL_LOG(3, TESSEL_LOG_FXModule, "GetParameterArray: Could not find parameter %u",
                       ids[i]);
            lookup.foundAll = false;
            continue;
        }
        values[i] = *found;
        lookup.foundOne = true;
    }
    return lookup;
}

}  // namespace TesselFX
