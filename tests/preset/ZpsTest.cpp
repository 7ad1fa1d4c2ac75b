#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

#include "LogCapture.h"
#include "PresetTestData.h"
#include "preset/PresetFactory.h"
#include "preset/PresetHandleFactory.h"
#include "preset/PresetSetFactory.h"
#include "preset/PresetUtils.h"
#include "preset/ZpsReader.h"

namespace TesselFX {
namespace {

using test::B;
using test::Concat;
using test::LogCapture;

// A system file, 212 bytes: sections Information, Tags, Remarks, an unknown id 9, Presets.
std::vector<char> SystemFile() {
    std::vector<char> file = {
        'B', 'P', 'B', 'Z', B(0xD4), 0, 0, 0,  // magic, total size 212
        // Information: value 0x11223344, bytes 1 2 3 4, word 0x00056677, two dropped words.
        0x15, 0, 0, 0, 1, 0x44, 0x33, 0x22, 0x11, 1, 2, 3, 4, 0x77, 0x66, 5, 0, 0, 0, 0, 0, 0, 0, 0,
        0,
        // Tags: (1, "Vol"), (2, "Rot").
        0x0C, 0, 0, 0, 2, 2, 1, 3, 'V', 'o', 'l', 2, 3, 'R', 'o', 't',
        // Remarks "sys".
        5, 0, 0, 0, 3, 3, 's', 'y', 's',
        // Unknown section 9: three bytes skipped behind the id.
        3, 0, 0, 0, 9, B(0xAA), B(0xBB), B(0xCC),
        // Presets: two.
        B(0x8E), 0, 0, 0, 4, 2, 0,
        // Preset (1,2,0): 99 bytes, 3 items, priority 0, flags 1, "Base", "".
        0x63, 0, 1, 2, 0, 0, 0, 0, 3, 0, 0, 0, 1, 0, 4, 'B', 'a', 's', 'e', 0,
        // Parameter 10 = 1.5.
        10, 0, 0, 8, 0, 0, 0, 0, 0, 0, 0, B(0xF8), 0x3F,
        // Parameter 11 = -2.0 with a size field of 4: eight bytes all the same.
        11, 0, 0, 4, 0, 0, 0, 0, 0, 0, 0, 0, B(0xC0),
        // Chunk 1, 50 bytes: the law on target 200 follows.
        1, 0, 3, 50, 0};
    file = Concat(file, test::LawOnTarget200());
    const std::vector<char> sub = {
        // Preset (1,2,1): 36 bytes, 2 items, priority 1, flags 0, "S", "r".
        0x24, 0, 1, 2, 1, 0, 0, 0, 2, 0, 1, 0, 0, 0, 1, 'S', 1, 'r',
        // Type 1 item 99 of two bytes: skipped.
        99, 0, 1, 2, 0, B(0xEE), B(0xEE),
        // Parameter 12 = 4.0.
        12, 0, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0x10, 0x40};
    return Concat(file, sub);
}

// The user file that the writer makes for the set of SystemFile() with masks 1 enabled on
// (1,2), parameter 10 = 3.0 and chunk 7 = {1, 2} in the base: 67 bytes.
std::vector<char> UserFile() {
    return {'B',  'P', 'B', 'Z', 0x43, 0, 0, 0,        // magic, total 67
            0x37, 0,   0,   0,   5,    0, 0,           // section size 55, id 5, reserved
            1,    0,   1,   0,   2,    0, 1, 0, 0, 0,  // one tag record: om 1, sm 2, tag 1
            1,    0,                                   // one preset
            0x26, 0,   1,   2,   0,    0, 0, 0, 2, 0, 0, 0, 1, 0, 4, 'B',  'a',
            's',  'e', 0,   10,  0,    0, 8, 0, 0, 0, 0, 0, 0, 0, 8, 0x40,  // parameter 10 = 3.0
            7,    0,   3,   2,   0,    1, 2};                               // chunk 7
}

std::unique_ptr<ZpsBufferReader> MakeReader() {
    return std::make_unique<ZpsBufferReader>(std::make_shared<PresetFactory>(),
                                             std::make_shared<PresetSetFactory>(),
                                             std::make_shared<PresetHandleFactory>());
}

// Parses through the reading window, as a file is read: the source gives at most step bytes a
// call and runs dry after given bytes, like a file that shrinks while it is read.
class StreamReader : public ZpsBufferReader {
  public:
    StreamReader()
        : ZpsBufferReader(std::make_shared<PresetFactory>(), std::make_shared<PresetSetFactory>(),
                          std::make_shared<PresetHandleFactory>()) {}
    bool ParseFrom(const std::vector<char>& file, bool isUser, size_t step,
                   size_t given = SIZE_MAX) {
        const size_t stop = std::min(given, file.size());
        size_t at = 0;
        return ParseStream(file.size(), isUser, [&](char* to, size_t count) {
            const size_t part = std::min({count, step, stop - at});
            std::memcpy(to, file.data() + at, part);
            at += part;
            return part;
        });
    }
};

// What a parse left: its result, every log line, the presets with their parameters and
// chunks, the tags, the remarks and the enabled masks.
std::string Outcome(bool parsed, const ZpsBufferReader& reader, const LogCapture& capture) {
    std::ostringstream out;
    out << parsed << "\n";
    for (const std::string& text : capture.Texts()) out << text << "\n";
    for (const PresetMap* presets : {&reader.GetSystemPresets(), &reader.GetUserPresets()}) {
        for (const auto& entry : *presets) {
            const IPreset& preset = *entry.second;
            out << preset.GetOutputMode() << "," << preset.GetSoundMode() << ","
                << preset.GetSubtypeMask() << " " << preset.GetName() << ":";
            for (const auto& parameter : preset.GetAllParameters()) {
                out << " " << parameter.first << "=" << parameter.second;
            }
            for (const auto& chunk : preset.GetAllChunks()) {
                out << " chunk " << chunk.first << ":" << std::string(chunk.second.begin(),
                                                                       chunk.second.end());
            }
            out << "\n";
        }
    }
    for (const auto& tag : reader.GetTags()) out << tag.first << tag.second << " ";
    out << reader.GetSystemSectionInfo().remarks << " " << reader.GetEnabledSubtypeMasks().size();
    return out.str();
}

// The outcome of parsing file from a buffer, and from the window in steps of step bytes.
std::string BufferOutcome(const std::vector<char>& file, bool isUser) {
    LogCapture capture;
    auto reader = MakeReader();
    const bool parsed = reader->ParseBuffer(file, isUser);
    return Outcome(parsed, *reader, capture);
}
std::string StreamOutcome(const std::vector<char>& file, bool isUser, size_t step) {
    LogCapture capture;
    StreamReader reader;
    const bool parsed = reader.ParseFrom(file, isUser, step);
    return Outcome(parsed, reader, capture);
}

// A system file of 2,168,680 bytes, more than four times the reading window: a section of an
// unknown id with 600,000 bytes that is skipped, then one preset (1,2,0)
// of 40,000 parameters (id i = i / 8.0) with, after every 5,000th, a chunk of 65,535 bytes
// (id 100 + n, bytes 'a' + n) and an item of type 1 of 65,535 bytes that is skipped.
std::vector<char> LargeFile() {
    std::vector<char> items;
    const auto head = [&items](uint16_t id, uint8_t type, uint16_t size) {
        const char bytes[] = {static_cast<char>(id & 0xFF), static_cast<char>(id >> 8),
                              static_cast<char>(type), static_cast<char>(size & 0xFF),
                              static_cast<char>(size >> 8)};
        items.insert(items.end(), bytes, bytes + 5);
    };
    uint16_t count = 0;
    for (unsigned int i = 0; i < 40000; ++i, ++count) {
        head(static_cast<uint16_t>(i), 0, 8);
        const double value = i / 8.0;
        char bytes[8];
        std::memcpy(bytes, &value, 8);
        items.insert(items.end(), bytes, bytes + 8);
        if (i % 5000 == 4999) {
            const uint16_t n = static_cast<uint16_t>(i / 5000);
            head(static_cast<uint16_t>(100 + n), 3, 65535);
            items.insert(items.end(), 65535, static_cast<char>('a' + n));
            head(7, 1, 65535);
            items.insert(items.end(), 65535, B(0xEE));
            count = static_cast<uint16_t>(count + 2);
        }
    }
    const std::vector<char> preset = Concat(
        {0, 0, 1, 2, 0, 0, 0, 0, static_cast<char>(count & 0xFF), static_cast<char>(count >> 8),
         0, 0, 1, 0, 4, 'B', 'a', 's', 'e', 0},
        items);
    const uint32_t section = static_cast<uint32_t>(preset.size() + 3);
    const uint32_t skipped = 600000;
    const uint32_t total = 8 + 5 + skipped + 4 + section;
    const auto le32 = [](uint32_t word) {
        return std::vector<char>{static_cast<char>(word & 0xFF), static_cast<char>(word >> 8),
                                 static_cast<char>(word >> 16), static_cast<char>(word >> 24)};
    };
    std::vector<char> file = Concat(Concat({'B', 'P', 'B', 'Z'}, le32(total)), le32(skipped));
    file.push_back(9);
    file.insert(file.end(), skipped, 0x55);
    return Concat(Concat(file, Concat(le32(section), {4, 1, 0})), preset);
}

TEST(ZpsBufferReader, ParsesEverySectionOfAGoldenSystemFile) {
    LogCapture capture;
    const std::vector<char> file = SystemFile();
    ASSERT_EQ(file.size(), 212u);
    auto reader = MakeReader();
    ASSERT_TRUE(reader->ParseBuffer(file, false));
    EXPECT_TRUE(capture.Has(1, "ParseBuffer: isUserZps = false"));
    const ZpsSectionInfo& info = reader->GetSystemSectionInfo();
    EXPECT_EQ(info.infoValue, 0x11223344u);
    EXPECT_EQ(info.infoBytes[3], 4);
    EXPECT_EQ(info.infoWord, 0x6677);
    EXPECT_EQ(info.remarks, "sys");
    EXPECT_EQ(reader->GetTags(), (std::map<unsigned int, std::string>{{1, "Vol"}, {2, "Rot"}}));
    EXPECT_TRUE(capture.Has(1, "SectionTags 2 Rot"));
    EXPECT_TRUE(capture.Has(1,
                            "ZpsBufferReader::ParsePreset : size 99 outputMode 1 soundMode 2 "
                            "subTypeMask 0 parametersCount 3"));

    const PresetMap& presets = reader->GetSystemPresets();
    ASSERT_EQ(presets.size(), 2u);
    const auto base = presets.at({1, 2, 0});
    EXPECT_EQ(base->GetName(), "Base");
    EXPECT_TRUE(base->IsDefaultSoundMode());
    EXPECT_EQ(base->GetAllParameters(), (std::map<unsigned int, double>{{10, 1.5}, {11, -2.0}}));
    std::vector<char> chunk;
    EXPECT_TRUE(base->GetChunk(1, chunk));
    EXPECT_EQ(chunk, test::LawOnTarget200());
    EXPECT_EQ(base->GetLinkLawEntries().size(), 1u);
    const auto sub = presets.at({1, 2, 1});
    EXPECT_EQ(sub->GetRemarks(), "r");
    EXPECT_EQ(sub->GetPriority(), 1);
    EXPECT_EQ(sub->GetAllParameters(), (std::map<unsigned int, double>{{12, 4.0}}));
    EXPECT_EQ(sub->GetChunkCount(), 0u);

    auto set = reader->Read();
    ASSERT_NE(set, nullptr);
    EXPECT_EQ(set->GetOmSms(), (std::set<OmSm>{{1, 2}}));
    EXPECT_EQ(set->GetTags().size(), 2u);
}

TEST(ZpsBufferReader, ExcludesParametersAndMergesTheUserFile) {
    LogCapture capture;
    auto reader = MakeReader();
    reader->SetExcludedParameters({10, 12});
    ASSERT_TRUE(reader->ParseBuffer(SystemFile(), false));
    std::vector<char> user = UserFile();
    ASSERT_TRUE(reader->ParseBuffer(user, true));
    EXPECT_TRUE(capture.Has(1, "User tags (1)"));
    EXPECT_TRUE(capture.Has(
        1, "ZpsReader::ParseSectionUserModes Loaded user om [1] sm [2] tag [0x00000001]"));
    EXPECT_TRUE(capture.Has(1, "User presets (1)"));
    EXPECT_EQ(reader->GetSystemPresets().at({1, 2, 0})->GetAllParameters(),
              (std::map<unsigned int, double>{{11, -2.0}}));
    // Excluded in the user file too; the chunk stays.
    const auto stored = reader->GetUserPresets().at({1, 2, 0});
    EXPECT_TRUE(stored->GetAllParameters().empty());
    EXPECT_EQ(stored->GetChunkIndices(), std::vector<unsigned int>{7});
    EXPECT_EQ(reader->GetEnabledSubtypeMasks(), (std::map<OmSm, SubtypeMasks>{{OmSm{1, 2}, 1u}}));
    auto set = reader->Read();
    ASSERT_NE(set, nullptr);
    EXPECT_EQ(set->GetEnabledSubtypeMasks(1, 2), 1u);
    auto handle = set->RequestPresetHandle(1, 2);
    EXPECT_EQ(handle->GetSubtypeMasks(), 1u);
    EXPECT_EQ(handle->GetAllParameters(), (std::map<unsigned int, double>{{11, -2.0}}));

    // Refilling an existing set.
    auto other = MakeReader();
    ASSERT_TRUE(other->ParseBuffer(SystemFile(), false));
    auto refilled = other->Read();
    EXPECT_TRUE(reader->Read(refilled));
    EXPECT_EQ(refilled->GetUserPreset(1, 2, 0)->GetChunkIndices(), std::vector<unsigned int>{7});
    EXPECT_FALSE(reader->Read(std::shared_ptr<IPresetSet>()));
}

TEST(ZpsBufferReader, RejectsBadHeadersAndEndsOnShortSections) {
    LogCapture capture;
    std::vector<char> file = SystemFile();
    file[0] = 'X';
    EXPECT_FALSE(MakeReader()->ParseBuffer(file, false));
    EXPECT_TRUE(capture.Has(4, "read bpbz tag 0x1514295384 fail"));
    EXPECT_FALSE(MakeReader()->ParseBuffer({'B', 'P'}, false));
    EXPECT_TRUE(capture.Has(4, "read bpbz tag 0x0 fail"));
    file = SystemFile();
    file.pop_back();
    EXPECT_FALSE(MakeReader()->ParseBuffer(file, false));
    EXPECT_TRUE(capture.Has(4, "size in zps 212 does not match the real size 211"));

    // Magic and total alone; magic alone (the total reads as 0).
    auto reader = MakeReader();
    EXPECT_TRUE(reader->ParseBuffer({'B', 'P', 'B', 'Z', 8, 0, 0, 0}, false));
    EXPECT_TRUE(reader->GetSystemPresets().empty());
    EXPECT_TRUE(MakeReader()->ParseBuffer({'B', 'P', 'B', 'Z'}, false));
    EXPECT_EQ(reader->Read()->IsPresetsLoaded(), false);
    EXPECT_EQ(MakeReader()->Read(), nullptr);

    // A section reaching past the end ends parsing with success; earlier sections stay.
    file = SystemFile();
    file[8 + 25 + 16 + 9 + 8] = B(0x8F);
    reader = MakeReader();
    EXPECT_TRUE(reader->ParseBuffer(file, false));
    EXPECT_TRUE(reader->GetSystemPresets().empty());
    EXPECT_EQ(reader->GetSystemSectionInfo().remarks, "sys");

    // A parser that stops early leaves the cursor inside its section: a remarks section
    // declared two bytes longer than its string is followed by a size read from those bytes.
    std::vector<char> early = {'B', 'P', 'B', 'Z', 0, 0, 0, 0, 7, 0, 0,
                               0,   3,   1,   'a', 3, 0, 0, 0, 3, 1, 'b'};
    reader = MakeReader();
    EXPECT_TRUE(reader->ParseBuffer(early, false));
    EXPECT_EQ(reader->GetSystemSectionInfo().remarks, "b");

    // Failures inside sections.
    const std::vector<char> header = {'B', 'P', 'B', 'Z', 0, 0, 0, 0};
    const auto fails = [&](std::vector<char> body, const std::string& text) {
        capture.Clear();
        EXPECT_FALSE(MakeReader()->ParseBuffer(Concat(header, body), false)) << text;
        EXPECT_TRUE(capture.Has(4, text)) << text;
    };
    fails({1, 0, 0, 0, 1, 1, 2}, "ParseSectionInformation error");
    fails({1, 0, 0, 0, 3, 5, 'a'}, "ParseSectionRemarks error");
    fails({1, 0, 0, 0, 2}, "ParseSectionTags parse count error");
    fails({1, 0, 0, 0, 2, 1, 1, 9, 'a'}, "ParseSectionTags parse value or name error");
    fails({1, 0, 0, 0, 4, 1}, "ParseSectionPresets read count error");
    fails({1, 0, 0, 0, 4, 1, 0, 3, 0}, "ParseSectionPresets parse preset error");
    fails({1, 0, 0, 0, 5, 0, 0, 1, 0, 1, 0}, "ParseSectionUserModes error");
    fails({1, 0, 0, 0, 5, 0, 0, 0, 0}, "ParseSectionUserModes error");
    fails({1, 0, 0, 0, 5, 0, 0, 0, 0, 1, 0, 3}, "ParseSectionPresets error");
    // An item of an unknown type larger than the rest skips to the end: 36 bytes, one section
    // 4 with preset (1,2,0) whose one item, 9 of type 1, declares 64 bytes.
    const std::vector<char> skipping = Concat(
        header,
        {1, 0, 0, 0, 4, 1, 0, 0x14, 0, 1, 2, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 9, 0, 1, 0x40, 0});
    ASSERT_EQ(skipping.size(), 36u);
    reader = MakeReader();
    EXPECT_TRUE(reader->ParseBuffer(skipping, false));
    ASSERT_EQ(reader->GetSystemPresets().size(), 1u);
    EXPECT_EQ(reader->GetSystemPresets().begin()->first, (OmSmSubtypeMask{1, 2, 0}));
    EXPECT_TRUE(reader->GetSystemPresets().begin()->second->GetAllParameters().empty());
    // An item behind such a skip finds nothing left to read.
    std::vector<char> twoItems = skipping;
    twoItems[23] = 2;
    fails(std::vector<char>(twoItems.begin() + 8, twoItems.end()), "ParsePreset error");
    // A preset with no items is valid.
    EXPECT_TRUE(MakeReader()->ParseBuffer(
        Concat(header, {1, 0, 0, 0, 4, 1, 0, 0x0E, 0, 1, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}),
        false));
}

// Every cut and many flipped bytes of both files: never a crash, never a read past the end,
// and the same presets and log lines whether parsed from a buffer or through the window in
// steps of 1 or 5 bytes.
TEST(ZpsBufferReader, EveryTruncationAndCorruptionReadsAlikeFromABufferAndAStream) {
    const auto alike = [](const std::vector<char>& file, bool isUser) {
        const std::string buffer = BufferOutcome(file, isUser);
        for (size_t step : {1, 5}) {
            ASSERT_EQ(StreamOutcome(file, isUser, step), buffer) << file.size() << " " << step;
        }
    };
    for (const std::vector<char>& file : {SystemFile(), Concat(SystemFile(), UserFile())}) {
        for (size_t cut = 0; cut <= file.size(); ++cut) {
            alike(std::vector<char>(file.begin(), file.begin() + cut), false);
        }
        for (size_t i = 0; i < file.size(); ++i) {
            for (unsigned char flip : {0x01, 0x10, 0x80, 0xFF}) {
                std::vector<char> bad = file;
                bad[i] = static_cast<char>(bad[i] ^ flip);
                std::map<unsigned int, double> parameters;
                std::vector<char> laws;
                PresetUtils::GetParametersFromZpsBuffer(bad, 1, 2, 1, {}, parameters, laws);
                alike(bad, true);
            }
        }
    }
    const std::vector<char> user = UserFile();
    for (size_t cut = 0; cut <= user.size(); ++cut) {
        alike(std::vector<char>(user.begin(), user.begin() + cut), true);
    }
}

// A file larger than the window, whose records lie across the window's edges at many offsets,
// reads as from a buffer; through the window from disk too.
TEST(ZpsBufferReader, AFileLargerThanTheWindowReadsAlikeFromABufferAndAStream) {
    const std::vector<char> file = LargeFile();
    ASSERT_EQ(file.size(), 2168680u);
    ASSERT_GT(file.size(), 4 * ZpsBufferReader::kWindowSize);
    const std::string buffer = BufferOutcome(file, false);
    EXPECT_NE(buffer.find(" 39999=4999.88 chunk 100:aaaa"), std::string::npos);
    EXPECT_NE(buffer.find(" chunk 107:hhhh"), std::string::npos);
    for (size_t step : {file.size(), size_t{4093}, size_t{65536}}) {
        EXPECT_EQ(StreamOutcome(file, false, step), buffer) << step;
    }

    char path[] = "/tmp/zps_large_XXXXXX";
    const int descriptor = mkstemp(path);
    ASSERT_GE(descriptor, 0);
    ASSERT_EQ(write(descriptor, file.data(), file.size()), static_cast<ssize_t>(file.size()));
    close(descriptor);
    ZpsReader reader(path, "", std::make_shared<PresetFactory>(),
                     std::make_shared<PresetSetFactory>(), std::make_shared<PresetHandleFactory>());
    auto set = reader.Read();
    std::remove(path);
    ASSERT_NE(set, nullptr);
    const auto expected = MakeReader();
    ASSERT_TRUE(expected->ParseBuffer(file, false));
    const auto read = reader.GetSystemPresets().at({1, 2, 0});
    const auto parsed = expected->GetSystemPresets().at({1, 2, 0});
    EXPECT_EQ(read->GetAllParameters(), parsed->GetAllParameters());
    EXPECT_EQ(read->GetAllChunks(), parsed->GetAllChunks());
}

// A file that shrinks while it is read, its source running dry after given bytes: the parse
// fails with the size line of the bytes read and no line of the record it stopped in.
TEST(ZpsBufferReader, AFileThatShrinksWhileReadFailsWithTheSizeLine) {
    const std::vector<char> small = SystemFile();
    const std::vector<char> large = LargeFile();
    struct Case {
        const std::vector<char>& file;
        size_t given, step;
        std::string error;
    };
    const Case cases[] = {
        {small, 2, 1, "read bpbz tag 0x0 fail"},
        {small, 6, 1, "size in zps 0 does not match the real size 6"},
        {small, 8, 1, "size in zps 212 does not match the real size 8"},
        {small, 60, 1, "size in zps 212 does not match the real size 60"},  // in the tags
        {small, 70, 1, "size in zps 212 does not match the real size 70"},  // skipped section
        {small, 100, 5, "size in zps 212 does not match the real size 100"},  // in a preset
        {small, 211, 1, "size in zps 212 does not match the real size 211"},
        {large, 30, 4096, "size in zps 2168680 does not match the real size 30"},
        {large, 300000, 4096, "size in zps 2168680 does not match the real size 300000"},
        {large, 900000, 4096, "size in zps 2168680 does not match the real size 900000"},
        {large, 2168679, 65536, "size in zps 2168680 does not match the real size 2168679"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.error);
        LogCapture capture;
        StreamReader reader;
        EXPECT_FALSE(reader.ParseFrom(c.file, false, c.step, c.given));
        EXPECT_EQ(capture.ErrorTexts(), std::vector<std::string>{c.error});
        EXPECT_EQ(reader.Read(), nullptr);
    }
}

// Found by fuzzing: the only preset of (1,2) has the mask 0x3D of five bits and there is no
// base preset. Reading the pair's merged view threw std::out_of_range.
TEST(ZpsBufferReader, APairWithoutBasePresetOrWithAMultiBitMaskMergesToNothing) {
    LogCapture capture;
    const std::vector<char> file = {
        'B', 'P', 'B', 'Z', 0x2C, 0, 0, 0,  // magic, total 44
        0x20, 0, 0, 0, 4, 1, 0,             // presets section of 32 bytes, one preset
        // Preset (1,2,0x3D): 27 bytes, 1 item, priority 0, flags 0, no names.
        0x1B, 0, 1, 2, 0x3D, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 12, 0, 0, 8, 0, 0, 0, 0, 0, 0, 0,
        0x10, 0x40};  // parameter 12 = 4.0
    ASSERT_EQ(file.size(), 44u);
    auto reader = MakeReader();
    ASSERT_TRUE(reader->ParseBuffer(file, false));
    auto set = reader->Read();
    ASSERT_TRUE(set);
    EXPECT_EQ(set->GetSupportedSubtypeMasks(1, 2), 0x3Du);
    auto handle = set->RequestPresetHandle(1, 2);
    ASSERT_TRUE(handle);
    handle->SetSubtypeMasks(0x3D);
    EXPECT_TRUE(handle->GetAllParameters().empty());
    for (const char* mask : {"0x0", "0x1", "0x4", "0x8", "0x10", "0x20"}) {
        EXPECT_TRUE(capture.Has(
            4, std::string("MergePresets om 1 sm 2 subTypeMask ") + mask + ": no preset"))
            << mask;
    }
}

TEST(PresetUtils, ReadsParametersFromABuffer) {
    LogCapture capture;
    std::map<unsigned int, double> parameters;
    std::vector<char> laws;
    ASSERT_TRUE(
        PresetUtils::GetParametersFromZpsBuffer(SystemFile(), 1, 2, 0, {}, parameters, laws));
    EXPECT_EQ(parameters, (std::map<unsigned int, double>{{10, 1.5}, {11, -2.0}}));
    EXPECT_EQ(laws, test::LawOnTarget200());
    // Sub preset 1 over the base, parameter 11 excluded.
    ASSERT_TRUE(
        PresetUtils::GetParametersFromZpsBuffer(SystemFile(), 1, 2, 3, {11}, parameters, laws));
    EXPECT_EQ(parameters, (std::map<unsigned int, double>{{10, 1.5}, {12, 4.0}}));
    EXPECT_FALSE(
        PresetUtils::GetParametersFromZpsBuffer(SystemFile(), 1, 3, 0, {}, parameters, laws));
    EXPECT_FALSE(PresetUtils::GetParametersFromZpsBuffer({'x'}, 1, 2, 0, {}, parameters, laws));
}

std::shared_ptr<IPresetSet> ChangedSet() {
    auto reader = MakeReader();
    EXPECT_TRUE(reader->ParseBuffer(SystemFile(), false));
    auto set = reader->Read();
    EXPECT_TRUE(set->SetSubtypeMasks(1, 2, 1));
    EXPECT_TRUE(set->SetParameter(10, 3.0, 1, 2, 0, false));
    EXPECT_TRUE(set->SetChunk(7, {1, 2}, 1, 2, 0));
    return set;
}

TEST(PresetUtils, WritesTheGoldenUserFileAndReadsItBack) {
    LogCapture capture;
    std::vector<char> out;
    EXPECT_FALSE(PresetUtils::GetSerializedUserSectionFromPresetSet(nullptr, out));
    EXPECT_TRUE(capture.Has(4, "pPresetSet is NULL"));
    ASSERT_TRUE(PresetUtils::GetSerializedUserSectionFromPresetSet(ChangedSet(), out));
    EXPECT_EQ(out, UserFile());
    EXPECT_TRUE(capture.Has(1, "totalSize 67"));
    EXPECT_TRUE(capture.Has(1, "Write The number of User enabled subtypeMask 1"));
    EXPECT_TRUE(capture.Has(1, "Write Saved user tag om [1] sm [2] tag [0x00000001]"));
    EXPECT_TRUE(capture.Has(2, "Showing preset [Base] for OM [1] and SM[2]"));

    // Round trip with two changed presets and user link laws.
    auto set = ChangedSet();
    ASSERT_TRUE(set->SetParameter(12, 8.0, 1, 2, 1, false));
    ASSERT_TRUE(set->SetChunk(1, test::LawOnTarget100(), 1, 2, 1));
    ASSERT_TRUE(PresetUtils::GetSerializedUserSectionFromPresetSet(set, out));
    auto reader = MakeReader();
    ASSERT_TRUE(reader->ParseBuffer(SystemFile(), false));
    ASSERT_TRUE(reader->ParseBuffer(out, true));
    const PresetMap& users = reader->GetUserPresets();
    ASSERT_EQ(users.size(), 2u);
    for (const auto& user : users) {
        auto original = set->GetUserPreset(user.first.om, user.first.sm, user.first.subtypeMask);
        EXPECT_EQ(user.second->GetAllParameters(), original->GetAllParameters());
        EXPECT_EQ(user.second->GetAllChunks(), original->GetAllChunks());
    }
    auto reread = reader->Read();
    auto handle = reread->RequestPresetHandle(1, 2);
    // The user law replaces the system law of the base.
    ASSERT_EQ(handle->GetLinkLawEntries().size(), 1u);
    EXPECT_EQ(handle->GetLinkLawEntries()[0].TargetParamId, 100u);
    EXPECT_EQ(handle->GetAllParameters(),
              (std::map<unsigned int, double>{{10, 3.0}, {11, -2.0}, {12, 8.0}}));

    // An empty chunk is left out of the items but stays counted.
    auto empty = MakeReader();
    ASSERT_TRUE(empty->ParseBuffer(SystemFile(), false));
    auto emptySet = empty->Read();
    ASSERT_TRUE(emptySet->SetChunk(9, {}, 1, 2, 1));
    ASSERT_TRUE(PresetUtils::GetSerializedUserSectionFromPresetSet(emptySet, out));
    // Total 42 with five trailing zero bytes, section size 25, preset size 16.
    EXPECT_EQ(out, std::vector<char>({'B', 'P', 'B', 'Z', 42, 0,  0,   0, 25,  0, 0, 0, 5, 0,
                                      0,   0,   0,   1,   0,  16, 0,   1, 2,   1, 0, 0, 0, 1,
                                      0,   1,   0,   0,   0,  1,  'S', 1, 'r', 0, 0, 0, 0, 0}));
}

TEST(ZpsReader, LoadsBothFilesFromDisk) {
    LogCapture capture;
    char directory[] = "/tmp/zps_test_XXXXXX";
    ASSERT_NE(mkdtemp(directory), nullptr);
    const std::string base = directory;
    const auto write = [](const std::string& path, const std::vector<char>& bytes) {
        std::ofstream(path, std::ios::binary).write(bytes.data(), bytes.size());
    };
    write(base + "/system.zps", SystemFile());
    write(base + "/user.zps", UserFile());
    write(base + "/empty.zps", {});
    const auto factories = [](const std::string& system, const std::string& user) {
        return ZpsReader(system, user, std::make_shared<PresetFactory>(),
                         std::make_shared<PresetSetFactory>(),
                         std::make_shared<PresetHandleFactory>());
    };

    // Each pair of paths: whether a set comes out, and the line that tells why.
    struct Case {
        std::string system, user;
        bool read;
        uint32_t level;
        std::string text;
    };
    const std::string system = base + "/system.zps";
    const Case cases[] = {
        {system, base + "/user.zps", true, 1,
         "LoadFile zps : " + base + "/user.zps isUserZps : yes"},
        {system, "", true, 1, "user zps is empty string"},
        {system, base + "/empty.zps", true, 1, "the size of user zps is 0"},
        // A device has no size to seek to: as an empty user file it is fine, as a system file not.
        {system, "/dev/null", true, 1, "the size of user zps is 0"},
        {"/dev/null", "", false, 4, "LoadFile: /dev/null size = 0"},
        {system, base + "/none.zps", false, 4,
         "open file (" + base + "/none.zps) failed! 2, No such file or directory"},
        {base + "/empty.zps", "", false, 4, "LoadFile: " + base + "/empty.zps size = 0"},
        {"", "", false, 4, "system zps is empty string"},
        {base, "", false, 4, "open file (" + base + ") failed! 21, Is a directory"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.system + " " + c.user);
        capture.Clear();
        EXPECT_EQ(factories(c.system, c.user).Read() != nullptr, c.read);
        EXPECT_TRUE(capture.Has(c.level, c.text));
    }

    ZpsReader reader = factories(system, base + "/user.zps");
    auto set = reader.Read();
    ASSERT_NE(set, nullptr);
    EXPECT_EQ(set->GetUserPreset(1, 2, 0)->GetAllParameters(),
              (std::map<unsigned int, double>{{10, 3.0}}));
    EXPECT_TRUE(reader.Read(set));
    EXPECT_FALSE(factories(system, base + "/none.zps").Read(set));
    ZpsReader directorySystem = factories(base, "");
    EXPECT_EQ(directorySystem.Read(), nullptr);
    directorySystem.SetZps(system, "");
    EXPECT_NE(directorySystem.Read(), nullptr);
    ZpsReader fromChars(system.c_str(), nullptr, std::make_shared<PresetFactory>(),
                        std::make_shared<PresetSetFactory>(),
                        std::make_shared<PresetHandleFactory>());
    EXPECT_NE(fromChars.Read(), nullptr);

    for (const char* name : {"/system.zps", "/user.zps", "/empty.zps"}) {
        std::remove((base + name).c_str());
    }
    rmdir(directory);
}

}  // namespace
}  // namespace TesselFX
