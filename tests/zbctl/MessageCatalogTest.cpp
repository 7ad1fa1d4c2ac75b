#include <gtest/gtest.h>

#include <sstream>

#include "LogCapture.h"
#include "MessageCatalog.h"
#include "ZbctlError.h"

namespace TesselFX {
namespace zbctl {
namespace {

std::vector<std::string> Split(const std::string& line) {
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) words.push_back(word);
    return words;
}

std::vector<char> EncodeLine(const std::string& line) {
    const std::vector<std::string> words = Split(line);
    return MessageCatalog::Encode(words[0],
                                  std::vector<std::string>(words.begin() + 1, words.end()));
}

TEST(MessageCatalog, EveryMessageReadsBackAsItWasWritten) {
    // Answers and the classes with an id of their own read back with no direction given.
    const std::vector<std::string> anyDirection = {
        "SetParameter 131 -3.5",
        "ReplyParameter 7 0.1",
        "SetParameterArray 1 2 131 -3.5 4294967295 1e+300",
        "SetParameterArray",
        "ReplyParameterArray 5 0.25",
        "SetChunk 3 00ff7f80",
        "SetChunk 0",
        "ReplyChunk 2 0102",
        "GetVersion dsp kit",
        "GetParameter 131",
        "GetParameterArray 1 2 3",
        "SetSoundMode 2",
        "SetOutputMode 1",
        "GetLinkLawParameterArray",
        "RequestLinkLawsSourceParameter 4",
        "UpdateLinkLawsSourceParameter 0 -20",
        "RequestLinkLawsSourceParameterArray 0 1",
        "UpdateLinkLawsSourceParameterArray 0 -20 1 0.5",
        "SetLinkLawsValue 0 -20 0.5",
        "RequestMeters 1:1:1 2:2:2:7 3:1:3:-1.5",
        "UpdateMeters 1:-12.5 4:0",
        "UpdateVersion 1.2.3",
        "GetEnable 0",
        "UpdateEnable 1",
        "SetEnable 1",
        "GetBypass 0",
        "UpdateBypass 0",
        "SetBypass 1",
        "Flush",
        "WaitForFlush",
        "StartTuningMode 1",
        "ReplyTuningModeValidation 1",
        "ReplyTuningMode 0",
        "SetFullPreset parameters 1 2 chunk 0a0b sources 0 -20",
        "SetFullPreset",
        "ReplyFullPreset parameters sources 1 0.5",
        "Multiple 0 2 77 616263",
        "RequestMultiple 1 2 77",
    };
    for (const std::string& line : anyDirection) {
        EXPECT_EQ(MessageCatalog::Describe(EncodeLine(line), MessageDirection::kAny), line);
    }
    // Requests that share their id with an answer read back as requests in that direction.
    for (const std::string line :
         {"GetChunk 6", "GetTuningModeValidation", "GetTuningMode", "GetFullPreset chunk 01"}) {
        EXPECT_EQ(MessageCatalog::Describe(EncodeLine(line), MessageDirection::kRequest), line);
    }
}

TEST(MessageCatalog, RefusesWhatItCannotRead) {
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"Nothing 1", "unknown message \"Nothing\"; zbctl msg --help lists them"},
        {"SetParameter 131 1 2", "too many fields; usage: SetParameter ID VALUE"},
        {"SetParameter -1 1",
         "\"-1\" is not a whole number from 0 to 4294967295; usage: SetParameter ID VALUE"},
        {"SetEnable 2", "\"2\" is not 0 or 1; usage: SetEnable 0|1"},
        {"SetChunk 1 abc",
         "\"abc\" is not bytes in hexadecimal, two digits each; usage: SetChunk INDEX [HEXBYTES]"},
        {"RequestMeters 1:1",
         "\"1:1\" is not INDEX:TYPE:MODE or INDEX:TYPE:MODE:RESET; usage: "
         "RequestMeters [INDEX:TYPE:MODE[:RESET]]..."},
    };
    for (const auto& [line, error] : rows) {
        try {
            EncodeLine(line);
            ADD_FAILURE() << "accepted: " << line;
        } catch (const ZbctlError& e) {
            EXPECT_EQ(e.what(), error);
        }
    }

    // Every truncation of a valid frame either reads as some message or is refused in words.
    const TesselFX::test::LogCapture quiet;
    const std::vector<char> frame =
        EncodeLine("SetFullPreset parameters 1 2 chunk 0a0b sources 0 -20");
    for (size_t size = 0; size < frame.size(); ++size) {
        try {
            MessageCatalog::Describe(std::vector<char>(frame.begin(), frame.begin() + size),
                                     MessageDirection::kAny);
        } catch (const ZbctlError&) {
        }
    }
}

}  // namespace
}  // namespace zbctl
}  // namespace TesselFX
