#include "dsp/Hifi3ControlBufferGenerator.h"

namespace TesselFX {

namespace {

/// The entries of parameters whose id is not in cache or whose value differs from the
/// cached one as exact doubles (so NaN always differs). Ids only in cache are ignored.
std::map<unsigned int, double> GetChangedParameters(
    const std::map<unsigned int, double>& parameters, const std::map<unsigned int, double>& cache) {
    std::map<unsigned int, double> changed;
    for (const auto& parameter : parameters) {
        const auto it = cache.find(parameter.first);
        if (it == cache.end() || !(it->second == parameter.second)) changed.insert(parameter);
    }
    return changed;
}

/// Overlays source on target.
void MergeParameters(std::map<unsigned int, double>& target,
                     const std::map<unsigned int, double>& source) {
    for (const auto& parameter : source) target[parameter.first] = parameter.second;
}

void AppendU32(std::vector<char>& out, uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<char>(value >> shift));
}

std::vector<char> MakeOpcodeBuffer(uint32_t opcode) {
    std::vector<char> buffer;
    AppendU32(buffer, opcode);
    return buffer;
}

}  // namespace

Hifi3ControlBufferGenerator::Hifi3ControlBufferGenerator(std::shared_ptr<ICoefsConverter> converter)
    : m_converter(std::move(converter)) {}

status_t Hifi3ControlBufferGenerator::MakeSetParameterArrayBufferV2(
    std::vector<std::vector<char>>& out, const std::map<unsigned int, double>& parameters,
    bool onlyChanged) {
    const std::map<unsigned int, double> diff = GetChangedParameters(parameters, m_lastParameters);
    if (diff.empty()) {
        if (!onlyChanged) PackCoefficientBuffers(out, m_coefficients);
        return kStatusOk;
    }
    std::map<uint32_t, std::vector<char>> coefs;
    if (!m_converter || !m_converter->Convert(diff, coefs)) return kStatusBadValue;
    MergeParameters(m_lastParameters, diff);
    MergeCoefficients(m_coefficients, coefs);
    PackCoefficientBuffers(out, onlyChanged ? coefs : m_coefficients);
    return kStatusOk;
}

status_t Hifi3ControlBufferGenerator::MakeGetMetersBuffer(std::vector<char>& out,
                                                          const std::map<uint32_t, CMeterInfo>&) {
    out = MakeOpcodeBuffer(kDspOpcodeGetMeters);
    return kStatusOk;
}

status_t Hifi3ControlBufferGenerator::MakeGetVersionBuffer(std::vector<char>& out) {
    out = MakeOpcodeBuffer(kDspOpcodeGetVersion);
    return kStatusOk;
}

void Hifi3ControlBufferGenerator::PackCoefficientBuffers(
    std::vector<std::vector<char>>& out,
    const std::map<uint32_t, std::vector<char>>& coefficients) {
    for (const std::vector<char>& group : GroupCoefficients(coefficients, kDspOpcodeMaxPayload)) {
        std::vector<char> frame;
        frame.reserve(group.size() + 8);
        AppendU32(frame, kDspOpcodeSetCoefficients);
        AppendU32(frame, static_cast<uint32_t>(group.size()));
        frame.insert(frame.end(), group.begin(), group.end());
        out.push_back(std::move(frame));
    }
}

void Hifi3ControlBufferGenerator::MergeCoefficients(
    std::map<uint32_t, std::vector<char>>& target,
    const std::map<uint32_t, std::vector<char>>& source) {
    for (const auto& block : source) target[block.first] = block.second;
}

std::vector<std::vector<char>> Hifi3ControlBufferGenerator::GroupCoefficients(
    const std::map<uint32_t, std::vector<char>>& coefficients, size_t limit) {
    std::vector<std::vector<char>> groups;
    std::vector<char> group;
    for (const auto& block : coefficients) {
        if (group.size() + block.second.size() > limit) {
            groups.push_back(std::move(group));
            group.clear();
        }
        group.insert(group.end(), block.second.begin(), block.second.end());
    }
    if (!group.empty()) groups.push_back(std::move(group));
    return groups;
}

}  // namespace TesselFX
