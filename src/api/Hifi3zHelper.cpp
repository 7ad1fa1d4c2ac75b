#include "api/Hifi3zHelper.h"

#include <utility>

#include "config/OrientationPolicy.h"
#include "config/VolumePolicy.h"
#include "config/VolumeTableHelper.h"
#include "control/Hifi3zControlHandler.h"
#include "dsp/Hifi3ControlBufferGenerator.h"
#include "dsp/Hifi3ReplyBufferParser.h"
#include "dsp/ZorbEffectCoefsConverter.h"
#include "dsp/ZorbEffectWrapper.h"
#include "log/TesselLog.h"
#include "preset/SystemVolumeToMasterValueConverter.h"

namespace TesselFX {

namespace {

/// Initialises an effect for the configured stream format; null after the log line when the
/// library refuses.
std::shared_ptr<IZorbEffectWrapper> InitializeForStream(std::shared_ptr<IZorbEffectWrapper> effect,
                                                        const Hifi3zHalControlConfig& config) {
    if (!effect || !effect->Initialize(static_cast<unsigned>(config.GetAudioFormatSampleRate()),
                                       static_cast<unsigned>(config.GetAudioFormatChannels()),
                                       static_cast<unsigned>(config.GetAudioFormatSampleSize()))) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule,
                         "Hifi3zHelper::BuildAndInitZorbEffect failed to initialize ZorbEffect");
        return nullptr;
    }
    return effect;
}

}  // namespace

ControlHandlerMap Hifi3zHelper::MakeControlHandlers(const std::shared_ptr<IDspBufferSender>& sender,
                                                    const Hifi3zHalControlConfig& config,
                                                    const std::shared_ptr<IPresetSet>& presetSet) {
    auto volumePolicy = std::make_shared<VolumePolicy>(config.GetPresetVolumeSubtypes(),
                                                       config.GetVolumePriorities());
    auto orientationPolicy = std::make_shared<OrientationPolicy>(
        config.GetPresetOrientationSubtypes(), config.GetPresetDefaultAngles());

    ControlHandlerMap handlers;
    const std::shared_ptr<IZorbEffectWrapper> zorbEffect = BuildAndInitZorbEffect(config);
    if (!zorbEffect) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule,
                         "Hifi3zHelper::MakeControlHandlers failed to initialize ZorbEffect");
        return handlers;
    }
    // Each control drives a DSP instance of its own, so each has its own host model of the
    // effect over the one loaded library: the first control takes the effect just built.
    std::shared_ptr<IZorbEffectWrapper> unused = zorbEffect;
    const auto loaded = std::dynamic_pointer_cast<ZorbEffectWrapper>(zorbEffect);
    for (const auto& control : config.GetControls()) {
        std::shared_ptr<IZorbEffectWrapper> effect = std::move(unused);
        if (!effect && loaded) effect = InitializeForStream(loaded->NewEffect(), config);
        if (!effect) {
            continue;
        }
        auto converter = std::make_shared<ZorbEffectCoefsConverter>(effect);
        if (!converter->InitCheck()) {
            continue;
        }
        auto generator = std::make_shared<Hifi3ControlBufferGenerator>(converter);
        auto parser = std::make_shared<Hifi3ReplyBufferParser>(effect);
        const std::shared_ptr<IControlDescription>& description = control.second;
        if (!description) {
            continue;
        }
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "make ControlHandler %s",
                   description->GetName().c_str());
        auto volumeTableHelper = std::make_shared<VolumeTableHelper>(volumePolicy);
        auto masterValueConverter = std::make_shared<SystemVolumeToMasterValueConverter>();
        handlers[description] = std::make_shared<Hifi3zControlHandler>(
            sender, description, presetSet, volumePolicy, volumeTableHelper, orientationPolicy,
            generator, parser, masterValueConverter);
    }
    return handlers;
}

std::shared_ptr<IZorbEffectWrapper> Hifi3zHelper::BuildAndInitZorbEffect(
    const Hifi3zHalControlConfig& config) {
    return InitializeForStream(
        ZorbEffectWrapper::Create(config.GetDspKitPath64(), ZorbEffectWrapper::kHelperLoadFlags),
        config);
}

bool Hifi3zHelper::GetDspKitVersion(const Hifi3zHalControlConfig& config, std::string& version) {
    const std::shared_ptr<IZorbEffectWrapper> zorbEffect = BuildAndInitZorbEffect(config);
    if (!zorbEffect) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule,
                         "Hifi3zHelper::GetDspKitVersion failed to initialize ZorbEffect");
        return false;
    }
    const char* text = nullptr;
    unsigned size = 0;
    if (!zorbEffect->Revision_Get(&text, &size) || (text == nullptr && size != 0)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule,
                         "Hifi3zHelper::GetDspKitVersion failed to get ZorbEffect version");
        return false;
    }
    version.assign(text == nullptr ? "" : text, size);
    return true;
}

}  // namespace TesselFX
