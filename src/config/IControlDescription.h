#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "config/CommonSettings.h"
#include "config/PresetDescription.h"

namespace TesselFX {

/// One line of HAL_SUPPORTED_CONTROLS: a device with its sample rates, the presets it may use
/// and the settings that a caller's search record is matched against. Immutable after parsing.
class IControlDescription {
  public:
    virtual ~IControlDescription() = default;
    virtual const std::string& GetName() const = 0;
    virtual uint32_t GetDevice() const = 0;
    virtual const std::vector<int32_t>& GetSampleRates() const = 0;
    virtual const std::vector<std::shared_ptr<PresetDescription>>& GetPresets() const = 0;
    virtual const std::string& GetControlType() const = 0;
    /// "DEV" as an int value and every other unrecognised pair of the line as a string value.
    virtual std::shared_ptr<CommonSettings> GetSettings() const = 0;
};

/// Control descriptions by control name.
using ControlDescriptions = std::map<std::string, std::shared_ptr<IControlDescription>>;

}  // namespace TesselFX
