#pragma once

#include <initializer_list>
#include <vector>

namespace TesselFX {
namespace test {

/// Golden bytes written as small integers, e.g. Bytes({1, 0, 0, 0, 0xAA}).
inline std::vector<char> Bytes(std::initializer_list<int> values) {
    std::vector<char> bytes;
    for (int value : values) bytes.push_back(static_cast<char>(value));
    return bytes;
}

}  // namespace test
}  // namespace TesselFX
