#include <gtest/gtest.h>

#include "ConfigChecker.h"
#include "ZbctlTestSupport.h"

namespace TesselFX {
namespace zbctl {
namespace {

// Replaces the line that starts with prefix and returns its number (from 1).
size_t ReplaceLine(std::string& text, const std::string& prefix, const std::string& line) {
    const size_t start = text.rfind("\n" + prefix) + 1;
    EXPECT_NE(start, 0u) << prefix;
    const size_t end = text.find('\n', start);
    text.replace(start, end - start, line);
    return static_cast<size_t>(
               std::count(text.begin(), text.begin() + static_cast<long>(start), '\n')) +
           1;
}

size_t LineCount(const std::string& text) {
    return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

TEST(ConfigChecker, ExampleIsClean) {
    const auto result = test::RunZbctl("check-config " + std::string(ZBCTL_EXAMPLES_DIR) +
                                       "/example.ini --presets " + ZBCTL_BUILD_EXAMPLES_DIR +
                                       "/example_system.zps");
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(
        result.out.find("\n    Speaker: DEV 2, rates 44100 48000, presets Music|Movie, type Copp, "
                        "settings DEV=2;INSTANCE=0;\n"),
        std::string::npos)
        << result.out;
    EXPECT_NE(
        result.out.find(
            "\n    spkOrient: 0 deg: 3, 90 deg: 4, 180 deg: 3, 270 deg: 4; default angle 0\n"),
        std::string::npos);
    EXPECT_NE(result.out.find("\n  features:\n    HeadTracking\n  coefficient"), std::string::npos);
    EXPECT_NE(result.out.find("\n0 refused, 0 warnings\n"), std::string::npos);
}

TEST(ConfigChecker, BrokenCopyOfTheExampleIsRefusedLineByLine) {
    std::string text = test::ReadFile(std::string(ZBCTL_EXAMPLES_DIR) + "/example.ini");
    const size_t volume = ReplaceLine(text, "spkVol=", "spkVol=-30:1,abc:2,0:NULL");
    const size_t priority =
        ReplaceLine(text, "AUDIO_STREAM_RING=", "AUDIO_STREAM_RINGER=VOLUME_PRIORITY_MID");
    const size_t movie = ReplaceLine(text, "Movie=", "Movie=SM:2,ST:1|2");
    const size_t speaker = ReplaceLine(
        text, "Speaker=", "Speaker=DEV:2,SR:speakerRates,PRESET:Music|Movie,INSTANCE:0");
    const size_t headphone =
        ReplaceLine(text, "Headphone=DEV:", "Headphone=SR:headphoneRates,PRESET:Headphone");
    const size_t rule = ReplaceLine(text, "rule1=", "rule1=PRIORITY:1,NUMBERS:1|2:7,PRESET:Movie");
    text += "[CUSTOM_ACTION_x]\nrule1=PRIORITY:1,PRESET:Music\nnot a line\n";
    const size_t end = LineCount(text);
    test::TempDir dir;
    const std::string path = dir.Write("broken.ini", text);

    const auto result = test::RunZbctl("check-config " + path);
    EXPECT_EQ(result.status, 1);
    const auto at = [&](size_t line) { return path + ":" + std::to_string(line) + ": "; };
    const std::string expected =
        at(volume) + "refused: [HAL_VOLUME_SUBTYPES] spkVol: Exception: stof\n" + at(volume) +
        "refused: [HAL_VOLUME_SUBTYPES] spkVol: Invalid string format: abc:2\n" + at(priority) +
        "refused: [HAL_VOLUME_PRIORITY] AUDIO_STREAM_RINGER: zb_initialize stops reading the "
        "configuration here and fails with \"zb_initialize: configuration line "
        "[HAL_VOLUME_PRIORITY] AUDIO_STREAM_RINGER=VOLUME_PRIORITY_MID: std::out_of_range: "
        "map::at:  key not found\"\n" +
        at(movie) +
        "refused: [HAL_SUPPORTED_PRESETS] Movie: dropped without a log line: OM and SM are both "
        "required\n" +
        at(speaker) +
        "refused: [HAL_SUPPORTED_CONTROLS] Speaker: could not find Music|Movie for PRESET\n" +
        at(headphone) +
        "refused: [HAL_SUPPORTED_CONTROLS] Headphone: parse ControlDescriptionParser fail for key "
        "Headphone\n" +
        at(rule) +
        "refused: [CUSTOM_ACTION_1] rule1: Parse invalid value "
        "PRIORITY:1,NUMBERS:1|2:7,PRESET:Movie "
        "audioDataPriority 1 audioDataOm -1 audioDataSm -1\n" +
        at(end - 2) +
        "refused: [CUSTOM_ACTION_x]: zb_initialize stops reading the configuration here and "
        "fails with \"zb_initialize: configuration section [CUSTOM_ACTION_x]: "
        "std::invalid_argument: stoi\"\n" +
        at(end) + "warning: \"not a line\": neither a section, a key nor a comment: ignored\n" +
        "8 refused, 1 warnings\n";
    const size_t findings = result.out.find(at(volume));
    ASSERT_NE(findings, std::string::npos) << result.out;
    EXPECT_EQ(result.out.substr(findings), expected);
    // What was accepted is still reported: the speaker keeps the one preset it found.
    EXPECT_NE(result.out.find("    Speaker: DEV 2, rates 44100 48000, presets Music, type -,"),
              std::string::npos);
}

TEST(ConfigChecker, PresetsThatTheControlsNameMustBeInThePresetFile) {
    test::TempDir dir;
    const std::string json = dir.Write("few.json", R"({"presets": [
        {"output_mode": 1, "sound_mode": 1, "name": "Music"},
        {"output_mode": 1, "sound_mode": 1, "subtypes": [3], "name": "Portrait"},
        {"output_mode": 1, "sound_mode": 2, "name": "Movie"},
        {"output_mode": 1, "sound_mode": 2, "subtypes": [1], "name": "Quiet"},
        {"output_mode": 1, "sound_mode": 2, "subtypes": [2], "name": "Soft"}]})");
    ASSERT_EQ(test::RunZbctl("zps build " + json + " " + dir.Path("few.zps")).status, 0);
    const std::string ini = std::string(ZBCTL_EXAMPLES_DIR) + "/example.ini";
    const auto result = test::RunZbctl("check-config " + ini + " --presets " + dir.Path("few.zps"));
    EXPECT_EQ(result.status, 1);
    const std::string text = test::ReadFile(ini);
    const auto lineOf = [&](const std::string& prefix) {
        return std::to_string(std::count(text.begin(),
                                         text.begin() + static_cast<long>(text.find("\n" + prefix)),
                                         '\n') +
                              2);
    };
    const std::string zps = dir.Path("few.zps");
    EXPECT_NE(result.out.find(ini + ":" + lineOf("Headphone=OM") +
                              ": refused: control Headphone, preset Headphone: " + zps +
                              " has no base preset for om 2, sm 1\n"),
              std::string::npos)
        << result.out;
    for (const char* subtype : {"1", "2", "4"}) {
        EXPECT_NE(result.out.find(ini + ":" + lineOf("Music=") +
                                  ": warning: control Speaker, preset Music: " + zps +
                                  " has no sub preset for subtype " + subtype +
                                  " of om 1, sm 1: the base preset serves alone\n"),
                  std::string::npos)
            << subtype;
    }
    EXPECT_NE(result.out.find("\n1 refused, 3 warnings\n"), std::string::npos);
}

TEST(ConfigChecker, UnreadableFilesAreToolErrors) {
    EXPECT_EQ(test::RunZbctl("check-config /nonexistent/zbctl.ini").status, 1);
    test::TempDir dir;
    const std::string ini = dir.Write("a.ini", "[HAL_SUPPORTED_FEATURES]\nX=1\n");
    const std::string zps = dir.Write("a.zps", "BPB");
    EXPECT_EQ(test::RunZbctl("check-config " + ini + " --presets " + zps).status, 1);
    // A file of no section at all is no error.
    EXPECT_EQ(test::RunZbctl("check-config " + dir.Write("empty.ini", "")).status, 0);
}

}  // namespace
}  // namespace zbctl
}  // namespace TesselFX
