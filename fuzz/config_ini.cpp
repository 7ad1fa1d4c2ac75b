// The configuration INI: read by CIniFile, parsed by the HiFi 3z configuration, and its tables
// turned into the volume and orientation policies that bring-up makes of them. ParseConfig may
// let out only the standard conversion errors of a bad number; anything else is a finding.
#include <cstdint>
#include <stdexcept>
#include <string>

#include "config/CIniFile.h"
#include "config/Hifi3zHalControlConfig.h"
#include "config/OrientationPolicy.h"
#include "config/VolumePolicy.h"

using namespace TesselFX;

namespace {

void UsePolicies(const Hifi3zHalControlConfig& config) {
    VolumePolicy volumePolicy(config.GetPresetVolumeSubtypes(), config.GetVolumePriorities());
    OrientationPolicy orientationPolicy(config.GetPresetOrientationSubtypes(),
                                        config.GetPresetDefaultAngles());
    volumePolicy.GetDefaultVolume();
    for (const auto& preset : config.GetPresets()) {
        const std::string& name = preset.first;
        for (double volumeDb : {-96.0, -20.0, -0.5, 0.0, 3.0}) {
            volumePolicy.GetSubtypeMaskForVolume(name, volumeDb);
        }
        for (OrientationAngle angle : {0, 90, 180, 270, -90}) {
            orientationPolicy.GetSubtypeMaskForOrientation(name, angle);
        }
        orientationPolicy.GetDefaultOrientationAngle(name);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    auto iniFile = std::make_shared<CIniFile>();
    iniFile->LoadMemory(std::string(reinterpret_cast<const char*>(data), size));
    iniFile->Dump();
    Hifi3zHalControlConfig config;
    try {
        config.ParseConfig(iniFile);
    } catch (const std::invalid_argument&) {
        return 0;
    } catch (const std::out_of_range&) {
        return 0;
    }
    UsePolicies(config);
    for (const auto& control : config.GetControls()) {
        if (control.second) control.second->GetName();
    }
    return 0;
}
