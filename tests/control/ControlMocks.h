#pragma once

// GoogleMock doubles of the interfaces that the control manager and the control handler use.

#include <gmock/gmock.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "config/CommonSettings.h"
#include "config/ControlDescription.h"
#include "config/IVolumePolicy.h"
#include "config/IVolumeTableHelper.h"
#include "control/IControlHandler.h"
#include "control/IDspBufferSender.h"
#include "dsp/IControlBufferGenerator.h"
#include "dsp/IGetMetersBufferGenerator.h"
#include "dsp/IGetVersionBufferGenerator.h"
#include "dsp/IReplyBufferParser.h"
#include "dsp/IReplyMetersBufferParser.h"
#include "dsp/IReplyVersionBufferParser.h"
#include "dsp/ISetBypassBufferGenerator.h"
#include "dsp/ISetEnableBufferGenerator.h"
#include "dsp/ISetLrSwapBufferGenerator.h"
#include "dsp/ISetParameterArrayBufferGenerator.h"
#include "dsp/ISetSystemVolumeBufferGenerator.h"
#include "preset/IMasterValueConverter.h"
#include "preset/IPresetHandle.h"
#include "preset/IPresetSet.h"
#include "preset/SuperPreset.h"

namespace TesselFX {
namespace test {

class MockControlHandler : public IControlHandler {
  public:
    MOCK_METHOD(bool, SetLrSwap, (bool), (override));
    MOCK_METHOD(bool, GetLrSwap, (), (override));
    MOCK_METHOD(bool, SetActive, (unsigned int, unsigned int), (override));
    MOCK_METHOD(bool, SetSoundMode, (unsigned int), (override));
    MOCK_METHOD(bool, SetOutputMode, (unsigned int), (override));
    MOCK_METHOD(bool, SetVolume, (double), (override));
    MOCK_METHOD(bool, SetVolumeTable, ((const std::map<unsigned int, double>&)), (override));
    MOCK_METHOD(bool, OnVolumeChanged, (const double&), (override));
    MOCK_METHOD(double, GetVolume, (), (override));
    MOCK_METHOD(bool, SetOrientation, (int), (override));
    MOCK_METHOD(bool, SetEnable, (bool), (override));
    MOCK_METHOD(bool, GetEnable, (), (override));
    MOCK_METHOD(bool, SetBypass, (bool), (override));
    MOCK_METHOD(bool, GetBypass, (), (override));
    MOCK_METHOD(bool, SetParametersArray, ((const std::map<unsigned int, double>&), bool),
                (override));
    MOCK_METHOD(bool, SetParametersArrayFromTuning, ((const std::map<unsigned int, double>&), bool),
                (override));
    MOCK_METHOD(bool, SetParameter, (unsigned int, double), (override));
    MOCK_METHOD(bool, SetParameterFromTuning, (unsigned int, double), (override));
    MOCK_METHOD(bool, GetParameter, (unsigned int, double&), (override));
    MOCK_METHOD(bool, GetParametersArray,
                (const std::vector<unsigned int>&, std::vector<unsigned int>&,
                 std::vector<double>&),
                (override));
    MOCK_METHOD(bool, GetParametersArray, ((std::map<unsigned int, double>&)), (override));
    MOCK_METHOD(bool, GetMeters,
                ((const std::map<uint32_t, CMeterInfo>&), (std::map<uint32_t, CMeterValue>&)),
                (override));
    MOCK_METHOD(bool, SetChunk, (unsigned int, const std::vector<char>&), (override));
    MOCK_METHOD(bool, SetChunkFromTuning, (unsigned int, const std::vector<char>&), (override));
    MOCK_METHOD(bool, SetChunkFromTuningNoResponse, (unsigned int, const std::vector<char>&),
                (override));
    MOCK_METHOD(bool, GetChunk, (unsigned int, std::vector<char>&), (override));
    MOCK_METHOD(bool, SetFullPresetFromTuning, (const TesselTuning::FullPreset&), (override));
    MOCK_METHOD(bool, GetLinkLawEntries, (std::vector<LinkLawEntry>&), (override));
    MOCK_METHOD(bool, SetLinkLawsValue, (unsigned int, double), (override));
    MOCK_METHOD(void, RegisterVolumeChangedListener,
                (const std::shared_ptr<IVolumeTableHelper::VolumeChangedListener>&), (override));
    MOCK_METHOD(void, UnregisterVolumeChangedListener, (), (override));
    MOCK_METHOD(bool, WaitForFlush, (), (override));
    MOCK_METHOD(bool, Flush, (), (override));
    MOCK_METHOD(bool, FlushAllSettingsToDsp, (), (override));
    MOCK_METHOD(bool, GetDspVersion, (std::string&), (override));
    MOCK_METHOD(bool, CreateTuningData, (), (override));
    MOCK_METHOD(bool, ClearTuningData, (), (override));
    MOCK_METHOD(void, RegisterParametersAndChunksChangedListener,
                (const std::shared_ptr<IParametersAndChunksChangedListener>&), (override));
    MOCK_METHOD(bool, IsTuningMode, (), (override));
    MOCK_METHOD(bool, StartTuningMode, (bool), (override));
    MOCK_METHOD(bool, OnDspWakeUp, (), (override));
    MOCK_METHOD(bool, SetControl, (unsigned int, const std::vector<char>&), (override));
    MOCK_METHOD(bool, SetCurrentPreset, (), (override));
    MOCK_METHOD(void, Dump, (), (const, override));
    MOCK_METHOD(std::string, GetDescriptionString, (), (const, override));
    MOCK_METHOD(SubtypeMasks, GetOrientationSubtype, (int), (override));
    MOCK_METHOD(SubtypeMasks, GetSubtypeMasks, (), (override));
    MOCK_METHOD(void, ApplySubtypeMasks, (), (override));
    MOCK_METHOD(bool, HasPreset, (unsigned int, unsigned int), (override));
    MOCK_METHOD(bool, GetPresetName, (unsigned int, unsigned int, std::string&), (override));
    MOCK_METHOD(void, UpdatePresetHandle, (unsigned int, unsigned int), (override));
    MOCK_METHOD(bool, UpdateVolumeLinkLaw, (double), (override));
    MOCK_METHOD(bool, ApplyOutputAndSoundMode, (unsigned int, unsigned int), (override));
    MOCK_METHOD(bool, SendEnable, (bool), (override));
    MOCK_METHOD(bool, SendLrSwap, (bool), (override));
    MOCK_METHOD(bool, SendBypass, (bool), (override));
    MOCK_METHOD(bool, SendSystemVolume, (float), (override));
    MOCK_METHOD(bool, SetParametersArrayCommand, ((const std::map<unsigned int, double>&), bool),
                (override));
    MOCK_METHOD(bool, SetParametersArrayCommandImpl,
                ((const std::map<unsigned int, double>&), bool), (override));
    MOCK_METHOD(void, NotifyVolumeChanged, (double), (override));
    MOCK_METHOD(void, NotifyParametersAndChunksChanged,
                ((const std::map<unsigned int, double>&),
                 (const std::map<unsigned int, std::vector<char>>&)),
                (override));
    MOCK_METHOD(bool, SetLinkLawsValueImpl, (unsigned int, double), (override));
    MOCK_METHOD(void, ReapplyLinkLawsValues, (), (override));
};

class MockPresetSet : public IPresetSet {
  public:
    MOCK_METHOD(void, SetPresets, (const PresetMap&, bool, const PresetMap&, bool), (override));
    MOCK_METHOD(void, SetEnabledSubtypeMasks, ((const std::map<OmSm, SubtypeMasks>&)), (override));
    MOCK_METHOD(ConstPresetPtrSet, GetSystemPresets, (), (const, override));
    MOCK_METHOD(PresetPtrSet, GetUserPresets, (), (const, override));
    MOCK_METHOD(std::shared_ptr<const IPreset>, GetSystemPreset,
                (unsigned int, unsigned int, unsigned int), (const, override));
    MOCK_METHOD(std::shared_ptr<IPreset>, GetUserPreset, (unsigned int, unsigned int, unsigned int),
                (const, override));
    MOCK_METHOD(bool, SetParameter, (unsigned int, double, int, int, SubtypeMasks, bool),
                (override));
    MOCK_METHOD(bool, SetParameterArray,
                (const std::vector<unsigned int>&, const std::vector<double>&, int, int,
                 SubtypeMasks, bool),
                (override));
    MOCK_METHOD(bool, SetParameterArray,
                ((const std::map<unsigned int, double>&), int, int, SubtypeMasks, bool),
                (override));
    MOCK_METHOD(bool, SetChunk, (unsigned int, const std::vector<char>&, int, int, SubtypeMasks),
                (override));
    MOCK_METHOD(std::shared_ptr<IPresetHandle>, RequestPresetHandle, (unsigned int, unsigned int),
                (override));
    MOCK_METHOD(bool, ClearParameter, (unsigned int, int, int, SubtypeMasks, bool), (override));
    MOCK_METHOD(bool, ClearParameterArray,
                (const std::vector<unsigned int>&, int, int, SubtypeMasks, bool), (override));
    MOCK_METHOD(void, ClearUserPresets, (), (override));
    MOCK_METHOD(bool, IsSupported, (unsigned int, unsigned int), (const, override));
    MOCK_METHOD(bool, IsDefaultSoundMode, (unsigned int, unsigned int), (const, override));
    MOCK_METHOD(bool, Validate, (), (override));
    MOCK_METHOD(void, Dump, (), (const, override));
    MOCK_METHOD(void, Dump, (unsigned int, unsigned int), (const, override));
    MOCK_METHOD(SubtypeMasks, GetSupportedSubtypeMasks, (unsigned int, unsigned int),
                (const, override));
    MOCK_METHOD((std::map<OmSm, SubtypeMasks>), GetSupportedSubtypeMasks, (), (const, override));
    MOCK_METHOD((std::map<OmSm, SubtypeMasks>), GetEnabledSubtypeMasks, (), (const, override));
    MOCK_METHOD(SubtypeMasks, GetEnabledSubtypeMasks, (unsigned int, unsigned int),
                (const, override));
    MOCK_METHOD(std::set<unsigned int>, GetOutputModes, (), (const, override));
    MOCK_METHOD(std::set<unsigned int>, GetSoundModes, (), (const, override));
    MOCK_METHOD(std::set<OmSm>, GetOmSms, (), (const, override));
    MOCK_METHOD(bool, SetSubtypeMasks, (int, int, SubtypeMasks), (override));
    MOCK_METHOD(bool, SetSubtypeMasksEx, (int, int, SubtypeMasks, SubtypeMasks), (override));
    MOCK_METHOD(bool, GetDefaultParametersArray,
                (const std::vector<unsigned int>&, (std::map<unsigned int, double>&), unsigned int,
                 unsigned int, SubtypeMasks, bool, bool),
                (const, override));
    MOCK_METHOD(bool, IsPresetsLoaded, (), (const, override));
    MOCK_METHOD(void, SetTags, ((const std::map<unsigned int, std::string>&)), (override));
    MOCK_METHOD((std::map<unsigned int, std::string>), GetTags, (), (const, override));
};

class MockPresetHandle : public IPresetHandle {
  public:
    MOCK_METHOD(uint32_t, GetOutputMode, (), (const, override));
    MOCK_METHOD(uint32_t, GetSoundMode, (), (const, override));
    MOCK_METHOD(bool, GetParameter, (unsigned int, double&), (override));
    MOCK_METHOD(bool, GetParameterArray,
                (const std::vector<unsigned int>&, std::vector<double>&, bool), (override));
    MOCK_METHOD(bool, GetAllParameters, (std::vector<unsigned int>&, std::vector<double>&),
                (override));
    MOCK_METHOD((std::map<unsigned int, double>), GetAllParameters, (), (override));
    MOCK_METHOD((std::map<unsigned int, double>), GetPresetParameters, (), (override));
    MOCK_METHOD(uint32_t, GetParameterCount, (), (override));
    MOCK_METHOD(bool, HasParameter, (unsigned int), (override));
    MOCK_METHOD(bool, SetSubtypeMasks, (SubtypeMasks), (override));
    MOCK_METHOD(bool, SetSubtypeMasksEx, (SubtypeMasks, SubtypeMasks), (override));
    MOCK_METHOD(SubtypeMasks, GetSubtypeMasks, (), (const, override));
    MOCK_METHOD(SubtypeMasks, GetSupportedSubtypeMasks, (), (const, override));
    MOCK_METHOD(bool, GetChunk, (int, std::vector<char>&), (override));
    MOCK_METHOD(void, Dump, (), (override));
    MOCK_METHOD(void, NotifyChanged, (SubtypeMasks), (override));
    MOCK_METHOD(void, SetListener, (IPresetHandleListener*), (override));
    MOCK_METHOD((std::map<unsigned int, unsigned int>), GetLinkLawSourceToMasterMap, (),
                (override));
    MOCK_METHOD(bool, SetLinkLawValue, (unsigned int, double), (override));
    MOCK_METHOD(bool, ClearLinkLawSource, (unsigned int), (override));
    MOCK_METHOD((std::map<unsigned int, double>), GetLinkLawSources, (), (override));
    MOCK_METHOD(bool, IsLinkLawSimulation, (), (override));
    MOCK_METHOD(std::vector<LinkLawEntry>, GetLinkLawEntries, (), (override));
    MOCK_METHOD(void, SetSuperPreset, (const std::shared_ptr<SuperPreset>&), (override));
};

class MockVolumePolicy : public IVolumePolicy {
  public:
    MOCK_METHOD(SubTypeMask, GetSubtypeMaskForVolume, (const std::string&, double),
                (const, override));
    MOCK_METHOD(double, SelectVolumeFromTable, (const VolumeTable&), (const, override));
    MOCK_METHOD(float, GetDefaultVolume, (), (const, override));
};

class MockVolumeTableHelper : public IVolumeTableHelper {
  public:
    MOCK_METHOD(void, SetListener, (VolumeChangedListener*), (override));
    MOCK_METHOD(void, ClearListener, (), (override));
    MOCK_METHOD(bool, SetVolumeTable, (const VolumeTable&), (override));
    MOCK_METHOD(ChangeMap, CompareTables, (const VolumeTable&, const VolumeTable&),
                (const, override));
};

class MockMasterValueConverter : public IMasterValueConverter {
  public:
    MOCK_METHOD(bool, Convert, (float, float&), (override));
};

class MockDspBufferSender : public IDspBufferSender {
  public:
    MOCK_METHOD(bool, Send, (const std::shared_ptr<CommonSettings>&, const std::vector<char>&),
                (override));
    MOCK_METHOD(bool, SendAndReceive,
                (const std::shared_ptr<CommonSettings>&, const std::vector<char>&,
                 std::vector<char>&),
                (override));
    MOCK_METHOD(void, DumpBufferToDsp, (const std::vector<char>&), (override));
};

/// A generator that offers every interface that the base control handler uses.
class MockGenerator : public IControlBufferGenerator,
                      public ISetEnableBufferGenerator,
                      public ISetBypassBufferGenerator,
                      public ISetLrSwapBufferGenerator,
                      public ISetSystemVolumeBufferGenerator,
                      public ISetParameterArrayBufferGenerator,
                      public IGetMetersBufferGenerator,
                      public IGetVersionBufferGenerator {
  public:
    MOCK_METHOD(status_t, MakeSetEnableBuffer, (std::vector<char>&, bool), (override));
    MOCK_METHOD(status_t, MakeSetBypassBuffer, (std::vector<char>&, bool), (override));
    MOCK_METHOD(status_t, MakeSetLrSwapBuffer, (std::vector<char>&, bool), (override));
    MOCK_METHOD(status_t, MakeSetSystemVolumeBuffer, (std::vector<char>&, bool), (override));
    MOCK_METHOD(status_t, MakeSetParameterArrayBuffer,
                (std::vector<std::vector<char>>&, (const std::map<unsigned int, double>&), bool),
                (override));
    MOCK_METHOD(status_t, MakeGetMetersBuffer,
                (std::vector<char>&, (const std::map<uint32_t, CMeterInfo>&)), (override));
    MOCK_METHOD(status_t, MakeGetVersionBuffer, (std::vector<char>&), (override));
};

/// A generator without any control interface.
class BareGenerator : public IControlBufferGenerator {};

class MockReplyParser : public IReplyBufferParser,
                        public IReplyMetersBufferParser,
                        public IReplyVersionBufferParser {
  public:
    MOCK_METHOD(status_t, ParseReplyMetersBuffer,
                (const std::vector<char>&, (const std::map<uint32_t, CMeterInfo>&),
                 (std::map<uint32_t, CMeterValue>&)),
                (override));
    MOCK_METHOD(status_t, ParseReplyVersionBuffer, (const std::vector<char>&, std::string&),
                (override));
};

/// A control description with the given presets and empty settings.
inline std::shared_ptr<ControlDescription> MakeDescription(
    const std::vector<std::shared_ptr<PresetDescription>>& presets = {}) {
    return std::make_shared<ControlDescription>("control", 0, std::vector<int32_t>{}, presets,
                                                std::make_shared<CommonSettings>(), "");
}

}  // namespace test
}  // namespace TesselFX
