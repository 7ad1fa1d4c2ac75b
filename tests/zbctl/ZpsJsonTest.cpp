#include <gtest/gtest.h>

#include <sstream>

#include "ZbctlError.h"
#include "ZbctlTestSupport.h"
#include "ZpsJson.h"

namespace TesselFX {
namespace zbctl {
namespace {

using Json = nlohmann::json;

std::string ErrorOf(const std::string& text) {
    try {
        WarningList warnings;
        ZpsFromJson(ParseZpsJson(std::vector<char>(text.begin(), text.end()), warnings), warnings);
    } catch (const ZbctlError& e) {
        return e.what();
    }
    return "";
}

TEST(ZpsJson, ReadsEveryFieldAndWritesItBackWithDefaultsLeftOut) {
    const Json source = Json::parse(R"({
      "information": {"value": 7, "bytes": [1, 2, 3, 4], "word": 9},
      "tags": {"3": "three"},
      "presets": [{"output_mode": 1, "sound_mode": 2, "subtypes": [0, 3], "name": "P",
                   "remarks": "r", "default_sound_mode": true, "flags": 4, "priority": 5,
                   "parameters": {"2": 0.1, "10": -1.5},
                   "link_laws": [{"source": 1, "target": 20, "points": [[0, 1], [1000, 2]],
                                  "extra": [0.5, 0]},
                                 {"source": 0, "master": 2900, "target": 5,
                                  "points": [[0.1, 0.3]], "method": "Log", "version": 0}],
                   "chunks": {"2": "00ff10"}},
                  {"output_mode": 3, "sound_mode": 4, "name": ""}],
      "user": {"enabled_subtypes": [{"output_mode": 1, "sound_mode": 2, "subtypes": [3]}],
               "presets": [{"output_mode": 1, "sound_mode": 2, "name": "U", "flags": 2}]}
    })");
    WarningList warnings;
    const ZpsDocument document = ZpsFromJson(source, warnings);
    EXPECT_EQ(warnings.Lines(),
              std::vector<std::string>{"presets[0].link_laws[1].method: the library computes only "
                                       "\"Linear\" link laws; \"Log\" gives the target no value"});
    EXPECT_EQ(document.information->word, 9u);
    EXPECT_EQ(document.information->bytes[3], 4u);
    const ZpsPreset& preset = document.systemPresets->at(0);
    EXPECT_EQ(preset.subtypeMask, 0x9u);
    EXPECT_EQ(preset.flags, 0x5u);
    const LinkLawEntry& law = preset.linkLaws.at(0);
    EXPECT_EQ(law.MasterControlId, 2801u);  // the master of source 1 by default
    EXPECT_EQ(law.extraValue0, 0.5f);
    EXPECT_EQ(preset.chunks.at(2), (std::vector<char>{0, static_cast<char>(0xFF), 0x10}));
    EXPECT_EQ(document.user->enabledMasks.at(0).mask, 0x8u);

    std::ostringstream out;
    PrintZpsJson(out, document, PresetStreamOf(document));
    EXPECT_EQ(Json::parse(out.str()), source);
    // Written preset by preset, laid out as the whole tree's dump would be.
    EXPECT_EQ(out.str(), nlohmann::ordered_json::parse(out.str()).dump(2) + "\n");
}

TEST(ZpsJson, WarnsOfWhatTheLibraryTakesOtherwiseThanMeant) {
    const auto warningsOf = [](const std::string& text) {
        WarningList warnings;
        ZpsFromJson(ParseZpsJson(std::vector<char>(text.begin(), text.end()), warnings), warnings);
        return warnings.Lines();
    };
    const std::string preset = R"("output_mode": 1, "sound_mode": 1, "name": "x")";
    const std::string law = R"("source": 0, "target": 1, "points": )";
    const std::vector<std::pair<std::string, std::vector<std::string>>> rows = {
        {"{\"presets\": [{" + preset + "}, {" + preset + ", \"subtypes\": [1]}, {" + preset + "}]}",
         {"presets[2]: om 1, sm 1, subtypes [] again (as presets[0]): the library keeps only "
          "this one"}},
        {R"({"user": {"presets": [{"output_mode": 2, "sound_mode": 3, "name": "a"},
                                  {"output_mode": 2, "sound_mode": 3, "name": "b"}]}})",
         {"user.presets[1]: om 2, sm 3, subtypes [] again (as user.presets[0]): the library "
          "keeps only this one"}},
        {R"({"presets": [{"output_mode": 1, "sound_mode": 1, "name": "a", "default_sound_mode": true},
                         {"output_mode": 1, "sound_mode": 1, "subtypes": [2], "name": "b",
                          "default_sound_mode": true},
                         {"output_mode": 2, "sound_mode": 2, "name": "c", "default_sound_mode": true},
                         {"output_mode": 1, "sound_mode": 3, "name": "d", "default_sound_mode": true}]})",
         {"presets[3]: a second default sound mode for output mode 1: sound mode 3, besides "
          "sound mode 1 (presets[0])"}},
        {"{\"presets\": [{" + preset + ", \"link_laws\": [{" + law +
             "[[0, 1], [500, 2], [400, 3]]}, {" + law + "[[0, 1]], \"method\": \"Log\"}]}]}",
         {"presets[0].link_laws[0].points[2]: master value below the one before; the library "
          "interpolates between points in ascending order only",
          "presets[0].link_laws[1].method: the library computes only \"Linear\" link laws; "
          "\"Log\" gives the target no value"}},
        {"{\"presets\": [{" + preset + R"(, "parameters": {"7": 1, "07": 2}}]})",
         {"presets[0].parameters.7: parameter 7 again; this value is the one kept"}},
        {"{\"presets\": [{" + preset + R"(, "parameters": {"7": 1, "8": 0, "7": 2}}],
           "remarks": "a", "remarks": "b"})",
         {"presets[0].parameters: key \"7\" given twice; the later value is the one kept",
          "(top): key \"remarks\" given twice; the later value is the one kept"}},
    };
    for (const auto& row : rows) EXPECT_EQ(warningsOf(row.first), row.second) << row.first;
}

TEST(ZpsJson, ErrorsNameThePath) {
    const std::string preset = R"({"presets": [{"output_mode": 1, "sound_mode": 1, "name": "x", )";
    const std::string law = R"("link_laws": [{"source": 0, "target": 1, "points": )";
    const std::vector<std::pair<std::string, std::string>> rows = {
        // Text that is not JSON, or holds a number no double holds, is refused by the parser.
        {R"({"presets": [})",
         "[json.exception.parse_error.101] parse error at line 1, column 14: syntax error while "
         "parsing value - unexpected '}'; expected '[', '{', or a literal"},
        {R"({"presets": [{"output_mode": 1e9999}]})",
         "[json.exception.out_of_range.406] number overflow parsing '1e9999'"},
        {R"({"preset": []})", "(top): unknown key \"preset\""},
        {preset + R"("paramters": {}}]})", "presets[0]: unknown key \"paramters\""},
        {R"({"presets": [{"output_mode": 256, "sound_mode": 1, "name": "x"}]})",
         "presets[0].output_mode: must be a whole number from 0 to 255"},
        {R"({"presets": [{"output_mode": -1, "sound_mode": 1, "name": "x"}]})",
         "presets[0].output_mode: must be a whole number from 0 to 255"},
        {preset + R"("parameters": {"65536": 1}}]})",
         "presets[0].parameters: key \"65536\" must be a whole number from 0 to 65535"},
        {preset + R"("parameters": {"7": "loud"}}]})", "presets[0].parameters.7: must be a number"},
        {preset + R"("subtypes": [32]}]})",
         "presets[0].subtypes[0]: must be a whole number from 0 to 31"},
        {preset + law + "[[1]]}]}]}",
         "presets[0].link_laws[0].points[0]: must be [master, target]"},
        {preset + law + "[[1e39, 0]]}]}]}",
         "presets[0].link_laws[0].points[0][0]: does not fit in a float"},
        {preset + R"("chunks": {"2": "0g"}}]})",
         "presets[0].chunks.2: \"0g\" is not a hexadecimal byte"},
    };
    for (const auto& [text, error] : rows) EXPECT_EQ(ErrorOf(text), error) << text;
}

TEST(ZpsJson, BuildThenDumpRoundTripsTheExample) {
    test::TempDir dir;
    const std::string example = std::string(ZBCTL_EXAMPLES_DIR) + "/example_system.json";
    const std::string zps = dir.Path("example.zps");
    ASSERT_EQ(test::RunZbctl("zps build " + example + " " + zps).status, 0);
    const auto dump = test::RunZbctl("zps dump --json " + zps);
    ASSERT_EQ(dump.status, 0);
    EXPECT_EQ(Json::parse(dump.out), Json::parse(test::ReadFile(example)));
    // The file that the build made is the one zbctl run uses by default.
    EXPECT_EQ(test::ReadFile(zps),
              test::ReadFile(std::string(ZBCTL_BUILD_EXAMPLES_DIR) + "/example_system.zps"));
}

}  // namespace
}  // namespace zbctl
}  // namespace TesselFX
