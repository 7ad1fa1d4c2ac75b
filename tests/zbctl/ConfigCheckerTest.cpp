#include <gtest/gtest.h>

#include <map>

#include "ZbctlTestSupport.h"

namespace TesselFX {
namespace zbctl {
namespace {

// The number (from 1) of the last line that starts with prefix.
size_t LineOf(const std::string& text, const std::string& prefix) {
    const size_t start = text.rfind("\n" + prefix) + 1;
    EXPECT_NE(start, 0u) << prefix;
    return static_cast<size_t>(
               std::count(text.begin(), text.begin() + static_cast<long>(start), '\n')) +
           1;
}

// Replaces the last line that starts with prefix and returns its number.
size_t ReplaceLine(std::string& text, const std::string& prefix, const std::string& line) {
    const size_t start = text.rfind("\n" + prefix) + 1;
    const size_t number = LineOf(text, prefix);
    text.replace(start, text.find('\n', start) - start, line);
    return number;
}

TEST(ConfigChecker, ReportsWhatTheLibraryRefusesLineByLine) {
    const std::string example = test::ReadFile(std::string(ZBCTL_EXAMPLES_DIR) + "/example.ini");
    std::string broken = example;
    const size_t volume = ReplaceLine(broken, "spkVol=", "spkVol=-30:1,abc:2,0:NULL");
    const size_t priority =
        ReplaceLine(broken, "AUDIO_STREAM_RING=", "AUDIO_STREAM_RINGER=VOLUME_PRIORITY_MID");
    const size_t movie = ReplaceLine(broken, "Movie=", "Movie=SM:2,ST:1|2");
    const size_t speaker = ReplaceLine(
        broken, "Speaker=", "Speaker=DEV:2,SR:speakerRates,PRESET:Music|Movie,INSTANCE:0");
    const size_t headphone =
        ReplaceLine(broken, "Headphone=DEV:", "Headphone=SR:headphoneRates,PRESET:Headphone");
    const size_t rule =
        ReplaceLine(broken, "rule1=", "rule1=PRIORITY:1,NUMBERS:1|2:7,PRESET:Movie");
    broken += "[CUSTOM_ACTION_x]\nrule1=PRIORITY:1,PRESET:Music\nnot a line\n";
    const size_t end = static_cast<size_t>(std::count(broken.begin(), broken.end(), '\n'));

    std::string loose = example;
    const size_t rates = ReplaceLine(loose, "speakerRates=", "speakerRates=44100abc|48k");
    const size_t steps = ReplaceLine(loose, "spkVol=", "spkVol=-30dB:1,-10:2|3,0:NULL");
    const size_t orientation =
        ReplaceLine(loose, "spkOrient=", "spkOrient=0:3,90.5:4,180:3,270:-4,0:DEFAULT_ANGLE");
    const size_t modes = ReplaceLine(loose, "Headphone=OM", "Headphone=OM:2,SM:1.0");
    const size_t device = ReplaceLine(
        loose, "Speaker=", "Speaker=DEV:2x,SR:speakerRates,PRESET:Music|Movie,OM:1x,INSTANCE:0");
    const size_t channels = ReplaceLine(loose, "AudioFormatChannels=", "AudioFormatChannels=2x");
    const size_t numbers =
        ReplaceLine(loose, "rule1=", "rule1=PRIORITY:1st,NUMBERS:1|2:7e,PRESET:Movie");
    ReplaceLine(loose, "HeadTracking=", "Head\x1b[2JTracking=1");
    const size_t bell = ReplaceLine(loose, "DumpBufferToDsp=", "\x07\xff");

    // Presets that the controls name must be in the preset file.
    test::TempDir dir;
    const std::string few = dir.Path("few.zps");
    ASSERT_EQ(test::RunZbctl("zps build " + dir.Write("few.json", R"({"presets": [
        {"output_mode": 1, "sound_mode": 1, "name": "Music"},
        {"output_mode": 1, "sound_mode": 1, "subtypes": [3], "name": "Portrait"},
        {"output_mode": 1, "sound_mode": 2, "name": "Movie"},
        {"output_mode": 1, "sound_mode": 2, "subtypes": [1], "name": "Quiet"},
        {"output_mode": 1, "sound_mode": 2, "subtypes": [2], "name": "Soft"}]})") +
                             " " + few)
                  .status,
              0);
    std::string missing;
    for (const char* subtype : {"1", "2", "4"}) {
        missing += "{f}:" + std::to_string(LineOf(example, "Music=")) +
                   ": warning: control Speaker, preset Music: " + few +
                   " has no sub preset for subtype " + subtype +
                   " of om 1, sm 1: the base preset serves alone\n";
    }

    struct Row {
        std::string name;
        std::string text;
        std::string options;
        int status;
        std::string findings;  // from the first finding on (or the count); {f} is the file
    };
    const auto at = [](size_t line) { return "{f}:" + std::to_string(line) + ": "; };
    const std::vector<Row> rows = {
        {"example.ini", example,
         " --presets " + std::string(ZBCTL_BUILD_EXAMPLES_DIR) + "/example_system.zps", 0,
         "0 refused, 0 warnings\n"},
        {"few.ini", example, " --presets " + few, 1,
         missing + at(LineOf(example, "Headphone=OM")) +
             "refused: control Headphone, preset Headphone: " + few +
             " has no base preset for om 2, sm 1\n1 refused, 3 warnings\n"},
        {"broken.ini", broken, "", 1,
         at(volume) + "refused: [HAL_VOLUME_SUBTYPES] spkVol: Exception: stof\n" + at(volume) +
             "refused: [HAL_VOLUME_SUBTYPES] spkVol: Invalid string format: abc:2\n" +
             at(priority) +
             "refused: [HAL_VOLUME_PRIORITY] AUDIO_STREAM_RINGER: zb_initialize stops reading "
             "the configuration here and fails with \"zb_initialize: configuration line "
             "[HAL_VOLUME_PRIORITY] AUDIO_STREAM_RINGER=VOLUME_PRIORITY_MID: std::out_of_range: "
             "map::at:  key not found\"\n" +
             at(movie) +
             "refused: [HAL_SUPPORTED_PRESETS] Movie: dropped without a log line: OM and SM are "
             "both required\n" +
             at(speaker) +
             "refused: [HAL_SUPPORTED_CONTROLS] Speaker: could not find Music|Movie for PRESET\n" +
             at(headphone) +
             "refused: [HAL_SUPPORTED_CONTROLS] Headphone: parse ControlDescriptionParser fail "
             "for key Headphone\n" +
             at(rule) +
             "refused: [CUSTOM_ACTION_1] rule1: Parse invalid value "
             "PRIORITY:1,NUMBERS:1|2:7,PRESET:Movie audioDataPriority 1 audioDataOm -1 "
             "audioDataSm -1\n" +
             at(end - 2) +
             "refused: [CUSTOM_ACTION_x]: zb_initialize stops reading the configuration here and "
             "fails with \"zb_initialize: configuration section [CUSTOM_ACTION_x]: "
             "std::invalid_argument: stoi\"\n" +
             at(end) +
             "warning: \"not a line\": neither a section, a key nor a comment: ignored\n" +
             "8 refused, 1 warnings\n"},
        {"empty.ini", " \n\t\n", "", 1,
         "{f}: refused: (file): empty: the library reads no configuration from it\n"
         "1 refused, 0 warnings\n"},
        {"comment.ini", "# nothing else\n", "", 1,
         "{f}: refused: [HAL_SUPPORTED_PRESETS]: no preset: no control can select one\n"
         "{f}: refused: [HAL_SUPPORTED_CONTROLS]: no control: no instance of the effect can "
         "work\n"
         "2 refused, 0 warnings\n"},
        {"nul.ini",
         "[HAL_SUPPORTED_PRESETS]\nMusic=OM:1,SM:1\n[HAL_SUPPORTED_CONTROLS]\nS=DEV:2" +
             std::string(1, '\0') + ",SR:r,PRESET:Music\n",
         "", 1,
         "{f}:3: refused: [HAL_SUPPORTED_CONTROLS]: no control: no instance of the effect can "
         "work\n"
         "{f}:4: refused: (file): a NUL byte at column 8: the library reads nothing from there "
         "on\n"
         "{f}:4: refused: [HAL_SUPPORTED_CONTROLS] S: parse ControlDescriptionParser fail for key "
         "S\n"
         "3 refused, 0 warnings\n"},
        // Numbers that a parser reads only in part; text from the file reaches the terminal
        // escaped.
        {"loose.ini", loose, "", 0,
         at(rates) +
             "warning: [HAL_SUPPORTED_SAMPLE_RATES] speakerRates: \"44100abc\" is read as 44100\n" +
             at(rates) +
             "warning: [HAL_SUPPORTED_SAMPLE_RATES] speakerRates: \"48k\" is read as 48\n" +
             at(steps) + "warning: [HAL_VOLUME_SUBTYPES] spkVol: \"-30dB\" is read as -30\n" +
             at(steps) + "warning: [HAL_VOLUME_SUBTYPES] spkVol: \"2|3\" is read as 2\n" +
             at(orientation) +
             "warning: [HAL_ORIENTATION_SUBTYPES] spkOrient: \"90.5\" is read as 90\n" +
             at(orientation) +
             "warning: [HAL_ORIENTATION_SUBTYPES] spkOrient: \"-4\" is read as 4294967292\n" +
             at(modes) + "warning: [HAL_SUPPORTED_PRESETS] Headphone: \"1.0\" is read as 1\n" +
             at(device) + "warning: [HAL_SUPPORTED_CONTROLS] Speaker: \"2x\" is read as 2\n" +
             at(bell) +
             "warning: \"\\x07\\xff\": neither a section, a key nor a comment: ignored\n" +
             at(channels) +
             "warning: [COEFS_CONVERTER_SETTING] AudioFormatChannels: \"2x\" is read as 2\n" +
             at(numbers) + "warning: [CUSTOM_ACTION_1] rule1: \"1st\" is read as 1\n" +
             at(numbers) + "warning: [CUSTOM_ACTION_1] rule1: \"7e\" is read as 7\n" +
             "0 refused, 12 warnings\n"},
    };
    std::map<std::string, std::string> outs;
    for (const Row& row : rows) {
        const std::string path = dir.Write(row.name, row.text);
        const auto result = test::RunZbctl("check-config " + path + row.options);
        EXPECT_EQ(result.status, row.status) << row.name;
        std::string expected = row.findings;
        for (size_t f; (f = expected.find("{f}")) != std::string::npos;)
            expected.replace(f, 3, path);
        const size_t first = result.out.find("\n" + path + ":");
        const size_t from = first != std::string::npos
                                ? first + 1
                                : result.out.rfind('\n', result.out.size() - 2) + 1;
        EXPECT_EQ(result.out.substr(from), expected) << row.name;
        EXPECT_EQ(result.out.find_first_of("\x07\x1b\xff"), std::string::npos) << row.name;
        outs[row.name] = result.out;
    }
    // What the configuration defines comes first; what was accepted of a broken one too.
    for (const char* line :
         {"\n    Speaker: DEV 2, rates 44100 48000, presets Music|Movie, type Copp, settings "
          "DEV=2;INSTANCE=0;\n",
          "\n    spkOrient: 0 deg: 3, 90 deg: 4, 180 deg: 3, 270 deg: 4; default angle 0\n",
          "\n  features:\n    HeadTracking\n  coefficient"})
        EXPECT_NE(outs["example.ini"].find(line), std::string::npos) << line;
    EXPECT_NE(outs["broken.ini"].find("\n    Speaker: DEV 2, rates 44100 48000, presets Music, "
                                      "type -,"),
              std::string::npos);
    EXPECT_NE(outs["loose.ini"].find("\n  features:\n    Head\\x1b[2JTracking\n"),
              std::string::npos);
}

}  // namespace
}  // namespace zbctl
}  // namespace TesselFX
