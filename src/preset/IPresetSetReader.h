#pragma once

#include <memory>
#include <vector>

#include "preset/IPresetSet.h"

namespace TesselFX {

/// Reads presets and builds or refills a preset set. Used by one thread for one load.
class IPresetSetReader {
  public:
    virtual ~IPresetSetReader() = default;
    /// A new set; empty when the system presets could not be read.
    virtual std::shared_ptr<IPresetSet> Read() = 0;
    /// Refills an existing set.
    virtual bool Read(const std::shared_ptr<IPresetSet>& presetSet) = 0;
    virtual bool ParseBuffer(const std::vector<char>& buffer, bool isUser) = 0;
};

}  // namespace TesselFX
