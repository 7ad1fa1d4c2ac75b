#include "api/zorbaudio_control_Hifi3z.h"

#include <memory>
#include <set>
#include <string>

#include "api/Hifi3zHelper.h"
#include "config/CIniFile.h"
#include "config/Hifi3zHalControlConfig.h"
#include "control/DspBufferSender.h"
#include "log/TesselLog.h"
#include "preset/PresetFactory.h"
#include "preset/PresetHandleFactory.h"
#include "preset/PresetSetFactory.h"
#include "preset/ZpsReader.h"
#include "protocol/ZbAocTuningProtocol.h"

namespace TesselFX {

namespace {

const char* OrEmpty(const char* text) { return text == nullptr ? "" : text; }

}  // namespace

unsigned int MessageBufferSize() {
    return static_cast<unsigned int>(ZbAocTuningProtocol::kMaxDspBufferSize -
                                     ZbAocTuningProtocol::HeaderSize());
}

bool zorbaudio_initialize(HalControlManager* manager, const char* systemPresetPath,
                          const char* userPresetPath, const char* configPath,
                          DspSendFunction sender) {
    if (sender == nullptr) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%s buffer_sender function is null.",
                         "zorbaudio_initialize");
        return false;
    }
    if (manager == nullptr) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%s manager is null.", "zorbaudio_initialize");
        return false;
    }
    systemPresetPath = OrEmpty(systemPresetPath);
    userPresetPath = OrEmpty(userPresetPath);
    configPath = OrEmpty(configPath);

    const std::set<unsigned int> excludedParameters;
    ZpsReader reader(systemPresetPath, userPresetPath, std::make_shared<PresetFactory>(),
                     std::make_shared<PresetSetFactory>(), std::make_shared<PresetHandleFactory>());
    reader.SetExcludedParameters(excludedParameters);
    const std::shared_ptr<IPresetSet> presetSet = reader.Read();
    if (!presetSet) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "load preset %s %s fail", systemPresetPath,
                         userPresetPath);
        return false;
    }

    auto iniFile = std::make_shared<CIniFile>();
    if (!iniFile->LoadFile(configPath)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "load conf %s fail", configPath);
        return false;
    }
    Hifi3zHalControlConfig config;
    config.ParseConfig(iniFile);

    const bool dumpBuffers =
        config.GetFeatures().count(HalControlConfig::kDumpBufferToDspFeature) != 0;
    auto dspBufferSender = std::make_shared<DspBufferSender>(manager, sender, dumpBuffers);

    const ControlHandlerMap handlers =
        Hifi3zHelper::MakeControlHandlers(dspBufferSender, config, presetSet);
    if (handlers.empty()) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "None controller is created");
        return false;
    }

    std::string dspKitVersion;
    if (Hifi3zHelper::GetDspKitVersion(config, dspKitVersion)) {
        manager->SetDspKitVersion(dspKitVersion);
    }
    manager->SetMessageBufferSize(MessageBufferSize());
    return manager->Initialize(handlers, config.GetFeatures(), excludedParameters,
                               config.GetCustomActions());
}

}  // namespace TesselFX
