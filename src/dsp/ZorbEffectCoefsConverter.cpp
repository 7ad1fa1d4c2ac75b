#include "dsp/ZorbEffectCoefsConverter.h"

#include <algorithm>
#include <cfloat>
#include <limits>

#include "dsp/ZorbEffectLog.h"

namespace TesselFX {

namespace {

/// The double narrowed to float as IEEE 754 rounds it: magnitudes beyond the float range
/// become infinities (a plain cast of such a value is undefined).
float NarrowToFloat(double value) {
    if (value > FLT_MAX) return std::numeric_limits<float>::infinity();
    if (value < -FLT_MAX) return -std::numeric_limits<float>::infinity();
    return static_cast<float>(value);
}

}  // namespace

ZorbEffectCoefsConverter::ZorbEffectCoefsConverter(std::shared_ptr<IZorbEffectWrapper> zorbEffect)
    : m_pZorbEffect(std::move(zorbEffect)) {}

bool ZorbEffectCoefsConverter::InitCheck() {
    if (!m_pZorbEffect) {
        ZorbEffectLogError("ZorbEffectCoefsConverter::InitCheck ZorbEffect is null");
        return false;
    }
    unsigned count = 0;
    if (!m_pZorbEffect->Control_Deferred_GetMaxNumCoefIDs(&count)) {
        m_ids.clear();
        ZorbEffectLogError("ZorbEffectCoefsConverter::InitCheck failed to read coef ID count");
        return false;
    }
    m_ids.resize(count);
    unsigned size = 0;
    if (!m_pZorbEffect->Control_Coefficient_GetBufferMaxSize(&size)) {
        m_coefficientBuffer.clear();
        ZorbEffectLogError("ZorbEffectCoefsConverter::InitCheck failed to read coef buffer size");
        return false;
    }
    m_coefficientBuffer.resize(size);
    m_pIds = m_ids.data();
    m_pCoefficientBuffer = m_coefficientBuffer.data();
    return true;
}

bool ZorbEffectCoefsConverter::Convert(const std::map<unsigned int, double>& parameters,
                                       std::map<uint32_t, std::vector<char>>& coefficients) {
    return ConvertSorted(parameters, coefficients);
}

bool ZorbEffectCoefsConverter::ConvertList(const ParameterList& parameters,
                                           std::map<uint32_t, std::vector<char>>& coefficients) {
    return ConvertSorted(parameters, coefficients);
}

template <typename Sorted>
bool ZorbEffectCoefsConverter::ConvertSorted(const Sorted& parameters,
                                             std::map<uint32_t, std::vector<char>>& coefficients) {
    if (!m_pZorbEffect) {
        ZorbEffectLogError("NULL == m_pZorbEffect");
        return false;
    }
    for (const auto& parameter : parameters) {
        // A failed set has been logged by the wrapper; the update still runs.
        m_pZorbEffect->Control_Deferred_Set(static_cast<int>(parameter.first),
                                            NarrowToFloat(parameter.second));
    }
    unsigned count = 0;
    if (!m_pZorbEffect->Control_Deferred_Update(m_pIds, &count)) {
        ZorbEffectLogError("m_pZorbEffect->Control_Deferred_Update failed");
        return false;
    }
    // The library is trusted to stay within the maxima it reported; the work areas' own
    // sizes bound what is read back here.
    count = std::min<unsigned>(count, static_cast<unsigned>(m_ids.size()));
    unsigned size = 0;
    size_t used = 0;
    // Reads the block of id into the coefficient buffer, used bytes of it; false, logged, when
    // it failed. Each read is handed the size that the previous one left.
    const auto read = [this, &size, &used](uint32_t id) {
        if (m_pZorbEffect->Control_Coefficient_Get(static_cast<int32_t>(id), m_pCoefficientBuffer,
                                                   &size)) {
            used = std::min<size_t>(size, m_coefficientBuffer.size());
            return true;
        }
        ZorbEffectLogError("m_pZorbEffect->Control_Coefficient_Get failed on id %u", id);
        return false;
    };
    const int32_t* const ids = m_pIds;
    const auto notBefore = [](int32_t first, int32_t second) {
        return static_cast<uint32_t>(first) >= static_cast<uint32_t>(second);
    };
    if (std::adjacent_find(ids, ids + count, notBefore) != ids + count) {
        coefficients.clear();
        for (unsigned i = 0; i < count; ++i) {
            const auto id = static_cast<uint32_t>(ids[i]);
            if (read(id))
                coefficients[id].assign(m_pCoefficientBuffer, m_pCoefficientBuffer + used);
        }
        return true;
    }
    // Strictly ascending ids walk beside the map: entries of ids read again keep their
    // storage, entries of ids that the library did not name or could not give are erased.
    auto kept = coefficients.begin();
    for (unsigned i = 0; i < count; ++i) {
        const auto id = static_cast<uint32_t>(ids[i]);
        while (kept != coefficients.end() && kept->first < id) kept = coefficients.erase(kept);
        const bool known = kept != coefficients.end() && kept->first == id;
        if (!read(id)) {
            if (known) kept = coefficients.erase(kept);
            continue;
        }
        if (!known) kept = coefficients.emplace_hint(kept, id, std::vector<char>());
        kept->second.assign(m_pCoefficientBuffer, m_pCoefficientBuffer + used);
        ++kept;
    }
    coefficients.erase(kept, coefficients.end());
    return true;
}

bool ZorbEffectCoefsConverter::ConvertToBuffer(const std::map<unsigned int, double>& parameters,
                                               std::vector<char>& buffer) {
    std::map<uint32_t, std::vector<char>> coefficients;
    if (!Convert(parameters, coefficients)) return false;
    buffer.clear();
    for (const auto& block : coefficients) {
        buffer.insert(buffer.end(), block.second.begin(), block.second.end());
    }
    return true;
}

}  // namespace TesselFX
