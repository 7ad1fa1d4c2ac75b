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

TEST(ZpsJson, ReadsEveryField) {
    WarningList warnings;
    const ZpsDocument document = ZpsFromJson(Json::parse(R"({
      "information": {"value": 7, "bytes": [1, 2, 3, 4], "word": 9},
      "tags": {"3": "three"},
      "presets": [{"output_mode": 1, "sound_mode": 2, "subtypes": [0, 3], "name": "P",
                   "remarks": "r", "default_sound_mode": true, "flags": 4, "priority": 5,
                   "parameters": {"10": -1.5},
                   "link_laws": [{"source": 1, "target": 20, "points": [[0, 1], [1000, 2]],
                                  "extra": [0.5, 0]}],
                   "chunks": {"2": "00ff10"}}],
      "user": {"enabled_subtypes": [{"output_mode": 1, "sound_mode": 2, "subtypes": [3]}]}
    })"),
                                             warnings);
    EXPECT_TRUE(warnings.Empty());
    ASSERT_TRUE(document.information);
    EXPECT_EQ(document.information->value, 7u);
    EXPECT_EQ(document.information->bytes[3], 4u);
    EXPECT_EQ(document.tags.at(3), "three");
    const ZpsPreset& preset = document.systemPresets->at(0);
    EXPECT_EQ(preset.subtypeMask, 0x9u);
    EXPECT_EQ(preset.flags, 0x5u);
    EXPECT_EQ(preset.priority, 5u);
    EXPECT_EQ(preset.parameters.at(10), -1.5);
    const LinkLawEntry& law = preset.linkLaws.at(0);
    EXPECT_EQ(law.SourceControlId, 1u);
    EXPECT_EQ(law.MasterControlId, 2801u);  // the master of source 1 by default
    EXPECT_EQ(law.masterValues, (std::vector<float>{0, 1000}));
    EXPECT_EQ(law.targetValues, (std::vector<float>{1, 2}));
    EXPECT_EQ(law.extraValue0, 0.5f);
    EXPECT_EQ(preset.chunks.at(2), (std::vector<char>{0, static_cast<char>(0xFF), 0x10}));
    EXPECT_EQ(document.user->enabledMasks.at(0).mask, 0x8u);
}

TEST(ZpsJson, WritesWhatItReadsWithDefaultsLeftOut) {
    const Json source = Json::parse(R"({
      "presets": [{"output_mode": 1, "sound_mode": 2, "subtypes": [4], "name": "P",
                   "parameters": {"2": 0.1, "10": 3},
                   "link_laws": [{"source": 0, "master": 2900, "target": 5,
                                  "points": [[0.1, 0.3], [1000, -2.5]], "method": "Log",
                                  "version": 0}]},
                  {"output_mode": 3, "sound_mode": 4, "name": ""}],
      "user": {"presets": [{"output_mode": 1, "sound_mode": 2, "name": "U", "flags": 2}]}
    })");
    WarningList warnings;
    const ZpsDocument document = ZpsFromJson(source, warnings);
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
    // Text that is not JSON, or holds a number no double holds, is refused by the parser.
    EXPECT_EQ(ErrorOf(R"({"presets": [})"),
              "[json.exception.parse_error.101] parse error at line 1, column 14: syntax error "
              "while parsing value - unexpected '}'; expected '[', '{', or a literal");
    EXPECT_EQ(ErrorOf(R"({"presets": [{"output_mode": 1e9999}]})"),
              "[json.exception.out_of_range.406] number overflow parsing '1e9999'");
    EXPECT_EQ(ErrorOf(R"({"preset": []})"), "(top): unknown key \"preset\"");
    EXPECT_EQ(
        ErrorOf(
            R"({"presets": [{"output_mode": 1, "sound_mode": 1, "name": "x", "paramters": {}}]})"),
        "presets[0]: unknown key \"paramters\"");
    EXPECT_EQ(ErrorOf(R"({"presets": [{"output_mode": 256, "sound_mode": 1, "name": "x"}]})"),
              "presets[0].output_mode: must be a whole number from 0 to 255");
    EXPECT_EQ(ErrorOf(R"({"presets": [{"output_mode": -1, "sound_mode": 1, "name": "x"}]})"),
              "presets[0].output_mode: must be a whole number from 0 to 255");
    EXPECT_EQ(ErrorOf(R"({"presets": [{"output_mode": 1, "name": "x"}]})"),
              "presets[0]: \"sound_mode\" is missing");
    EXPECT_EQ(ErrorOf(R"({"presets": [{"output_mode": 1, "sound_mode": 1, "name": "x",
                                      "parameters": {"65536": 1}}]})"),
              "presets[0].parameters: key \"65536\" must be a whole number from 0 to 65535");
    EXPECT_EQ(ErrorOf(R"({"presets": [{"output_mode": 1, "sound_mode": 1, "name": "x",
                                      "parameters": {"7": "loud"}}]})"),
              "presets[0].parameters.7: must be a number");
    EXPECT_EQ(
        ErrorOf(
            R"({"presets": [{"output_mode": 1, "sound_mode": 1, "name": "x", "subtypes": [32]}]})"),
        "presets[0].subtypes[0]: must be a whole number from 0 to 31");
    EXPECT_EQ(ErrorOf(R"({"presets": [{"output_mode": 1, "sound_mode": 1, "name": "x",
                                      "link_laws": [{"source": 0, "target": 1, "points": [[1]]}]}]})"),
              "presets[0].link_laws[0].points[0]: must be [master, target]");
    EXPECT_EQ(ErrorOf(R"({"presets": [{"output_mode": 1, "sound_mode": 1, "name": "x",
                                      "link_laws": [{"source": 0, "target": 1, "points": [[1e39, 0]]}]}]})"),
              "presets[0].link_laws[0].points[0][0]: does not fit in a float");
    EXPECT_EQ(
        ErrorOf(
            R"({"presets": [{"output_mode": 1, "sound_mode": 1, "name": "x", "chunks": {"2": "0g"}}]})"),
        "presets[0].chunks.2: \"0g\" is not a hexadecimal byte");
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
