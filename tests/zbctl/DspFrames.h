#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

namespace TesselFX {
namespace zbctl {
namespace test {

// Little-endian words and frames of the stand-in DSP library's coefficient blocks.

inline void PutWord(std::vector<unsigned char>& out, uint32_t value) {
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<unsigned char>(value >> (8 * i)));
}

inline void PutFloat(std::vector<unsigned char>& out, float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, 4);
    PutWord(out, bits);
}

/// A block: coefficient id, value count, values.
inline std::vector<unsigned char> Block(uint32_t id, const std::vector<float>& values) {
    std::vector<unsigned char> block;
    PutWord(block, id);
    PutWord(block, static_cast<uint32_t>(values.size()));
    for (float value : values) PutFloat(block, value);
    return block;
}

/// A set-coefficients frame: opcode 1, payload length, the blocks one after another.
inline std::vector<unsigned char> Frame(const std::vector<std::vector<unsigned char>>& blocks) {
    std::vector<unsigned char> payload;
    for (const auto& block : blocks) payload.insert(payload.end(), block.begin(), block.end());
    std::vector<unsigned char> frame;
    PutWord(frame, 1);
    PutWord(frame, static_cast<uint32_t>(payload.size()));
    frame.insert(frame.end(), payload.begin(), payload.end());
    return frame;
}

/// The values of the generic block that holds parameter 1, the pass-through switch.
inline std::vector<float> PassThroughSwitch(float value) {
    std::vector<float> values(16, 0.0f);
    values[1] = value;
    return values;
}

}  // namespace test
}  // namespace zbctl
}  // namespace TesselFX
