#pragma once

#include <string>

#include "zbhalcontroller/zb_api.h"

namespace TesselFX {
namespace zbctl {

/// The 22 exported functions, typed by the public header.
struct HalApi {
    decltype(&zb_create) create = nullptr;
    decltype(&zb_destroy) destroy = nullptr;
    decltype(&zb_initialize) initialize = nullptr;
    decltype(&zb_set_enable) setEnable = nullptr;
    decltype(&zb_set_bypass) setBypass = nullptr;
    decltype(&zb_set_active) setActive = nullptr;
    decltype(&zb_set_sound_mode) setSoundMode = nullptr;
    decltype(&zb_set_output_mode) setOutputMode = nullptr;
    decltype(&zb_set_volume) setVolume = nullptr;
    decltype(&zb_set_orientation) setOrientation = nullptr;
    decltype(&zb_set_parameter) setParameter = nullptr;
    decltype(&zb_set_parameters_array) setParametersArray = nullptr;
    decltype(&zb_set_command) setCommand = nullptr;
    decltype(&zb_get_command) getCommand = nullptr;
    decltype(&zb_set_linklaws_value) setLinkLawsValue = nullptr;
    decltype(&zb_wait_for_flush) waitForFlush = nullptr;
    decltype(&zb_flush) flush = nullptr;
    decltype(&zb_register_notifier) registerNotifier = nullptr;
    decltype(&zb_set_data) setData = nullptr;
    decltype(&zb_get_version) getVersion = nullptr;
    decltype(&zb_on_dsp_wakeup) onDspWakeup = nullptr;
    decltype(&zb_is_feature_supported) isFeatureSupported = nullptr;
};

/// libzbhalcontroller.so opened with dlopen and its functions resolved by name with dlsym, as
/// an audio HAL does. The library stays loaded until the process ends, as its process-wide
/// handle table requires.
class HalLibrary {
  public:
    /// Throws ZbctlError when the library does not open or lacks one of the functions.
    explicit HalLibrary(const std::string& path);
    ~HalLibrary();
    HalLibrary(const HalLibrary&) = delete;
    HalLibrary& operator=(const HalLibrary&) = delete;

    const HalApi& Api() const { return m_api; }

  private:
    void* m_handle = nullptr;
    HalApi m_api;
};

}  // namespace zbctl
}  // namespace TesselFX
