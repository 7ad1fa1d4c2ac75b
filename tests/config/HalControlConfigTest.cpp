#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "config/Hifi3zHalControlConfig.h"
#include "config/OrientationPolicy.h"
#include "config/VolumePolicy.h"

namespace TesselFX {
namespace {

using test::LogCapture;
using Strings = std::vector<std::string>;

const char kWorkedFile[] =
    "[HAL_SUPPORTED_SAMPLE_RATES]\n"
    "speakerRates=44100|48000\n"
    "[HAL_VOLUME_SUBTYPES]\n"
    "spkVol=-30:1,-10:2,0:NULL\n"
    "[HAL_ORIENTATION_SUBTYPES]\n"
    "spkOrient=0:3,90:4|5,0:DEFAULT_ANGLE\n"
    "[HAL_VOLUME_PRIORITY]\n"
    "AUDIO_STREAM_MUSIC=VOLUME_PRIORITY_HIGH\n"
    "AUDIO_STREAM_RING=VOLUME_PRIORITY_LOW\n"
    "[HAL_SUPPORTED_PRESETS]\n"
    "Music=OM:1,SM:2,ST:0|3,VST:spkVol,OST:spkOrient\n"
    "[HAL_SUPPORTED_CONTROLS]\n"
    "Speaker=DEV:2,SR:speakerRates,PRESET:Music|Movie,CONTROL_TYPE:Copp,ROUTE:AUTO\n"
    "[HAL_SUPPORTED_FEATURES]\n"
    "DumpBufferToDsp=1\n"
    "[COEFS_CONVERTER_SETTING]\n"
    "AudioFormatChannels=2\n"
    "DspKitPath64=/vendor/lib64/libDspKit_HiFi3z.so\n"
    "[CUSTOM_ACTION_1]\n"
    "rule1=PRIORITY:1,NUMBERS:1|2:7,PRESET:Music\n";

std::shared_ptr<CIniFile> Ini(const std::string& text) {
    auto ini = std::make_shared<CIniFile>();
    ini->LoadMemory(text);
    return ini;
}

/// Parses text into a fresh configuration.
std::unique_ptr<Hifi3zHalControlConfig> Parse(const std::string& text) {
    auto config = std::make_unique<Hifi3zHalControlConfig>();
    config->ParseConfig(Ini(text));
    return config;
}

TEST(HalControlConfig, WorkedFileFillsEveryTable) {
    LogCapture capture;
    auto config = Parse(kWorkedFile);
    EXPECT_EQ(capture.ErrorTexts(), Strings{"could not find Music|Movie for PRESET"});

    using Rates = std::map<std::string, std::vector<int32_t>>;
    EXPECT_EQ(config->GetSampleRates(), (Rates{{"speakerRates", {44100, 48000}}}));
    const VolumeSubtypeTable volume = {{-30.0, 0x2}, {-10.0, 0x4}, {0.0, 0x0}};
    EXPECT_EQ(config->GetVolumeSubtypes(), (VolumeSubtypeTables{{"spkVol", volume}}));
    EXPECT_EQ(config->GetPresetVolumeSubtypes(), (VolumeSubtypeTables{{"Music", volume}}));
    const OrientationSubtypeTable orientation = {{0, 0x8}, {90, 0x30}};
    EXPECT_EQ(config->GetOrientationSubtypes(),
              (OrientationSubtypeTables{{"spkOrient", orientation}}));
    EXPECT_EQ(config->GetPresetOrientationSubtypes(),
              (OrientationSubtypeTables{{"Music", orientation}}));
    EXPECT_EQ(config->GetDefaultAngles(), (DefaultAngles{{"spkOrient", 0}}));
    EXPECT_EQ(config->GetPresetDefaultAngles(), (DefaultAngles{{"Music", 0}}));
    EXPECT_EQ(config->GetVolumePriorities(), (std::map<int32_t, int32_t>{{2, 1}, {3, 3}}));
    EXPECT_EQ(config->GetFeatures(), std::set<std::string>{"DumpBufferToDsp"});

    const auto presets = config->GetPresets();
    ASSERT_EQ(presets.size(), 1u);
    const auto& music = presets.at("Music");
    EXPECT_EQ(music->GetOutputMode(), 1u);
    EXPECT_EQ(music->GetSoundMode(), 2u);
    EXPECT_EQ(music->GetSubtypeMask(), 0x9u);
    EXPECT_EQ(music->GetVolumeSubtypesName(), "spkVol");
    EXPECT_EQ(music->GetOrientationSubtypesName(), "spkOrient");

    const auto controls = config->GetControls();
    ASSERT_EQ(controls.size(), 1u);
    const auto& speaker = controls.at("Speaker");
    EXPECT_EQ(speaker->GetDevice(), 2u);
    EXPECT_EQ(speaker->GetSampleRates(), (std::vector<int32_t>{44100, 48000}));
    ASSERT_EQ(speaker->GetPresets().size(), 1u);
    EXPECT_EQ(speaker->GetPresets()[0], music);
    EXPECT_EQ(speaker->GetControlType(), "Copp");
    int32_t dev = 0;
    EXPECT_TRUE(speaker->GetSettings()->GetInt("DEV", dev));
    EXPECT_EQ(dev, 2);
    EXPECT_EQ(speaker->GetSettings()->GetValue("ROUTE")->GetValueType(),
              CommonSettings::kStringValue);
    EXPECT_EQ(speaker->GetSettings()->ToString(), "DEV=2;ROUTE=AUTO;");

    // Its rule is rule b of CustomActionSections.
    EXPECT_EQ(config->GetCustomActions().size(), 1u);

    EXPECT_EQ(config->GetAudioFormatType(), 0);
    EXPECT_EQ(config->GetAudioFormatChannels(), 2);
    EXPECT_EQ(config->GetAudioFormatSampleRate(), 48000);
    EXPECT_EQ(config->GetAudioFormatBitsPerSample(), 32);
    EXPECT_EQ(config->GetAudioFormatSampleSize(), 0);
    EXPECT_EQ(config->GetAudioFormatIncrement(), 2);
    EXPECT_EQ(config->GetDspKitPath64(), "/vendor/lib64/libDspKit_HiFi3z.so");
}

TEST(HalControlConfig, SectionsRunInDependencyOrderAndKeysInCaseInsensitiveOrder) {
    LogCapture capture;
    auto config = Parse(
        "[CUSTOM_ACTION_2]\nr=PRIORITY:0,PRESET:b\n"
        "[hal_supported_features]\nF=1\n"
        "[HAL_SUPPORTED_CONTROLS]\nctl=DEV:1,SR:r,PRESET:b|A\n"
        "[HAL_SUPPORTED_PRESETS]\nb=OM:2,SM:2\nA=OM:1,SM:1\n"
        "[HAL_VOLUME_PRIORITY]\nAUDIO_STREAM_TTS=VOLUME_PRIORITY_MID\n"
        "[HAL_ORIENTATION_SUBTYPES]\no=0:1\n"
        "[HAL_VOLUME_SUBTYPES]\nv=0:1\n"
        "[HAL_SUPPORTED_SAMPLE_RATES]\nr=8000\nr=16000\n"
        "[COEFS_CONVERTER_SETTING]\nAudioFormatType=5\n");
    Strings parses;
    for (const auto& text : capture.Texts(1)) {
        if (text.find("Parse ") != std::string::npos) parses.push_back(text);
    }
    const Strings expected = {
        "SupportedSampleRatesParser::Parse r, 16000",
        "VolumeSubtypesParser::Parse v, 0:1",
        "OrientationSubtypesParser::Parse o, 0:1",
        "StreamTypeToVolumePriorityParser::Parse AUDIO_STREAM_TTS, VOLUME_PRIORITY_MID",
        "PresetParser::Parse A, OM:1,SM:1",
        "PresetParser::Parse b, OM:2,SM:2",
        "ControlDescriptionParser::Parse ctl, DEV:1,SR:r,PRESET:b|A",
        "SupportedFeaturesParser::Parse F, 1",
        "SupportedCoefsConverterSettingParser::Parse AudioFormatType, 5",
    };
    EXPECT_EQ(parses, expected);
    EXPECT_TRUE(capture.ErrorTexts().empty());
    EXPECT_EQ(config->GetControls().at("ctl")->GetPresets().size(), 2u);
    EXPECT_EQ(config->GetControls().at("ctl")->GetPresets()[0]->GetName(), "b");
    EXPECT_EQ(config->GetSampleRates().at("r"), std::vector<int32_t>{16000});
    EXPECT_EQ(config->GetAudioFormatType(), 5);
    EXPECT_EQ(config->GetCustomActions().at(2)->GetAction({}).outputMode, 2u);
    EXPECT_TRUE(capture.Has(0, "AddRule id 2 priority 0 om 2 sm 2"));
}

TEST(HalControlConfig, ValuesLoseAllWhiteSpaceAndConverterSettingsAreRead) {
    auto config = Parse(
        "[HAL_SUPPORTED_SAMPLE_RATES]\n  speakerRates = 44100 | 48000 \n"
        "[COEFS_CONVERTER_SETTING]\n"
        "AudioFormatType=1\nAudioFormatChannels= 6\nAudioFormatSampleRate=96000\n"
        "AudioFormatBitsPerSample=16\naudioformatSampleSize=4\nAudioFormatIncrement=3x\n"
        "DspKitPath64 = /my dir/lib\tkit.so \r\n"
        "DspKitPath=/ignored.so\naudioformattype=9\n");
    EXPECT_EQ(config->GetSampleRates().at("speakerRates"), (std::vector<int32_t>{44100, 48000}));
    EXPECT_EQ(config->GetAudioFormatType(), 9);  // the INI merges keys of any case
    EXPECT_EQ(config->GetAudioFormatChannels(), 6);
    EXPECT_EQ(config->GetAudioFormatSampleRate(), 96000);
    EXPECT_EQ(config->GetAudioFormatBitsPerSample(), 16);
    EXPECT_EQ(config->GetAudioFormatSampleSize(), 0);  // the key table is case-sensitive
    EXPECT_EQ(config->GetAudioFormatIncrement(), 3);
    EXPECT_EQ(config->GetDspKitPath64(), "/mydir/libkit.so");

    // Only the INI's own blanks and tabs around a key are trimmed, so other white space stays
    // in the key name while every white space of the value goes.
    auto keys = Parse("[HAL_SUPPORTED_SAMPLE_RATES]\n\vr\v=\v1\v|\f2\n");
    EXPECT_EQ(keys->GetSampleRates().at("\vr\v"), (std::vector<int32_t>{1, 2}));

    auto defaults = Parse("[HAL_SUPPORTED_FEATURES]\nDumpBufferToDsp=2\nOther=1\n");
    EXPECT_EQ(defaults->GetAudioFormatChannels(), 2);
    EXPECT_EQ(defaults->GetAudioFormatSampleRate(), 48000);
    EXPECT_EQ(defaults->GetDspKitPath64(), "/vendor/lib64/libDspKit_HiFi3z.so");
    EXPECT_EQ(defaults->GetFeatures(), std::set<std::string>{"Other"});
    EXPECT_STREQ(Hifi3zHalControlConfig::kDefaultDspKitPath, "/vendor/lib/libDspKit_HiFi3z.so");

    HalControlConfig base;
    base.ParseConfig(nullptr);
    base.ParseConfig(Ini("[COEFS_CONVERTER_SETTING]\nAudioFormatType=x\n"));  // no such parser
    EXPECT_EQ(base.MakeLineParsers().size(), 7u);
    EXPECT_EQ(Hifi3zHalControlConfig().MakeLineParsers().back().first, "COEFS_CONVERTER_SETTING");
}

TEST(HalControlConfig, VolumeAndOrientationEntriesAreCaughtAndLogged) {
    LogCapture capture;
    auto config = Parse(
        "[HAL_VOLUME_SUBTYPES]\n"
        "a=-30:1:2,-10:2\n"
        "b=abc:1,5:33,6:null,7:NULL\n"
        "c=nan:1,inf:4,-inf:3,-30.00000001:5\n"
        "[HAL_ORIENTATION_SUBTYPES]\n"
        "d=45.9:1,-45.9:2|2,90:,x:1,180:\n"
        "e=90:DEFAULT_ANGLE\n"
        "f=1e10:1,nan:2,270:0|33|x,270:6,-2147483648.7:7\n");
    const Strings expected = {
        "Invalid string format: -30:1:2",
        "Exception: stof",
        "Invalid string format: abc:1",
        "Exception: stoul",
        "Invalid string format: 6:null",
        "Exception: stof",
        "Invalid string format: nan:1",
        "Invalid string format: 90:",
        "Exception: stod",
        "Invalid string format: x:1",
        "Invalid string format: 180:",
        "Exception: stod",
        "Invalid string format: 1e10:1",
        "Exception: stod",
        "Invalid string format: nan:2",
        "Exception: stoul",
        "Invalid string format: 270:0|33|x",
    };
    EXPECT_EQ(capture.ErrorTexts(), expected);
    EXPECT_EQ(capture.PositionLines(), expected.size());

    const auto volume = config->GetVolumeSubtypes();
    EXPECT_EQ(volume.at("a"), (VolumeSubtypeTable{{-10.0, 0x4}}));
    EXPECT_EQ(volume.at("b"), (VolumeSubtypeTable{{5.0, 0x2}, {7.0, 0x0}}));
    const double threshold = static_cast<double>(-30.00000001f);  // float precision
    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(volume.at("c"), (VolumeSubtypeTable{{-inf, 0x8}, {threshold, 0x20}, {inf, 0x10}}));
    EXPECT_TRUE(capture.Has(1, "VolumeSubtypesParser::ParseSubEntry 5.000000, 2"));

    const auto orientation = config->GetOrientationSubtypes();
    EXPECT_EQ(orientation.at("d"), (OrientationSubtypeTable{{-45, 0x4}, {45, 0x2}}));
    EXPECT_TRUE(orientation.at("e").empty());
    EXPECT_EQ(orientation.at("f"), (OrientationSubtypeTable{{-2147483647 - 1, 0x80}, {270, 0x40}}));
    EXPECT_EQ(config->GetDefaultAngles(), (DefaultAngles{{"d", 0}, {"e", 90}, {"f", 0}}));
    EXPECT_TRUE(capture.Has(1, "OrientationSubtypesParser::ParseSubEntry -45, 4"));
    EXPECT_TRUE(
        capture.Has(1, "OrientationSubtypesParser::ParseSubEntry default orientation angle 90"));
}

TEST(HalControlConfig, PresetLines) {
    LogCapture capture;
    auto config = Parse(
        "[HAL_VOLUME_SUBTYPES]\nv=0:1\n"
        "[HAL_ORIENTATION_SUBTYPES]\no=0:2,180:DEFAULT_ANGLE\n"
        "[HAL_SUPPORTED_PRESETS]\n"
        "a=OM:3,SM:4,ST:1|33|31,VST:v,OST:o\n"
        "b=SM:4\n"
        "c=OM:5,SM:6,VST:none,OST:none,ST:\n"
        "d=OM:-1,SM:7,OM:8\n"
        "e=\n"
        "[HAL_SUPPORTED_CONTROLS]\n"
        "ctl=DEV:0,SR:r,PRESET:b\n");
    // b is dropped silently, so only the control line complains.
    EXPECT_EQ(capture.ErrorTexts(),
              (Strings{"could not find r for SR", "could not find b for PRESET",
                       "parse ControlDescriptionParser fail for key ctl"}));
    const auto presets = config->GetPresets();
    ASSERT_EQ(presets.size(), 3u);
    EXPECT_EQ(presets.at("a")->GetSubtypeMask(), 0x80000002u);
    EXPECT_EQ(presets.at("a")->GetOutputMode(), 3u);
    EXPECT_EQ(presets.at("c")->GetSubtypeMask(), 0u);
    EXPECT_EQ(presets.at("c")->GetVolumeSubtypesName(), "none");
    EXPECT_EQ(presets.at("d")->GetOutputMode(), 8u);
    EXPECT_EQ(config->GetPresetVolumeSubtypes(), (VolumeSubtypeTables{{"a", {{0.0, 0x2}}}}));
    EXPECT_EQ(config->GetPresetOrientationSubtypes(),
              (OrientationSubtypeTables{{"a", {{0, 0x4}}}}));
    EXPECT_EQ(config->GetPresetDefaultAngles(), (DefaultAngles{{"a", 180}}));
    EXPECT_TRUE(capture.Has(1, "PresetParser::ParseSubEntry ST:1|33|31"));
    EXPECT_TRUE(capture.Has(1, "PresetParser::ParseSubtypes 1|33|31"));
    EXPECT_TRUE(capture.Has(1, "PresetParser::ParseOutputMode 3"));
    EXPECT_TRUE(capture.Has(1, "PresetParser::ParseSoundMode 4"));
    EXPECT_TRUE(capture.Has(1, "PresetParser::ParseVolumeSubtypes v"));
    EXPECT_TRUE(capture.Has(1, "PresetParser::ParseOrientationSubtypes o"));
    EXPECT_TRUE(config->GetControls().empty());
}

TEST(HalControlConfig, ControlLines) {
    LogCapture capture;
    auto config = Parse(
        "[HAL_SUPPORTED_SAMPLE_RATES]\nr=48000\n"
        "[HAL_SUPPORTED_PRESETS]\np=OM:1,SM:1\nq=OM:2,SM:2\n"
        "[HAL_SUPPORTED_CONTROLS]\n"
        "a=DEV:4294967295,SR:r,PRESET:p\n"
        "b=SR:r,PRESET:p\n"
        "c=DEV:x,SR:r,PRESET:p\n"
        "d=DEV:7,SR:nope,PRESET:p\n"
        "e=DEV:7,SR:r,PRESET:zz|q|yy,PRESET:p,XX:3,ROUTE,CONTROL_TYPE:T1,DEV:8\n"
        "f=DEV:7,SR:r\n");
    const Strings expected = {
        "parse ControlDescriptionParser fail for key a",
        "parse ControlDescriptionParser fail for key b",
        "parse x error for DEV",
        "parse ControlDescriptionParser fail for key c",
        "could not find nope for SR",
        "parse ControlDescriptionParser fail for key d",
        "could not find zz|q|yy for PRESET",
        "could not find zz|q|yy for PRESET",
        "parse ControlDescriptionParser fail for key f",
    };
    EXPECT_EQ(capture.ErrorTexts(), expected);
    EXPECT_EQ(capture.PositionLines(), expected.size());
    const auto controls = config->GetControls();
    ASSERT_EQ(controls.size(), 1u);
    const auto& e = controls.at("e");
    EXPECT_EQ(e->GetDevice(), 8u);
    ASSERT_EQ(e->GetPresets().size(), 2u);
    EXPECT_EQ(e->GetPresets()[0]->GetName(), "q");
    EXPECT_EQ(e->GetPresets()[1]->GetName(), "p");
    EXPECT_EQ(e->GetControlType(), "T1");
    EXPECT_EQ(e->GetSettings()->ToString(), "DEV=8;ROUTE=;XX=3;");
    EXPECT_TRUE(capture.Has(1, "parse ControlDescriptionParser OK for key e"));
}

TEST(HalControlConfig, CustomActionSections) {
    LogCapture capture;
    auto config = Parse(
        "[HAL_SUPPORTED_PRESETS]\nMusic=OM:1,SM:2\nMovie=OM:3,SM:4\n"
        "[CUSTOM_ACTION_01]\nr=PRIORITY:1,PRESET:Movie\n"
        "[CUSTOM_ACTION_1]\n"
        "a=PRIORITY:2,NUMBERS:1|2:7,PRESET:Movie\n"
        "b=PRIORITY:1,NUMBERS:1|2:7,PRESET:Music,IGNORED:x\n"
        "c=PRIORITY:3,PRESET:Nope\n"
        "d=PRIORITY:-1,PRESET:Music\n"
        "e=PRIORITY:-2,PRESET:Movie\n"
        "f=NUMBERS:5,PRESET:Music\n"
        "[custom_action_7]\nr=PRIORITY:1,PRESET:Music\n"
        "[CUSTOM_ACTION_9x]\nr=PRIORITY:4,NUMBERS:9::1,PRESET:Music\n");
    const Strings expected = {
        "Parse invalid value PRIORITY:3,PRESET:Nope audioDataPriority 3 audioDataOm -1 "
        "audioDataSm -1",
        "Parse invalid value PRIORITY:-1,PRESET:Music audioDataPriority -1 audioDataOm 1 "
        "audioDataSm 2",
        "Parse invalid value NUMBERS:5,PRESET:Music audioDataPriority -1 audioDataOm 1 "
        "audioDataSm 2",
    };
    EXPECT_EQ(capture.ErrorTexts(), expected);
    const auto actions = config->GetCustomActions();
    ASSERT_EQ(actions.size(), 2u);
    const auto& one = actions.at(1);

    // Priority 1 answers before 2; -2 sorts after every positive priority.
    InternalAction action = one->GetAction({2, 7, 99});
    EXPECT_EQ(action.id, 1);
    EXPECT_EQ(action.outputMode, 1u);
    EXPECT_EQ(action.soundMode, 2u);
    action = one->GetAction({2});
    EXPECT_EQ(action.outputMode, 3u);  // only the rule without numbers matches
    EXPECT_EQ(action.soundMode, 4u);
    EXPECT_TRUE(capture.Has(0, "GetAction 2"));
    EXPECT_TRUE(capture.Has(0, "FillAction id 1 om 3 sm 4"));
    EXPECT_TRUE(capture.Has(0, "AddRule id 1 priority -2 om 3 sm 4"));
    EXPECT_EQ(one->GetAction({}).outputMode, 3u);

    // An empty position matches nothing.
    const auto& nine = actions.at(9);
    capture.Clear();
    EXPECT_EQ(nine->GetAction({9, 0, 1}).id, 0);
    EXPECT_EQ(capture.Texts(3), Strings{"Could not find matched action"});
    EXPECT_TRUE(capture.Has(0, "GetAction 9 0 1"));
}

// Each line that throws, with its text, is in the end-to-end table of the exported boundary.
TEST(HalControlConfig, AnExceptionKeepsItsTypeAndEndsTheParse) {
    // What came before the failing entry stays; the rest of the file is not parsed.
    auto config = std::make_unique<Hifi3zHalControlConfig>();
    EXPECT_THROW(config->ParseConfig(Ini("[HAL_SUPPORTED_SAMPLE_RATES]\na=1\nb=x\nc=3\n"
                                         "[HAL_SUPPORTED_FEATURES]\nF=1\n")),
                 std::invalid_argument);
    EXPECT_EQ(config->GetSampleRates(),
              (std::map<std::string, std::vector<int32_t>>{{"a", {1}}, {"b", {}}}));
    EXPECT_TRUE(config->GetFeatures().empty());
}

/// Parses a text as initialisation would and exercises what it produced.
void ParseAndUse(const std::string& text) {
    Hifi3zHalControlConfig config;
    try {
        config.ParseConfig(Ini(text));
    } catch (const std::invalid_argument&) {
    } catch (const std::out_of_range&) {
    }
    VolumePolicy volume(config.GetPresetVolumeSubtypes(), config.GetVolumePriorities());
    OrientationPolicy orientation(config.GetPresetOrientationSubtypes(),
                                  config.GetPresetDefaultAngles());
    for (const auto& control : config.GetControls()) {
        control.second->GetSettings()->ToString();
        for (const auto& preset : control.second->GetPresets()) {
            volume.GetSubtypeMaskForVolume(preset->GetName(), -20.0);
            orientation.GetSubtypeMaskForOrientation(preset->GetName(), 90);
            orientation.GetDefaultOrientationAngle(preset->GetName());
        }
    }
    for (const auto& action : config.GetCustomActions()) action.second->GetAction({1, 7, 2});
}

TEST(HalControlConfig, MutatedFilesNeverBreakTheParser) {
    const std::string full = kWorkedFile;
    LogCapture capture(0);
    const char inserts[] = {'[', ']', ',', ':', '|', '=', '\n', '\0', ' ', '-', '9'};
    const unsigned char flips[] = {0x01, 0x20, 0x80, 0xFF};
    for (size_t at = 0; at <= full.size(); ++at) {
        ParseAndUse(full.substr(0, at));
        for (char c : inserts) {
            std::string mutated = full;
            mutated.insert(mutated.begin() + static_cast<std::ptrdiff_t>(at), c);
            ParseAndUse(mutated);
        }
        if (at < full.size()) {
            for (unsigned char flip : flips) {
                std::string mutated = full;
                mutated[at] = static_cast<char>(static_cast<unsigned char>(mutated[at]) ^ flip);
                ParseAndUse(mutated);
            }
            ParseAndUse(full.substr(at));
        }
        capture.Clear();
    }
}

}  // namespace
}  // namespace TesselFX
