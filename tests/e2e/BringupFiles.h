#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "../support/TempDir.h"

// Files for bring-up tests: a private temporary directory, preset file bytes laid out by hand
// and configuration text.
namespace bringup_test {

using TesselFX::test::TempDir;

/// Little-endian byte writers.
inline void PutU8(std::string& out, uint32_t v) { out.push_back(static_cast<char>(v & 0xFF)); }
inline void PutU16(std::string& out, uint32_t v) {
    PutU8(out, v);
    PutU8(out, v >> 8);
}
inline void PutU32(std::string& out, uint32_t v) {
    PutU16(out, v);
    PutU16(out, v >> 16);
}
inline void PutF64(std::string& out, double v) {
    uint64_t bits;
    static_assert(sizeof(bits) == sizeof(v), "double is 8 bytes");
    std::memcpy(&bits, &v, sizeof(bits));
    PutU32(out, static_cast<uint32_t>(bits));
    PutU32(out, static_cast<uint32_t>(bits >> 32));
}
inline void PutF32(std::string& out, float v) {
    uint32_t bits;
    std::memcpy(&bits, &v, sizeof(bits));
    PutU32(out, bits);
}
inline void PutString(std::string& out, const std::string& text) {
    PutU8(out, static_cast<uint32_t>(text.size()));
    out += text;
}

/// One preset record of the preset file.
struct PresetRecord {
    uint32_t outputMode = 0;
    uint32_t soundMode = 0;
    uint32_t subtypeMask = 0;
    uint32_t priority = 0;
    uint32_t flags = 0;
    std::string name;
    std::map<unsigned, double> parameters;
    std::map<unsigned, std::string> chunks;
};

/// A preset record named after its key.
inline PresetRecord Preset(uint32_t om, uint32_t sm, uint32_t mask, uint32_t priority,
                           std::map<unsigned, double> parameters) {
    PresetRecord record;
    record.outputMode = om;
    record.soundMode = sm;
    record.subtypeMask = mask;
    record.priority = priority;
    record.name = "p" + std::to_string(om) + std::to_string(sm) + std::to_string(mask);
    record.parameters = std::move(parameters);
    return record;
}

/// A coefficient block of the stand-in library (parameter p feeds input p % 16 of block
/// 4096 + p / 16): id, 16, then the sixteen inputs of its group.
inline std::string Block(uint32_t id, const std::map<unsigned, float>& inputs) {
    std::string out;
    PutU32(out, id);
    PutU32(out, 16);
    for (unsigned i = 0; i < 16; ++i) {
        auto found = inputs.find(i);
        PutF32(out, found == inputs.end() ? 0.0f : found->second);
    }
    return out;
}

/// A set-coefficients frame: opcode 1, payload length, the blocks.
inline std::string Frame(const std::vector<std::string>& blocks) {
    std::string payload;
    for (const std::string& block : blocks) payload += block;
    std::string out;
    PutU32(out, 1);
    PutU32(out, static_cast<uint32_t>(payload.size()));
    return out + payload;
}

/// A preset file: magic "BPBZ", total size, one presets section (id 4) with the records.
inline std::string PresetFile(const std::vector<PresetRecord>& presets) {
    std::string section;
    PutU16(section, static_cast<uint32_t>(presets.size()));
    for (const PresetRecord& p : presets) {
        std::string body;
        PutU8(body, p.outputMode);
        PutU8(body, p.soundMode);
        PutU32(body, p.subtypeMask);
        PutU16(body, static_cast<uint32_t>(p.parameters.size() + p.chunks.size()));
        PutU8(body, p.priority);
        PutU8(body, 0);
        PutU16(body, p.flags);
        PutString(body, p.name);
        PutString(body, "");
        for (const auto& parameter : p.parameters) {
            PutU16(body, parameter.first);
            PutU8(body, 0);
            PutU16(body, 8);
            PutF64(body, parameter.second);
        }
        for (const auto& chunk : p.chunks) {
            PutU16(body, chunk.first);
            PutU8(body, 3);
            PutU16(body, static_cast<uint32_t>(chunk.second.size()));
            body += chunk.second;
        }
        PutU16(section, static_cast<uint32_t>(body.size()));
        section += body;
    }
    std::string file = "BPBZ";
    PutU32(file, static_cast<uint32_t>(8 + 4 + 1 + section.size()));
    PutU32(file, static_cast<uint32_t>(1 + section.size()));
    PutU8(file, 4);
    return file + section;
}

/// One link law in its stream form: target follows source through (master, target) points,
/// masters in tenths of the source value.
inline std::string LinkLaw(uint32_t source, uint32_t target,
                           const std::vector<std::pair<float, float>>& points) {
    std::string out;
    const std::string method = "Linear";
    PutU32(out, static_cast<uint32_t>(36 + method.size() + 8 * points.size()));
    PutU32(out, 1);
    PutU32(out, 2800 + source);
    PutU32(out, source);
    PutU32(out, target);
    PutU32(out, static_cast<uint32_t>(method.size()));
    out += method;
    PutU32(out, static_cast<uint32_t>(points.size()));
    for (const auto& point : points) PutF32(out, point.first);
    for (const auto& point : points) PutF32(out, point.second);
    PutF32(out, 0.0f);
    PutF32(out, 0.0f);
    return out;
}

}  // namespace bringup_test
