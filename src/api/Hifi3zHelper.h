#pragma once

#include <memory>
#include <string>

#include "config/Hifi3zHalControlConfig.h"
#include "control/IDspBufferSender.h"
#include "control/IHalControlManager.h"
#include "dsp/IZorbEffectWrapper.h"
#include "preset/IPresetSet.h"

namespace TesselFX {

/// Builds the control handlers of a HiFi 3z control object from a parsed configuration.
/// No state of its own; runs on the initialising thread.
class Hifi3zHelper {
  public:
    /// One Hifi3zControlHandler per control of the configuration, keyed by its description.
    /// The handlers share the preset set, the policies and the loaded algorithm library; each
    /// has its own host model of the effect (a wrapper with its own effect buffer), converter,
    /// generator, reply parser, volume table helper and master value converter. Empty when the
    /// library cannot be loaded and initialised.
    static ControlHandlerMap MakeControlHandlers(const std::shared_ptr<IDspBufferSender>& sender,
                                                 const Hifi3zHalControlConfig& config,
                                                 const std::shared_ptr<IPresetSet>& presetSet);
    /// Loads the configured algorithm library and initialises it for the configured stream
    /// format; null on failure.
    static std::shared_ptr<IZorbEffectWrapper> BuildAndInitZorbEffect(
        const Hifi3zHalControlConfig& config);
    /// The revision text of the configured library, from a wrapper of its own.
    static bool GetDspKitVersion(const Hifi3zHalControlConfig& config, std::string& version);
};

}  // namespace TesselFX
