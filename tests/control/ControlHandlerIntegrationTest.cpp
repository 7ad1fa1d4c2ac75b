#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "../e2e/BringupFiles.h"
#include "LogCapture.h"
#include "config/CIniFile.h"
#include "config/Hifi3zHalControlConfig.h"
#include "config/OrientationPolicy.h"
#include "config/VolumePolicy.h"
#include "config/VolumeTableHelper.h"
#include "control/ControlHandler.h"
#include "control/IDspBufferSender.h"
#include "dsp/ISetParameterArrayBufferGenerator.h"
#include "dsp/ISetSystemVolumeBufferGenerator.h"
#include "preset/PresetFactory.h"
#include "preset/PresetHandleFactory.h"
#include "preset/PresetSetFactory.h"
#include "preset/ZpsBufferReader.h"

namespace TesselFX {
namespace test {
namespace {

using Buffers = std::vector<std::vector<char>>;
using Parameters = std::map<unsigned int, double>;

char B(int value) { return static_cast<char>(value); }

// Music is (1, 0) and Movie (1, 2). Music's volume table selects subtype 1 (mask 0x2) up to
// -20 dB, subtype 3 (0x8) up to 0 dB and nothing above; its orientation table selects
// subtype 2 (0x4) at 90 and 270 degrees, default 90. Movie selects subtype 1 up to 0 dB and
// has no orientation table.
const char kConfig[] =
    "[HAL_SUPPORTED_SAMPLE_RATES]\n"
    "rates=48000\n"
    "[HAL_VOLUME_SUBTYPES]\n"
    "musicVol=-20:1,0:3\n"
    "movieVol=0:1\n"
    "[HAL_ORIENTATION_SUBTYPES]\n"
    "musicOrient=90:2,270:2,90:DEFAULT_ANGLE\n"
    "[HAL_VOLUME_PRIORITY]\n"
    "AUDIO_STREAM_MUSIC=VOLUME_PRIORITY_HIGH\n"
    "AUDIO_STREAM_RING=VOLUME_PRIORITY_LOW\n"
    "[HAL_SUPPORTED_PRESETS]\n"
    "Music=OM:1,SM:0,ST:1|2|3,VST:musicVol,OST:musicOrient\n"
    "Movie=OM:1,SM:2,ST:1,VST:movieVol\n"
    "[HAL_SUPPORTED_CONTROLS]\n"
    "Speaker=DEV:2,SR:rates,PRESET:Music|Movie,CONTROL_TYPE:Copp\n";

/// A preset record of one letter's name, without remarks.
bringup_test::PresetRecord Record(uint32_t sm, uint32_t mask, uint32_t priority, const char* name,
                                  std::map<unsigned, double> parameters) {
    bringup_test::PresetRecord record;
    record.outputMode = 1;
    record.soundMode = sm;
    record.subtypeMask = mask;
    record.priority = priority;
    record.flags = mask == 0 && sm == 0 ? 1 : 0;
    record.name = name;
    record.parameters = std::move(parameters);
    return record;
}

// System file, 273 bytes: one Presets section with six presets (the base of Music has flags 1).
// The sub preset of mask 0x4 comes before that of mask 0x2: the order is by priority.
std::vector<char> SystemFile() {
    const std::string bytes = bringup_test::PresetFile(
        {Record(0, 0, 0, "M", {{10, 1.0}, {11, 2.0}, {12, 3.0}}),
         Record(0, 2, 2, "Q", {{11, -6.0}, {20, 0.5}}),
         Record(0, 4, 1, "P", {{11, 4.0}, {12, -3.0}, {21, 1.5}}),
         Record(0, 8, 3, "L", {{20, 8.0}}), Record(2, 0, 0, "V", {{10, 5.0}, {13, 7.0}}),
         Record(2, 2, 1, "W", {{13, 9.0}})});
    return std::vector<char>(bytes.begin(), bytes.end());
}

// User file, 92 bytes: one UserModes section with no enabled masks and two user twins:
//   (1,0,0) "M" priority 0: 10 = 1.25, 11 = 2.5
//   (1,0,4) "P" priority 1: 21 = 2.5
// Parameter 11 of the user base lies under the system sub preset 0x4 when that is enabled.
std::vector<char> UserFile() {
    return {
        'B', 'P', 'B', 'Z', 0x5C, 0, 0, 0,   // magic, total size 92
        0x50, 0, 0, 0, 5, 0, 0, 0, 0, 2, 0,  // section size 80, id 5, reserved, 0 tags, 2 presets
        // (1,0,0): 41 bytes, 2 items, priority 0, flags 1.
        0x29, 0, 1, 0, 0, 0, 0, 0, 2, 0, 0, 0, 1, 0, 1, 'M', 0,  //
        10, 0, 0, 8, 0, 0, 0, 0, 0, 0, 0, B(0xF4), 0x3F,         // 10 = 1.25
        11, 0, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0x04, 0x40,            // 11 = 2.5
        // (1,0,4): 28 bytes, 1 item, priority 1.
        0x1C, 0, 1, 0, 4, 0, 0, 0, 1, 0, 1, 0, 0, 0, 1, 'P', 0,  //
        21, 0, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0x04, 0x40,            // 21 = 2.5
    };
}

// The full merges of Music by enabled masks.
const Parameters kMusic0x6 = {{10, 1.25}, {11, -6.0}, {12, -3.0}, {20, 0.5}, {21, 2.5}};
const Parameters kMusic0xC = {{10, 1.25}, {11, 4.0}, {12, -3.0}, {20, 8.0}, {21, 2.5}};
const Parameters kMusic0x4 = {{10, 1.25}, {11, 4.0}, {12, -3.0}, {21, 2.5}};
const Parameters kMusic0x2 = {{10, 1.25}, {11, -6.0}, {12, 3.0}, {20, 0.5}};
const Parameters kMusic0x8 = {{10, 1.25}, {11, 2.5}, {12, 3.0}, {20, 8.0}};

const std::vector<char> kVolumeBuffer{'V'};
const std::vector<char> kPresetBuffer{'P'};

/// Records every buffer it is given and answers with result.
struct RecordingSender : IDspBufferSender {
    bool Send(const std::shared_ptr<CommonSettings>&, const std::vector<char>& buffer) override {
        sent.push_back(buffer);
        return result;
    }
    bool SendAndReceive(const std::shared_ptr<CommonSettings>&, const std::vector<char>&,
                        std::vector<char>&) override {
        return false;
    }
    void DumpBufferToDsp(const std::vector<char>&) override {}
    Buffers sent;
    bool result = true;
};

/// Answers 'V' for the system volume and 'P' for a parameter set, whose map it records.
struct RecordingGenerator : IControlBufferGenerator,
                            ISetSystemVolumeBufferGenerator,
                            ISetParameterArrayBufferGenerator {
    status_t MakeSetSystemVolumeBuffer(std::vector<char>& out, bool) override {
        out = kVolumeBuffer;
        return kStatusOk;
    }
    status_t MakeSetParameterArrayBuffer(Buffers& out, const Parameters& parameters,
                                         bool) override {
        generated.push_back(parameters);
        out.assign(1, kPresetBuffer);
        return kStatusOk;
    }
    std::vector<Parameters> generated;
};

/// A control handler over the configuration and presets above, with the real policies, the
/// real volume table helper and a real preset set.
class ControlHandlerIntegrationTest : public ::testing::Test {
  protected:
    void SetUp() override {
        LogCapture capture;
        auto ini = std::make_shared<CIniFile>();
        ini->LoadMemory(kConfig);
        Hifi3zHalControlConfig config;
        config.ParseConfig(ini);
        ASSERT_TRUE(capture.ErrorTexts().empty());
        ASSERT_EQ(config.GetControls().size(), 1u);

        const std::vector<char> system = SystemFile();
        const std::vector<char> user = UserFile();
        ASSERT_EQ(system.size(), 273u);
        ASSERT_EQ(user.size(), 92u);
        ZpsBufferReader reader(std::make_shared<PresetFactory>(),
                               std::make_shared<PresetSetFactory>(),
                               std::make_shared<PresetHandleFactory>());
        ASSERT_TRUE(reader.ParseBuffer(system, false));
        ASSERT_TRUE(reader.ParseBuffer(user, true));
        auto presetSet = reader.Read();
        ASSERT_NE(presetSet, nullptr);

        auto volumePolicy = std::make_shared<VolumePolicy>(config.GetPresetVolumeSubtypes(),
                                                           config.GetVolumePriorities());
        auto orientationPolicy = std::make_shared<OrientationPolicy>(
            config.GetPresetOrientationSubtypes(), config.GetPresetDefaultAngles());

        handler = std::make_unique<ControlHandler>(
            sender, config.GetControls().begin()->second, presetSet, volumePolicy,
            std::make_shared<VolumeTableHelper>(volumePolicy), orientationPolicy, generator,
            nullptr, nullptr);
    }

    /// What went to the sender and to the parameter-array generator since the last call.
    struct Traffic {
        Buffers sent;
        std::vector<Parameters> generated;
    };
    Traffic Take() {
        Traffic traffic{sender->sent, generator->generated};
        sender->sent.clear();
        generator->generated.clear();
        return traffic;
    }

    Parameters Current() {
        Parameters parameters;
        EXPECT_TRUE(handler->GetParametersArray(parameters));
        return parameters;
    }

    std::shared_ptr<RecordingSender> sender = std::make_shared<RecordingSender>();
    std::shared_ptr<RecordingGenerator> generator = std::make_shared<RecordingGenerator>();
    std::unique_ptr<ControlHandler> handler;
};

TEST_F(ControlHandlerIntegrationTest, VolumeAndOrientationSwitchSubPresetsOnlyOnMaskChanges) {
    ASSERT_EQ(20.0 * std::log10(0.1), -20.0);
    LogCapture capture;
    const Buffers volumeOnly = {kVolumeBuffer};
    const Buffers volumeAndPreset = {kVolumeBuffer, kPresetBuffer};
    const auto expectTraffic = [this](double volume, const Buffers& buffers,
                                      const std::vector<Parameters>& parameters) {
        SCOPED_TRACE(volume);
        const Traffic traffic = Take();
        EXPECT_EQ(traffic.sent, buffers);
        EXPECT_EQ(traffic.generated, parameters);
    };

    // 0 dB lies on the top threshold of subtype 3, which is enabled already.
    ASSERT_TRUE(handler->SetVolume(1.0));
    expectTraffic(1.0, volumeOnly, {});
    // Exactly -20 dB belongs to subtype 1.
    ASSERT_TRUE(handler->SetVolume(0.1));
    expectTraffic(0.1, volumeAndPreset, {kMusic0x6});
    EXPECT_EQ(handler->GetSubtypeMasks(), 0x6u);
    ASSERT_TRUE(handler->SetVolume(0.05));  // -26 dB
    expectTraffic(0.05, volumeOnly, {});
    ASSERT_TRUE(handler->SetVolume(0.11));  // -19.2 dB
    expectTraffic(0.11, volumeAndPreset, {kMusic0xC});
    ASSERT_TRUE(handler->SetVolume(2.0));  // +6 dB: above every threshold
    expectTraffic(2.0, volumeAndPreset, {kMusic0x4});
    ASSERT_TRUE(handler->SetVolume(0.0));  // minus infinity: the lowest range
    expectTraffic(0.0, volumeAndPreset, {kMusic0x6});
    EXPECT_EQ(capture.Count("CoppHandle::SetVolume Subtype changed for new volume, applying new "
                            "preset."),
              4u);

    // 270 degrees selects the same subtype as 90; 0 and 45 degrees are not in the table.
    const std::string orientationChanged =
        "ControlHandler::SetOrientation Subtype changed for new orientation, applying new "
        "preset.";
    EXPECT_TRUE(handler->SetOrientation(270));
    expectTraffic(270, {}, {});
    EXPECT_TRUE(handler->SetOrientation(0));
    expectTraffic(0, {kPresetBuffer}, {kMusic0x2});
    EXPECT_TRUE(handler->SetOrientation(45));
    expectTraffic(45, {}, {});
    EXPECT_TRUE(handler->SetOrientation(90));
    expectTraffic(90, {kPresetBuffer}, {kMusic0x6});
    EXPECT_EQ(capture.Count(orientationChanged), 2u);

    // Through the volume table: music (high priority) wins over ring.
    EXPECT_TRUE(handler->SetVolumeTable({{2, 0.9}, {3, 0.1}}));
    expectTraffic(0.1, volumeOnly, {});
    EXPECT_EQ(handler->GetVolume(), 0.1);
    EXPECT_TRUE(handler->SetVolumeTable({{2, 0.9}, {3, 1.0}}));
    expectTraffic(1.0, volumeAndPreset, {kMusic0xC});
    // A stream going to 0.0 alone does not move the selection.
    EXPECT_TRUE(handler->SetVolumeTable({{2, 0.9}, {3, 0.0}}));
    expectTraffic(1.0, {}, {});
    EXPECT_EQ(handler->GetVolume(), 1.0);
    EXPECT_EQ(Current(), kMusic0xC);
    EXPECT_TRUE(capture.ErrorTexts().empty());

    // A failed send is not reported: the state moved and the next full send carries it.
    sender->result = false;
    EXPECT_TRUE(handler->SetOrientation(0));
    expectTraffic(0, {kPresetBuffer}, {kMusic0x8});
    EXPECT_EQ(capture.ErrorTexts(), std::vector<std::string>{"SendBufferToDsp fail"});
}

}  // namespace
}  // namespace test
}  // namespace TesselFX
