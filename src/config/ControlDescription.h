#pragma once

#include "config/IControlDescription.h"

namespace TesselFX {

class ControlDescription : public IControlDescription {
  public:
    ControlDescription(const std::string& name, uint32_t device,
                       const std::vector<int32_t>& sampleRates,
                       const std::vector<std::shared_ptr<PresetDescription>>& presets,
                       std::shared_ptr<CommonSettings> settings, const std::string& controlType);
    ~ControlDescription() override;

    const std::string& GetName() const override { return m_name; }
    uint32_t GetDevice() const override { return m_device; }
    const std::vector<int32_t>& GetSampleRates() const override { return m_sampleRates; }
    const std::vector<std::shared_ptr<PresetDescription>>& GetPresets() const override {
        return m_presets;
    }
    const std::string& GetControlType() const override { return m_controlType; }
    std::shared_ptr<CommonSettings> GetSettings() const override { return m_settings; }

  private:
    std::string m_name;
    uint32_t m_device;
    std::vector<int32_t> m_sampleRates;
    std::vector<std::shared_ptr<PresetDescription>> m_presets;
    std::shared_ptr<CommonSettings> m_settings;
    std::string m_controlType;
};

}  // namespace TesselFX
