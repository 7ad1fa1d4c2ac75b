#include "HalLibrary.h"

#include <dlfcn.h>

#include <vector>

#include "ZbctlError.h"

namespace TesselFX {
namespace zbctl {

namespace {

template <typename Function>
void Resolve(void* handle, const char* name, Function& function,
             std::vector<std::string>& missing) {
    function = reinterpret_cast<Function>(dlsym(handle, name));
    if (function == nullptr) missing.push_back(name);
}

}  // namespace

HalLibrary::HalLibrary(const std::string& path) {
    // The library keeps process-wide state that lives until the process ends, so it is never
    // unloaded.
    m_handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (m_handle == nullptr) {
        const char* error = dlerror();
        throw ZbctlError("cannot load " + path + ": " + (error ? error : "unknown error"));
    }
    std::vector<std::string> missing;
    Resolve(m_handle, "zb_create", m_api.create, missing);
    Resolve(m_handle, "zb_destroy", m_api.destroy, missing);
    Resolve(m_handle, "zb_initialize", m_api.initialize, missing);
    Resolve(m_handle, "zb_set_enable", m_api.setEnable, missing);
    Resolve(m_handle, "zb_set_bypass", m_api.setBypass, missing);
    Resolve(m_handle, "zb_set_active", m_api.setActive, missing);
    Resolve(m_handle, "zb_set_sound_mode", m_api.setSoundMode, missing);
    Resolve(m_handle, "zb_set_output_mode", m_api.setOutputMode, missing);
    Resolve(m_handle, "zb_set_volume", m_api.setVolume, missing);
    Resolve(m_handle, "zb_set_orientation", m_api.setOrientation, missing);
    Resolve(m_handle, "zb_set_parameter", m_api.setParameter, missing);
    Resolve(m_handle, "zb_set_parameters_array", m_api.setParametersArray, missing);
    Resolve(m_handle, "zb_set_command", m_api.setCommand, missing);
    Resolve(m_handle, "zb_get_command", m_api.getCommand, missing);
    Resolve(m_handle, "zb_set_linklaws_value", m_api.setLinkLawsValue, missing);
    Resolve(m_handle, "zb_wait_for_flush", m_api.waitForFlush, missing);
    Resolve(m_handle, "zb_flush", m_api.flush, missing);
    Resolve(m_handle, "zb_register_notifier", m_api.registerNotifier, missing);
    Resolve(m_handle, "zb_set_data", m_api.setData, missing);
    Resolve(m_handle, "zb_get_version", m_api.getVersion, missing);
    Resolve(m_handle, "zb_on_dsp_wakeup", m_api.onDspWakeup, missing);
    Resolve(m_handle, "zb_is_feature_supported", m_api.isFeatureSupported, missing);
    if (!missing.empty()) {
        std::string names;
        for (const std::string& name : missing) names += " " + name;
        dlclose(m_handle);
        throw ZbctlError(path + " lacks" + names);
    }
}

HalLibrary::~HalLibrary() { dlclose(m_handle); }

}  // namespace zbctl
}  // namespace TesselFX
