#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "preset/IPresetHandleListener.h"
#include "preset/OmSm.h"
#include "preset/PresetFactory.h"
#include "preset/PresetHandleFactory.h"
#include "preset/PresetSet.h"

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

/// Puts a preset named "P<om><sm>" with remarks "r" into the map and returns it; laws, when
/// given, become its chunk 1.
inline std::shared_ptr<IPreset> AddPreset(PresetMap& map, uint32_t om, uint32_t sm, uint32_t mask,
                                          uint8_t priority,
                                          const std::map<unsigned int, double>& parameters,
                                          const std::vector<char>& laws = {}, bool isUser = false,
                                          uint16_t flags = 0) {
    auto preset = PresetFactory().Create(
        om, sm, mask, "P" + std::to_string(om) + std::to_string(sm), "r", flags, priority, isUser);
    preset->SetParameterArray(parameters);
    if (!laws.empty()) preset->SetChunk(1, laws);
    map[{om, sm, mask}] = preset;
    return preset;
}

/// A preset set over these presets with the real factories.
inline std::shared_ptr<PresetSet> MakeSet(const PresetMap& system, const PresetMap& user = {}) {
    return std::make_shared<PresetSet>(system, user, std::make_shared<PresetHandleFactory>(),
                                       std::make_shared<PresetFactory>());
}

/// The value of a parameter as a preset, handle or tuning preset reads it; -1 when absent.
template <typename Holder>
double Value(const Holder& holder, unsigned int id) {
    double value = -1.0;
    holder->GetParameter(id, value);
    return value;
}

inline std::vector<char> Concat(std::vector<char> a, const std::vector<char>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

}  // namespace test
}  // namespace TesselFX
