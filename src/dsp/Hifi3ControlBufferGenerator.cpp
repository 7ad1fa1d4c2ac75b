#include "dsp/Hifi3ControlBufferGenerator.h"

namespace TesselFX {

namespace {

/// The entries of parameters, ascending, whose id is not in cache or whose value differs from
/// the cached one as exact doubles (so NaN always differs). Ids only in cache are ignored. A
/// large set walks beside the cache, a small one looks each id up.
template <typename Sorted>
ParameterList GetChangedParameters(const Sorted& parameters, size_t count,
                                   const ParameterList& cache) {
    ParameterList changed;
    const auto differs = [](const ParameterList::const_iterator& cached, double value) {
        return !(cached->second == value);
    };
    if (count * 16 < cache.size()) {
        for (const auto& parameter : parameters) {
            const auto cached = FindParameter(cache, parameter.first);
            if (cached == cache.end() || differs(cached, parameter.second)) {
                changed.emplace_back(parameter.first, parameter.second);
            }
        }
        return changed;
    }
    // Sized once and cut back, so that the walk writes without a capacity check per entry.
    changed.resize(count);
    size_t used = 0;
    auto cached = cache.begin();
    for (const auto& parameter : parameters) {
        while (cached != cache.end() && cached->first < parameter.first) ++cached;
        if (cached == cache.end() || cached->first != parameter.first ||
            differs(cached, parameter.second)) {
            changed[used++] = {parameter.first, parameter.second};
        }
    }
    changed.resize(used);
    return changed;
}

/// Overlays the changed entries on the cache; an empty cache takes them whole.
void MergeParameters(ParameterList& cache, ParameterList&& changed) {
    if (cache.empty()) {
        cache = std::move(changed);
        return;
    }
    if (changed.size() * 16 < cache.size()) {
        for (const auto& parameter : changed) {
            SetParameterInList(cache, parameter.first, parameter.second);
        }
        return;
    }
    OverlayParameterList(cache, changed);
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
    return MakeBuffers(out, parameters, parameters.size(), onlyChanged);
}

status_t Hifi3ControlBufferGenerator::MakeSetParameterListBuffer(
    std::vector<std::vector<char>>& out, const ParameterList& parameters, bool onlyChanged) {
    return MakeBuffers(out, parameters, parameters.size(), onlyChanged);
}

template <typename Sorted>
status_t Hifi3ControlBufferGenerator::MakeBuffers(std::vector<std::vector<char>>& out,
                                                  const Sorted& parameters, size_t count,
                                                  bool onlyChanged) {
    ParameterList diff = GetChangedParameters(parameters, count, m_lastParameters);
    if (diff.empty()) {
        if (!onlyChanged) PackCoefficientBuffers(out, m_coefficients);
        return kStatusOk;
    }
    std::map<uint32_t, std::vector<char>>& coefs = m_changedCoefficients;
    if (!m_converter || !m_converter->ConvertList(diff, coefs)) return kStatusBadValue;
    MergeParameters(m_lastParameters, std::move(diff));
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
    // A few blocks are looked up; many walk beside the cache in ascending id, each new block
    // inserted where the walk stands.
    if (source.size() * 16 < target.size()) {
        for (const auto& block : source) target[block.first] = block.second;
        return;
    }
    auto at = target.begin();
    for (const auto& block : source) {
        while (at != target.end() && at->first < block.first) ++at;
        if (at != target.end() && at->first == block.first) {
            at->second = block.second;
        } else {
            at = target.emplace_hint(at, block.first, block.second);
        }
        ++at;
    }
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
