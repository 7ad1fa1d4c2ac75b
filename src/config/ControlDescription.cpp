#include "config/ControlDescription.h"

namespace TesselFX {

ControlDescription::ControlDescription(
    const std::string& name, uint32_t device, const std::vector<int32_t>& sampleRates,
    const std::vector<std::shared_ptr<PresetDescription>>& presets,
    std::shared_ptr<CommonSettings> settings, const std::string& controlType)
    : m_name(name),
      m_device(device),
      m_sampleRates(sampleRates),
      m_presets(presets),
      m_settings(std::move(settings)),
      m_controlType(controlType) {}

ControlDescription::~ControlDescription() = default;

}  // namespace TesselFX
