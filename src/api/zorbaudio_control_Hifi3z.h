#pragma once

#include "control/HalControlManager.h"
#include "control/IDspBufferSender.h"

namespace TesselFX {

/// The usable size of a tuning message: the largest DSP buffer less the widest envelope header.
unsigned int MessageBufferSize();

/// Builds the object graph of a HiFi 3z control object: reads the presets (systemPresetPath is
/// required, userPresetPath may be empty), parses the configuration at configPath, loads the
/// algorithm library that it names, makes one control handler per control and hands them to
/// manager, whose address is also the handle that sender is given back. On failure the
/// manager keeps its earlier handlers, and false comes with a log line. Null paths count as
/// empty. Conversion errors of configuration entries pass out as exceptions.
bool zorbaudio_initialize(HalControlManager* manager, const char* systemPresetPath,
                          const char* userPresetPath, const char* configPath,
                          DspSendFunction sender);

}  // namespace TesselFX
