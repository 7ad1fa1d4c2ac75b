#pragma once

#include <vector>

#include "preset/IPresetHandleListener.h"
#include "preset/OmSm.h"

namespace TesselFX {
namespace test {

inline char B(int value) { return static_cast<char>(value); }

// One law: version 1, master 2800, source 0, target 100, "Linear", points (0, 0) (1000, 10),
// trailing floats 0. 58 bytes.
inline std::vector<char> LawOnTarget100() {
    return {0x3A, 0,    0, 0, 1,   0,   0,   0,   B(0xF0), 0x0A, 0, 0, 0, 0, 0, 0, 0x64, 0, 0, 0,
            6,    0,    0, 0, 'L', 'i', 'n', 'e', 'a',     'r',  2, 0, 0, 0, 0, 0, 0,    0, 0, 0,
            0x7A, 0x44, 0, 0, 0,   0,   0,   0,   0x20,    0x41, 0, 0, 0, 0, 0, 0, 0,    0};
}

// One law: version 1, master 2801, source 1, target 200, "Linear", one point (0, 7).
// 50 bytes.
inline std::vector<char> LawOnTarget200() {
    return {0x32, 0, 0, 0, 1, 0, 0,       0,    B(0xF1), 0x0A, 0,   0,   1,   0, 0, 0, B(0xC8),
            0,    0, 0, 6, 0, 0, 0,       'L',  'i',     'n',  'e', 'a', 'r', 1, 0, 0, 0,
            0,    0, 0, 0, 0, 0, B(0xE0), 0x40, 0,       0,    0,   0,   0,   0, 0, 0};
}

// The clearing marker as a user preset writes it: 42 bytes, source -3, other ids -1.
inline std::vector<char> ClearingMarker() {
    const char m1 = B(0xFF);
    return {0x2A, 0,   0,  0,  1,  0,  0, 0, m1, m1, m1,  m1,  B(0xFD), m1,
            m1,   m1,  m1, m1, m1, m1, 6, 0, 0,  0,  'L', 'i', 'n',     'e',
            'a',  'r', 0,  0,  0,  0,  0, 0, 0,  0,  0,   0,   0,       0};
}

/// Records the pairs that a preset handle reports as changed.
class RecordingListener : public IPresetHandleListener {
  public:
    void OnPresetHandleChanged(unsigned int om, unsigned int sm) override {
        calls.push_back(OmSm{om, sm});
    }
    std::vector<OmSm> calls;
};

inline std::vector<char> Concat(std::vector<char> a, const std::vector<char>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

}  // namespace test
}  // namespace TesselFX
