#include <gtest/gtest.h>

#include <functional>
#include <sstream>

#include "ZbctlError.h"
#include "ZpsBinary.h"
#include "ZpsJson.h"

namespace TesselFX {
namespace zbctl {
namespace {

std::vector<char> Bytes(std::initializer_list<int> values) {
    std::vector<char> bytes;
    for (int value : values) bytes.push_back(static_cast<char>(value));
    return bytes;
}

// Remarks "R", one system preset: om 1, sm 2, subtype 2 (mask 4), priority 3, default sound
// mode, name "A", parameter 7 = 1.0, one link law source 0 -> parameter 111 with one point.
const std::vector<char> kSystemFile = Bytes({
    0x42, 0x50, 0x42, 0x5A,                          // "BPBZ"
    0x6B, 0x00, 0x00, 0x00,                          // total size 107
    0x03, 0x00, 0x00, 0x00, 0x03, 0x01, 'R',         // remarks section: size 3, id 3, "R"
    0x58, 0x00, 0x00, 0x00, 0x04,                    // presets section: size 88, id 4
    0x01, 0x00,                                      // one preset
    0x53, 0x00,                                      // record size 83
    0x01, 0x02,                                      // om 1, sm 2
    0x04, 0x00, 0x00, 0x00,                          // mask 4
    0x02, 0x00,                                      // two items
    0x03, 0x00,                                      // priority 3, reserved
    0x01, 0x00,                                      // flags: default sound mode
    0x01, 'A',  0x00,                                // name "A", no remarks
    0x07, 0x00, 0x00, 0x08, 0x00,                    // parameter 7, type 0, size 8
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xF0, 0x3F,  // 1.0
    0x01, 0x00, 0x03, 0x32, 0x00,                    // chunk 1, type 3, size 50
    0x32, 0x00, 0x00, 0x00,                          // entry size 50
    0x01, 0x00, 0x00, 0x00,                          // version 1
    0xF0, 0x0A, 0x00, 0x00,                          // master 2800
    0x00, 0x00, 0x00, 0x00,                          // source 0
    0x6F, 0x00, 0x00, 0x00,                          // target 111
    0x06, 0x00, 0x00, 0x00, 'L',  'i',  'n',  'e',  'a', 'r', 0x01, 0x00, 0x00, 0x00,  // one point
    0x00, 0x00, 0x00, 0x00,                                                            // master 0.0
    0x00, 0x00, 0x00, 0x40,                                                            // target 2.0
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  // extra values
});

// A user file: om 1 sm 2 with subtypes 1 and 2 enabled, one user preset without items.
const std::vector<char> kUserFile = Bytes({
    0x42, 0x50, 0x42, 0x5A, 0x2B, 0x00, 0x00, 0x00,
    0x1F, 0x00, 0x00, 0x00, 0x05,                    // user modes section: size 31, id 5
    0x00, 0x00, 0x01, 0x00,                          // reserved, one record
    0x01, 0x00, 0x02, 0x00, 0x06, 0x00, 0x00, 0x00,  // om 1, sm 2, mask 6
    0x01, 0x00,                                      // one preset
    0x0E, 0x00, 0x01, 0x02, 0x00, 0x00, 0x00, 0x00,  // size 14, om 1, sm 2, mask 0
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  // no items, priority 0, flags 0, "", ""
});

// The same two files in the JSON form of zps build and zps dump --json.
const std::string kSystemJson = R"({"remarks": "R", "presets": [{
    "output_mode": 1, "sound_mode": 2, "subtypes": [2], "name": "A", "default_sound_mode": true,
    "priority": 3, "parameters": {"7": 1.0},
    "link_laws": [{"source": 0, "target": 111, "points": [[0.0, 2.0]]}]}]})";
const std::string kUserJson = R"({"user": {
    "enabled_subtypes": [{"output_mode": 1, "sound_mode": 2, "subtypes": [1, 2]}],
    "presets": [{"output_mode": 1, "sound_mode": 2, "name": ""}]}})";

ZpsDocument FromJson(const std::string& text) {
    WarningList warnings;
    return ZpsFromJson(nlohmann::json::parse(text), warnings);
}

TEST(ZpsBinary, WritesAndReadsTheFileByteForByte) {
    for (const auto& [json, file] :
         {std::make_pair(kSystemJson, kSystemFile), std::make_pair(kUserJson, kUserFile)}) {
        WarningList warnings;
        EXPECT_EQ(EncodeZps(FromJson(json), warnings), file);
        EXPECT_TRUE(warnings.Empty());
        ZpsDecodeNotes notes;
        const ZpsDocument document = DecodeZps(file, notes);
        EXPECT_TRUE(notes.warnings.Empty());
        EXPECT_EQ(notes.incomplete, "");
        std::ostringstream dump;
        PrintZpsJson(dump, document, PresetStreamOf(document));
        EXPECT_EQ(nlohmann::json::parse(dump.str()), nlohmann::json::parse(json));
        EXPECT_TRUE(LibraryRefusal(file).empty());
    }
}

TEST(ZpsBinary, RefusesValuesThatDoNotFitTheirFields) {
    const std::vector<std::pair<std::function<void(ZpsPreset&)>, std::string>> rows = {
        {[](ZpsPreset& p) { p.outputMode = 256; },
         "preset \"A\" (om 256, sm 2): output mode 256 does not fit in 8 bits"},
        {[](ZpsPreset& p) { p.parameters[65536] = 0.0; },
         "preset \"A\" (om 1, sm 2): parameter id 65536 does not fit in 16 bits"},
        {[](ZpsPreset& p) { p.name = std::string(256, 'n'); },
         "preset \"" + std::string(256, 'n') + "\" (om 1, sm 2): name is longer than 255 bytes"},
        {[](ZpsPreset& p) {
             p.chunks[1] = {1, 2};
         },
         "preset \"A\" (om 1, sm 2) has link laws and a raw chunk 1 at once"},
        {[](ZpsPreset& p) { p.chunks[2] = std::vector<char>(65536); },
         "preset \"A\" (om 1, sm 2): size of chunk 2 65536 does not fit in 16 bits"},
        {[](ZpsPreset& p) {
             for (unsigned int id = 0; id < 65535; ++id) p.parameters[id] = 0;
         },
         "preset \"A\" (om 1, sm 2): item count 65536 does not fit in 16 bits"},
    };
    for (const auto& [change, error] : rows) {
        ZpsDocument document = FromJson(kSystemJson);
        change(document.systemPresets->front());
        WarningList warnings;
        try {
            EncodeZps(document, warnings);
            ADD_FAILURE() << "accepted: " << error;
        } catch (const ZbctlError& e) {
            EXPECT_EQ(e.what(), error);
        }
    }
}

TEST(ZpsBinary, WritesTheRecordSizeOfALongPresetAsTheLibraryDoes) {
    // 65535 parameters: a record of 15 + 65535 * 13 = 851970 bytes behind its size field,
    // which holds 851970 modulo 65536 = 2.
    ZpsPreset preset;
    preset.outputMode = 1;
    preset.soundMode = 1;
    preset.name = "P";
    for (unsigned int id = 0; id < 65535; ++id) preset.parameters[id] = id;
    ZpsDocument document;
    document.systemPresets = std::vector<ZpsPreset>{preset};
    WarningList warnings;
    const std::vector<char> bytes = EncodeZps(document, warnings);
    ASSERT_EQ(bytes.size(), 15u + 2 + 851970);
    EXPECT_EQ(std::vector<char>(bytes.begin() + 13, bytes.begin() + 21),
              Bytes({0x01, 0x00, 0x02, 0x00, 0x01, 0x01, 0x00, 0x00}));  // 1 preset, size 2
    EXPECT_EQ(warnings.Lines(),
              std::vector<std::string>{
                  "preset \"P\" (om 1, sm 1): the record is 851970 bytes long, more than its "
                  "16-bit size field holds; the field says 2 (the size modulo 65536), as the "
                  "library's own writer writes it, and the library's reader does not use it"});
    EXPECT_TRUE(LibraryRefusal(bytes).empty());
    ZpsDecodeNotes notes;
    EXPECT_EQ(DecodeZps(bytes, notes).systemPresets->front().parameters, preset.parameters);
}

TEST(ZpsBinary, EveryTruncationAndCorruptionFailsCleanly) {
    for (const auto* file : {&kSystemFile, &kUserFile}) {
        for (size_t size = 0; size < file->size(); ++size) {
            std::vector<char> cut(file->begin(), file->begin() + static_cast<long>(size));
            ZpsDecodeNotes notes;
            if (size >= 4 && size < 8) {
                // Without a total size the library reads nothing more: the file reads as empty.
                const ZpsDocument document = DecodeZps(cut, notes);
                EXPECT_FALSE(document.systemPresets || document.user || document.remarks);
                EXPECT_NE(notes.incomplete, "");
                continue;
            }
            // A cut magic fails, and so does every cut behind the total size, which it declares.
            EXPECT_THROW(DecodeZps(cut, notes), ZbctlError) << "size " << size;
            if (size < 8) continue;
            // With the total size patched to the cut, the sections themselves meet the end: a
            // refusal at an offset, or a file read as cut short, unless the cut falls between
            // two sections.
            cut[4] = static_cast<char>(size);
            try {
                DecodeZps(cut, notes);
                EXPECT_TRUE(notes.incomplete != "" || (file == &kSystemFile && size == 15))
                    << "size " << size;
            } catch (const ZbctlError& e) {
                EXPECT_EQ(std::string(e.what()).rfind("offset ", 0), 0u) << e.what();
            }
        }
        for (size_t i = 0; i < file->size(); ++i) {
            for (int value : {0x00, 0x7F, 0xFF}) {
                std::vector<char> corrupt = *file;
                corrupt[i] = static_cast<char>(value);
                ZpsDecodeNotes notes;
                try {
                    DecodeZps(corrupt, notes);
                } catch (const ZbctlError&) {
                }
            }
        }
    }
}

}  // namespace
}  // namespace zbctl
}  // namespace TesselFX
