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

TEST(ConfigChecker, ConfigurationsThatCannotWorkAndNumbersReadLoosely) {
    std::string loose = test::ReadFile(std::string(ZBCTL_EXAMPLES_DIR) + "/example.ini");
    const size_t rates = ReplaceLine(loose, "speakerRates=", "speakerRates=44100abc|48k");
    const size_t volume = ReplaceLine(loose, "spkVol=", "spkVol=-30dB:1,-10:2|3,0:NULL");
    const size_t orientation =
        ReplaceLine(loose, "spkOrient=", "spkOrient=0:3,90.5:4,180:3,270:-4,0:DEFAULT_ANGLE");
    const size_t headphone = ReplaceLine(loose, "Headphone=OM", "Headphone=OM:2,SM:1.0");
    const size_t speaker = ReplaceLine(
        loose, "Speaker=", "Speaker=DEV:2x,SR:speakerRates,PRESET:Music|Movie,OM:1x,INSTANCE:0");
    const size_t channels = ReplaceLine(loose, "AudioFormatChannels=", "AudioFormatChannels=2x");
    const size_t rule =
        ReplaceLine(loose, "rule1=", "rule1=PRIORITY:1st,NUMBERS:1|2:7e,PRESET:Movie");
    ReplaceLine(loose, "HeadTracking=", "Head\x1b[2JTracking=1");
    const size_t bell = ReplaceLine(loose, "DumpBufferToDsp=", "\x07\xff");
    struct Row {
        std::string name;
        std::string text;
        int status;
        std::string findings;  // from the first finding on; {f} is the file
    };
    const auto at = [](size_t line) { return "{f}:" + std::to_string(line) + ": "; };
    const std::vector<Row> rows = {
        {"empty.ini", " \n\t\n", 1,
         "{f}: refused: (file): empty: the library reads no configuration from it\n"
         "1 refused, 0 warnings\n"},
        {"comment.ini", "# nothing else\n", 1,
         "{f}: refused: [HAL_SUPPORTED_PRESETS]: no preset: no control can select one\n"
         "{f}: refused: [HAL_SUPPORTED_CONTROLS]: no control: no instance of the effect can "
         "work\n"
         "2 refused, 0 warnings\n"},
        {"nul.ini",
         "[HAL_SUPPORTED_PRESETS]\nMusic=OM:1,SM:1\n[HAL_SUPPORTED_CONTROLS]\nS=DEV:2" +
             std::string(1, '\0') + ",SR:r,PRESET:Music\n",
         1,
         "{f}:3: refused: [HAL_SUPPORTED_CONTROLS]: no control: no instance of the effect can "
         "work\n"
         "{f}:4: refused: (file): a NUL byte at column 8: the library reads nothing from there "
         "on\n"
         "{f}:4: refused: [HAL_SUPPORTED_CONTROLS] S: parse ControlDescriptionParser fail for key "
         "S\n"
         "3 refused, 0 warnings\n"},
        // Text from the file reaches the terminal escaped.
        {"loose.ini", loose, 0,
         at(rates) +
             "warning: [HAL_SUPPORTED_SAMPLE_RATES] speakerRates: \"44100abc\" is read as 44100\n" +
             at(rates) +
             "warning: [HAL_SUPPORTED_SAMPLE_RATES] speakerRates: \"48k\" is read as 48\n" +
             at(volume) + "warning: [HAL_VOLUME_SUBTYPES] spkVol: \"-30dB\" is read as -30\n" +
             at(volume) + "warning: [HAL_VOLUME_SUBTYPES] spkVol: \"2|3\" is read as 2\n" +
             at(orientation) +
             "warning: [HAL_ORIENTATION_SUBTYPES] spkOrient: \"90.5\" is read as 90\n" +
             at(orientation) +
             "warning: [HAL_ORIENTATION_SUBTYPES] spkOrient: \"-4\" is read as 4294967292\n" +
             at(headphone) + "warning: [HAL_SUPPORTED_PRESETS] Headphone: \"1.0\" is read as 1\n" +
             at(speaker) + "warning: [HAL_SUPPORTED_CONTROLS] Speaker: \"2x\" is read as 2\n" +
             at(bell) +
             "warning: \"\\x07\\xff\": neither a section, a key nor a comment: ignored\n" +
             at(channels) +
             "warning: [COEFS_CONVERTER_SETTING] AudioFormatChannels: \"2x\" is read as 2\n" +
             at(rule) + "warning: [CUSTOM_ACTION_1] rule1: \"1st\" is read as 1\n" + at(rule) +
             "warning: [CUSTOM_ACTION_1] rule1: \"7e\" is read as 7\n" +
             "0 refused, 12 warnings\n"},
    };
    test::TempDir dir;
    for (const Row& row : rows) {
        const std::string path = dir.Write(row.name, row.text);
        const auto result = test::RunZbctl("check-config " + path);
        EXPECT_EQ(result.status, row.status) << row.name;
        std::string expected = row.findings;
        for (size_t f; (f = expected.find("{f}")) != std::string::npos;)
            expected.replace(f, 3, path);
        const size_t first = result.out.find("\n" + path + ":");
        EXPECT_EQ(first == std::string::npos ? result.out : result.out.substr(first + 1), expected)
            << row.name;
        EXPECT_EQ(result.out.find_first_of("\x07\x1b\xff"), std::string::npos) << row.name;
    }
    EXPECT_NE(test::RunZbctl("check-config " + dir.Path("loose.ini"))
                  .out.find("\n  features:\n    Head\\x1b[2JTracking\n"),
              std::string::npos);
}

}  // namespace
}  // namespace zbctl
}  // namespace TesselFX
