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
    coefficients.clear();
    // The library is trusted to stay within the maxima it reported; the work areas' own
    // sizes bound what is read back here.
    count = std::min<unsigned>(count, static_cast<unsigned>(m_ids.size()));
    unsigned size = 0;
    for (unsigned i = 0; i < count; ++i) {
        const int32_t id = m_pIds[i];
        if (!m_pZorbEffect->Control_Coefficient_Get(id, m_pCoefficientBuffer, &size)) {
            ZorbEffectLogError("m_pZorbEffect->Control_Coefficient_Get failed on id %u",
                               static_cast<unsigned>(id));
            continue;
        }
        const size_t used = std::min<size_t>(size, m_coefficientBuffer.size());
        coefficients[static_cast<uint32_t>(id)].assign(m_pCoefficientBuffer,
                                                       m_pCoefficientBuffer + used);
    }
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
