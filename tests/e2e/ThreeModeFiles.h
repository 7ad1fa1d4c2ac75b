#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "BringupFiles.h"

// A small preset set and configuration for tests and fuzz targets that drive whole handles:
// Music (1,1) with two sub presets, Movie (1,2), Laws (2,1) where source 0 drives parameter
// 1038; one control, Speaker, on instance 1. DSPKIT_SIM_PATH names the stand-in DSP library.
namespace bringup_test {

/// A base preset (mask 0) at priority 0, a sub preset at 1.
inline PresetRecord ModePreset(uint32_t om, uint32_t sm, uint32_t mask,
                               std::map<unsigned, double> values) {
    return Preset(om, sm, mask, mask == 0 ? 0 : 1, std::move(values));
}

/// The preset file of the three modes; the records of extra follow theirs.
inline std::string ThreeModePresets(const std::vector<PresetRecord>& extra = {}) {
    PresetRecord laws = ModePreset(2, 1, 0, {{1, 0.0}, {1038, 0.5}, {2821, 1.0}});
    laws.chunks[1] = LinkLaw(0, 1038, {{0.0f, 0.0f}, {1000.0f, 1000.0f}});
    std::vector<PresetRecord> records{ModePreset(1, 1, 0, {{1, 0.0}, {1006, 1.0}, {1022, 2.0}}),
                                      ModePreset(1, 1, 1, {{1022, 5.0}}),
                                      ModePreset(1, 1, 2, {{1006, 7.0}}),
                                      ModePreset(1, 2, 0, {{1, 0.0}, {1054, 9.0}}), laws};
    records.insert(records.end(), extra.begin(), extra.end());
    return PresetFile(records);
}

/// The configuration; extraSections go in before the converter's section, and each line of
/// extraPresets ("Name=OM:3,SM:1") joins the presets and the control's list.
inline std::string ThreeModeConfig(const std::string& extraSections = "",
                                   const std::vector<std::string>& extraPresets = {}) {
    std::string presets, names;
    for (const std::string& line : extraPresets) {
        presets += line + "\n";
        names += "|" + line.substr(0, line.find('='));
    }
    return "[HAL_SUPPORTED_SAMPLE_RATES]\nrates=48000\n"
           "[HAL_VOLUME_SUBTYPES]\nmusicVol=-20:1,0:NULL\n"
           "[HAL_ORIENTATION_SUBTYPES]\nmusicOrient=90:2,0:DEFAULT_ANGLE\n"
           "[HAL_VOLUME_PRIORITY]\nAUDIO_STREAM_MUSIC=VOLUME_PRIORITY_HIGH\n"
           "[HAL_SUPPORTED_PRESETS]\nMusic=OM:1,SM:1,VST:musicVol,OST:musicOrient\n"
           "Movie=OM:1,SM:2\nLaws=OM:2,SM:1\n" +
           presets +
           "[HAL_SUPPORTED_CONTROLS]\nSpeaker=DEV:2,SR:rates,PRESET:Music|Movie|Laws" + names +
           ",INSTANCE:1\n" + extraSections + "[COEFS_CONVERTER_SETTING]\nDspKitPath64=" DSPKIT_SIM_PATH
           "\n";
}

}  // namespace bringup_test
