#include "MessageCatalog.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <sstream>

#include "Printable.h"
#include "ZbctlError.h"
#include "protocol/Base64.h"
#include "protocol/BoolMessages.h"
#include "protocol/CharArrayMessages.h"
#include "protocol/ChunkMessages.h"
#include "protocol/FullPresetMessages.h"
#include "protocol/IdMessages.h"
#include "protocol/MultipleMessageData.h"
#include "protocol/ParameterArrayMessages.h"
#include "protocol/ParameterMessages.h"
#include "protocol/RequestMetersMessageData.h"
#include "protocol/RequestMultipleMessageData.h"
#include "protocol/SetLinkLawsValueMessageData.h"
#include "protocol/UintArrayMessages.h"
#include "protocol/UintMessages.h"
#include "protocol/UpdateMetersMessageData.h"
#include "protocol/ZbAocTuningProtocol.h"

namespace TesselFX {
namespace zbctl {

namespace {

// The request of id 49 takes any payload; zbctl sends it empty.
using GetTuningModeMessageData = MessageWithId<IdTypeMessageData, 49>;

// The field words of one message, read in order; every reader throws on a bad word.
class Words {
  public:
    explicit Words(const std::vector<std::string>& words) : m_words(words) {}

    bool AtEnd() const { return m_next == m_words.size(); }
    const std::string& Next() {
        if (AtEnd()) throw ZbctlError("too few fields");
        return m_words[m_next++];
    }
    uint32_t Uint() { return ToUint(Next()); }
    double Real() { return ToReal(Next()); }
    std::string Rest() {
        std::string text;
        while (!AtEnd()) text += (text.empty() ? "" : " ") + Next();
        return text;
    }

    static uint32_t ToUint(const std::string& word) {
        errno = 0;
        char* end = nullptr;
        const unsigned long long value = std::strtoull(word.c_str(), &end, 0);
        if (word.empty() || word[0] == '-' || *end != '\0' || errno != 0 || value > UINT32_MAX) {
            throw ZbctlError("\"" + word + "\" is not a whole number from 0 to 4294967295");
        }
        return static_cast<uint32_t>(value);
    }
    static double ToReal(const std::string& word) {
        errno = 0;
        char* end = nullptr;
        const double value = std::strtod(word.c_str(), &end);
        if (word.empty() || *end != '\0' || errno != 0 || !std::isfinite(value)) {
            throw ZbctlError("\"" + word + "\" is not a number");
        }
        return value;
    }

  private:
    const std::vector<std::string>& m_words;
    size_t m_next = 0;
};

// The shortest text that reads back to the same double.
std::string Real(double value) {
    char text[32];
    for (int digits = 15; digits <= 17; ++digits) {
        std::snprintf(text, sizeof(text), "%.*g", digits, value);
        if (std::strtod(text, nullptr) == value) break;
    }
    return text;
}

std::string Hex(const std::vector<char>& bytes) {
    std::string text;
    char pair[8];
    for (char byte : bytes) {
        std::snprintf(pair, sizeof(pair), "%02x", static_cast<unsigned char>(byte));
        text += pair;
    }
    return text;
}

std::vector<char> FromHex(const std::string& text) {
    if (text.size() % 2 != 0 ||
        text.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
        throw ZbctlError("\"" + text + "\" is not bytes in hexadecimal, two digits each");
    }
    std::vector<char> bytes;
    for (size_t i = 0; i < text.size(); i += 2) {
        bytes.push_back(static_cast<char>(std::stoul(text.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

// An optional last word of hexadecimal bytes: absent for no bytes.
std::vector<char> HexRest(Words& words) {
    return words.AtEnd() ? std::vector<char>() : FromHex(words.Next());
}

std::string Join(const std::vector<std::string>& parts) {
    std::string text;
    for (const std::string& part : parts) {
        if (!part.empty()) text += (text.empty() ? "" : " ") + part;
    }
    return text;
}

std::string Pairs(const std::map<unsigned int, double>& values) {
    std::vector<std::string> parts;
    for (const auto& entry : values) {
        parts.push_back(std::to_string(entry.first) + " " + Real(entry.second));
    }
    return Join(parts);
}

std::map<unsigned int, double> ReadPairs(Words& words) {
    std::map<unsigned int, double> values;
    while (!words.AtEnd()) {
        const uint32_t id = words.Uint();
        values[id] = words.Real();
    }
    return values;
}

// Splits "A:B:C" into its parts.
std::vector<std::string> Colons(const std::string& word) {
    std::vector<std::string> parts;
    std::istringstream stream(word);
    for (std::string part; std::getline(stream, part, ':');) parts.push_back(part);
    return parts;
}

// A meter value as the type of its meter shows it: a float, or a whole number.
std::string MeterValue(uint32_t type, const CMeterValue& value) {
    return type == CMeterInfo::kTypeFloat ? Real(value.GetFloat())
                                          : std::to_string(value.GetUInt32());
}

CMeterValue ReadMeterValue(uint32_t type, const std::string& word) {
    return type == CMeterInfo::kTypeFloat ? CMeterValue(static_cast<float>(Words::ToReal(word)))
                                          : CMeterValue(Words::ToUint(word));
}

// The field forms. Each names the base class it reads, its usage, how to build a message T
// from words and how to print a message of its base.
struct NoFields {
    using Base = MessageData;
    static constexpr const char* kUsage = "";
    template <typename T>
    static std::unique_ptr<MessageData> Read(Words&) {
        return std::make_unique<T>();
    }
    static std::string Print(const Base&) { return ""; }
};

struct UintField {
    using Base = UintTypeMessageData;
    static constexpr const char* kUsage = "VALUE";
    template <typename T>
    static std::unique_ptr<MessageData> Read(Words& words) {
        return std::make_unique<T>(words.Uint());
    }
    static std::string Print(const Base& message) { return std::to_string(message.GetUintValue()); }
};

struct BoolField {
    using Base = UintTypeMessageData;
    static constexpr const char* kUsage = "0|1";
    template <typename T>
    static std::unique_ptr<MessageData> Read(Words& words) {
        const std::string& word = words.Next();
        if (word != "0" && word != "1") throw ZbctlError("\"" + word + "\" is not 0 or 1");
        return std::make_unique<T>(word == "1");
    }
    static std::string Print(const Base& message) { return std::to_string(message.GetUintValue()); }
};

struct UintList {
    using Base = UintArrayTypeMessageData;
    static constexpr const char* kUsage = "ID...";
    template <typename T>
    static std::unique_ptr<MessageData> Read(Words& words) {
        std::vector<uint32_t> values;
        while (!words.AtEnd()) values.push_back(words.Uint());
        return std::make_unique<T>(values);
    }
    static std::string Print(const Base& message) {
        std::vector<std::string> parts;
        for (uint32_t value : message.GetValues()) parts.push_back(std::to_string(value));
        return Join(parts);
    }
};

struct TextField {
    using Base = CharArrayTypeMessageData;
    static constexpr const char* kUsage = "TEXT";
    template <typename T>
    static std::unique_ptr<MessageData> Read(Words& words) {
        return std::make_unique<T>(words.Rest());
    }
    static std::string Print(const Base& message) { return message.GetText(); }
};

struct ParameterFields {
    using Base = ParameterMessageData;
    static constexpr const char* kUsage = "ID VALUE";
    template <typename T>
    static std::unique_ptr<MessageData> Read(Words& words) {
        const uint32_t id = words.Uint();
        return std::make_unique<T>(id, words.Real());
    }
    static std::string Print(const Base& message) {
        return std::to_string(message.GetParameterId()) + " " + Real(message.GetParameterValue());
    }
};

struct ParameterPairs {
    using Base = ParameterArrayMessageData;
    static constexpr const char* kUsage = "[ID VALUE]...";
    template <typename T>
    static std::unique_ptr<MessageData> Read(Words& words) {
        return std::make_unique<T>(ReadPairs(words));
    }
    static std::string Print(const Base& message) { return Pairs(message.GetParameters()); }
};

struct ChunkFields {
    using Base = ChunkMessageData;
    static constexpr const char* kUsage = "INDEX [HEXBYTES]";
    template <typename T>
    static std::unique_ptr<MessageData> Read(Words& words) {
        const uint32_t index = words.Uint();
        return std::make_unique<T>(index, HexRest(words));
    }
    static std::string Print(const Base& message) {
        return Join({std::to_string(message.GetIndex()), Hex(message.GetData())});
    }
};

struct LinkLawsValueFields {
    using Base = SetLinkLawsValueMessageData;
    static constexpr const char* kUsage = "SOURCE SOURCE_VALUE MASTER_VALUE";
    template <typename T>
    static std::unique_ptr<MessageData> Read(Words& words) {
        const uint32_t id = words.Uint();
        const double first = words.Real();
        return std::make_unique<T>(id, first, words.Real());
    }
    static std::string Print(const Base& message) {
        return std::to_string(message.GetParameterId()) + " " + Real(message.GetFirstValue()) +
               " " + Real(message.GetSecondValue());
    }
};

struct MeterInfoFields {
    using Base = RequestMetersMessageData;
    static constexpr const char* kUsage = "[INDEX:TYPE:MODE[:RESET]]...";
    template <typename T>
    static std::unique_ptr<MessageData> Read(Words& words) {
        std::map<uint32_t, CMeterInfo> infos;
        while (!words.AtEnd()) {
            const std::string& word = words.Next();
            const std::vector<std::string> parts = Colons(word);
            if (parts.size() != 3 && parts.size() != 4) {
                throw ZbctlError("\"" + word +
                                 "\" is not INDEX:TYPE:MODE or INDEX:TYPE:MODE:RESET");
            }
            const uint32_t index = Words::ToUint(parts[0]);
            const uint32_t type = Words::ToUint(parts[1]);
            const uint32_t mode = Words::ToUint(parts[2]);
            infos[index] = parts.size() == 4
                               ? CMeterInfo(index, type, mode, ReadMeterValue(type, parts[3]))
                               : CMeterInfo(index, type, mode);
        }
        return std::make_unique<T>(infos);
    }
    static std::string Print(const Base& message) {
        std::vector<std::string> parts;
        for (const auto& entry : message.GetMeterInfos()) {
            const CMeterInfo& info = entry.second;
            parts.push_back(std::to_string(info.GetIndex()) + ":" + std::to_string(info.GetType()) +
                            ":" + std::to_string(info.GetMode()) +
                            (info.HasResetValue()
                                 ? ":" + MeterValue(info.GetType(), info.GetResetValue())
                                 : ""));
        }
        return Join(parts);
    }
};

struct MeterValueFields {
    using Base = UpdateMetersMessageData;
    static constexpr const char* kUsage = "[INDEX:VALUE]... (VALUE as a float)";
    template <typename T>
    static std::unique_ptr<MessageData> Read(Words& words) {
        std::map<uint32_t, CMeterValue> values;
        while (!words.AtEnd()) {
            const std::string& word = words.Next();
            const std::vector<std::string> parts = Colons(word);
            if (parts.size() != 2) throw ZbctlError("\"" + word + "\" is not INDEX:VALUE");
            values[Words::ToUint(parts[0])] = ReadMeterValue(CMeterInfo::kTypeFloat, parts[1]);
        }
        return std::make_unique<T>(values);
    }
    static std::string Print(const Base& message) {
        std::vector<std::string> parts;
        for (const auto& entry : message.GetMeterValues()) {
            parts.push_back(std::to_string(entry.first) + ":" +
                            MeterValue(CMeterInfo::kTypeFloat, entry.second));
        }
        return Join(parts);
    }
};

// "COUNTER TOTAL SESSION" of a piece or of a request for one.
template <typename Message>
std::string PieceHeader(const Message& message) {
    return std::to_string(message.GetCurrentMsgCounter()) + " " +
           std::to_string(message.GetTotalMsgCount()) + " " +
           std::to_string(message.GetSessionId());
}

struct PieceFields {
    using Base = MultipleMessageData;
    static constexpr const char* kUsage = "COUNTER TOTAL SESSION [HEXBYTES]";
    template <typename T>
    static std::unique_ptr<MessageData> Read(Words& words) {
        const uint32_t counter = words.Uint();
        const uint32_t total = words.Uint();
        const uint32_t session = words.Uint();
        return std::make_unique<T>(counter, total, session, HexRest(words));
    }
    static std::string Print(const Base& message) {
        return Join({PieceHeader(message), Hex(message.GetData())});
    }
};

struct PieceRequestFields {
    using Base = RequestMultipleMessageData;
    static constexpr const char* kUsage = "COUNTER TOTAL SESSION";
    template <typename T>
    static std::unique_ptr<MessageData> Read(Words& words) {
        const uint32_t counter = words.Uint();
        const uint32_t total = words.Uint();
        return std::make_unique<T>(counter, total, words.Uint());
    }
    static std::string Print(const Base& message) { return PieceHeader(message); }
};

// Flags of the sections present (parameters, link-law chunk, link-law sources), then
// "parameters" and its pairs, "chunk" and its bytes, "sources" and its pairs, each only when
// present.
struct FullPresetFields {
    using Base = FullPresetTypeMessageData;
    static constexpr const char* kUsage =
        "[parameters ID VALUE...] [chunk HEXBYTES] [sources ID VALUE...]";
    template <typename T>
    static std::unique_ptr<MessageData> Read(Words& words) {
        TesselTuning::FullPreset preset;
        std::vector<std::string> section;
        const auto take = [&]() {
            if (section.empty()) return;
            const std::vector<std::string> rest(section.begin() + 1, section.end());
            Words values(rest);
            if (section[0] == "parameters") {
                preset.hasParameters = true;
                preset.parameters = ReadPairs(values);
            } else if (section[0] == "chunk") {
                preset.hasLlChunk = true;
                preset.llChunk = HexRest(values);
            } else if (section[0] == "sources") {
                preset.hasLlSources = true;
                preset.llSources = ReadPairs(values);
            } else {
                throw ZbctlError("\"" + section[0] + "\" is not parameters, chunk or sources");
            }
            if (!values.AtEnd()) throw ZbctlError("too many fields");
            section.clear();
        };
        while (!words.AtEnd()) {
            const std::string& word = words.Next();
            if (word == "parameters" || word == "chunk" || word == "sources") take();
            section.push_back(word);
        }
        take();
        return std::make_unique<T>(preset, false);
    }
    static std::string Print(const Base& message) {
        const TesselTuning::FullPreset preset = message.GetFullPreset();
        std::vector<std::string> parts;
        if (preset.hasParameters) parts.push_back(Join({"parameters", Pairs(preset.parameters)}));
        if (preset.hasLlChunk) parts.push_back(Join({"chunk", Hex(preset.llChunk)}));
        if (preset.hasLlSources) parts.push_back(Join({"sources", Pairs(preset.llSources)}));
        return Join(parts);
    }
};

struct Entry {
    const char* name;
    uint32_t id;
    MessageDirection direction;
    const char* usage;
    std::function<std::unique_ptr<MessageData>(Words&)> read;
    std::function<std::string(const MessageData&)> print;
    std::function<std::unique_ptr<MessageData>()> make;
};

template <typename T, typename Fields>
Entry Make(const char* name, MessageDirection direction) {
    return {name,
            T::kId,
            direction,
            Fields::kUsage,
            [](Words& words) { return Fields::template Read<T>(words); },
            [](const MessageData& message) {
                return Fields::Print(static_cast<const typename Fields::Base&>(message));
            },
            [] { return std::unique_ptr<MessageData>(std::make_unique<T>()); }};
}

// Where two classes share an id, the answer comes first: it is the stricter reader.
const std::vector<Entry>& Catalog() {
    constexpr auto kRequest = MessageDirection::kRequest;
    constexpr auto kAnswer = MessageDirection::kAnswer;
    static const std::vector<Entry> kCatalog = {
        Make<SetParameterMessageData, ParameterFields>("SetParameter", kRequest),
        Make<ReplyParameterMessageData, ParameterFields>("ReplyParameter", kAnswer),
        Make<SetParameterArrayMessageData, ParameterPairs>("SetParameterArray", kRequest),
        Make<ReplyParameterArrayMessageData, ParameterPairs>("ReplyParameterArray", kAnswer),
        Make<SetChunkMessageData, ChunkFields>("SetChunk", kRequest),
        Make<ReplyChunkMessageData, ChunkFields>("ReplyChunk", kAnswer),
        Make<GetChunkMessageData, UintField>("GetChunk", kRequest),
        Make<GetVersionMessageData, TextField>("GetVersion", kRequest),
        Make<GetParameterMessageData, UintField>("GetParameter", kRequest),
        Make<GetParameterArrayMessageData, UintList>("GetParameterArray", kRequest),
        Make<SetSoundModeMessageData, UintField>("SetSoundMode", kRequest),
        Make<SetOutputModeMessageData, UintField>("SetOutputMode", kRequest),
        Make<GetLinkLawParameterArrayMessageData, NoFields>("GetLinkLawParameterArray", kRequest),
        Make<RequestLinkLawsSourceParameterMessageData, UintField>("RequestLinkLawsSourceParameter",
                                                                   kRequest),
        Make<UpdateLinkLawsSourceParameterMessageData, ParameterFields>(
            "UpdateLinkLawsSourceParameter", kAnswer),
        Make<RequestLinkLawsSourceParameterArrayMessageData, UintList>(
            "RequestLinkLawsSourceParameterArray", kRequest),
        Make<UpdateLinkLawsSourceParameterArrayMessageData, ParameterPairs>(
            "UpdateLinkLawsSourceParameterArray", kAnswer),
        Make<SetLinkLawsValueMessageData, LinkLawsValueFields>("SetLinkLawsValue", kRequest),
        Make<RequestMetersMessageData, MeterInfoFields>("RequestMeters", kRequest),
        Make<UpdateMetersMessageData, MeterValueFields>("UpdateMeters", kAnswer),
        Make<UpdateVersionMessageData, TextField>("UpdateVersion", kAnswer),
        Make<GetEnableMessageData, BoolField>("GetEnable", kRequest),
        Make<UpdateEnableMessageData, BoolField>("UpdateEnable", kAnswer),
        Make<SetEnableMessageData, BoolField>("SetEnable", kRequest),
        Make<GetBypassMessageData, BoolField>("GetBypass", kRequest),
        Make<UpdateBypassMessageData, BoolField>("UpdateBypass", kAnswer),
        Make<SetBypassMessageData, BoolField>("SetBypass", kRequest),
        Make<FlushMessageData, NoFields>("Flush", kRequest),
        Make<WaitForFlushMessageData, NoFields>("WaitForFlush", kRequest),
        Make<StartTuningModeMessageData, BoolField>("StartTuningMode", kRequest),
        Make<ReplyTuningModeValidationMessageData, BoolField>("ReplyTuningModeValidation", kAnswer),
        Make<GetTuningModeValidationMessageData, NoFields>("GetTuningModeValidation", kRequest),
        Make<ReplyTuningModeMessageData, BoolField>("ReplyTuningMode", kAnswer),
        Make<GetTuningModeMessageData, NoFields>("GetTuningMode", kRequest),
        Make<SetFullPresetMessageData, FullPresetFields>("SetFullPreset", kRequest),
        Make<ReplyFullPresetMessageData, FullPresetFields>("ReplyFullPreset", kAnswer),
        Make<GetFullPresetMessageData, FullPresetFields>("GetFullPreset", kRequest),
        Make<MultipleMessageData, PieceFields>("Multiple", MessageDirection::kAny),
        Make<RequestMultipleMessageData, PieceRequestFields>("RequestMultiple", kRequest),
    };
    return kCatalog;
}

}  // namespace

std::vector<char> MessageCatalog::Encode(const std::string& name,
                                         const std::vector<std::string>& fields) {
    for (const Entry& entry : Catalog()) {
        if (name != entry.name) continue;
        try {
            Words words(fields);
            const std::unique_ptr<MessageData> message = entry.read(words);
            if (!words.AtEnd()) throw ZbctlError("too many fields");
            return message->GetBuffer();
        } catch (const ZbctlError& e) {
            throw ZbctlError(std::string(e.what()) + "; usage: " + Join({entry.name, entry.usage}));
        }
    }
    throw ZbctlError("unknown message \"" + name + "\"; zbctl msg --help lists them");
}

std::string MessageCatalog::Describe(const std::vector<char>& frame, MessageDirection direction) {
    const int id = MessageData::GetMessageId(frame.data(), static_cast<unsigned int>(frame.size()));
    // Two passes: the classes of the wanted direction, then the others.
    for (const bool preferred : {true, false}) {
        for (const Entry& entry : Catalog()) {
            const bool matches = direction == MessageDirection::kAny ||
                                 entry.direction == MessageDirection::kAny ||
                                 entry.direction == direction;
            if (static_cast<int>(entry.id) != id || matches != preferred) continue;
            const std::unique_ptr<MessageData> message = entry.make();
            if (message->SetBuffer(frame.data(), static_cast<unsigned int>(frame.size()))) {
                return Join({entry.name, entry.print(*message)});
            }
        }
    }
    throw ZbctlError(id < 0 ? "not a message: fewer than 4 bytes or an invalid id"
                            : "no message of id " + std::to_string(id) + " reads these " +
                                  std::to_string(frame.size()) + " bytes");
}

std::vector<char> MessageCatalog::FrameOfText(const std::string& text, std::string& instance) {
    instance.clear();
    const char* const kSpace = " \t\r\n\v\f";
    const size_t first = text.find_first_not_of(kSpace);
    const std::string trimmed = first == std::string::npos
                                    ? ""
                                    : text.substr(first, text.find_last_not_of(kSpace) + 1 - first);
    if (trimmed.find(ZbAocTuningProtocol::kTesselDataKey) == std::string::npos) {
        return DecodeBase64Text(trimmed);
    }
    const std::string key = std::string(ZbAocTuningProtocol::kDspInstanceKey) + "=";
    if (trimmed.compare(0, key.size(), key) == 0) {
        instance = trimmed.substr(key.size(), trimmed.find(';') - key.size());
        if (instance.empty() || instance.size() > 10 ||
            instance.find_first_not_of("0123456789") != std::string::npos ||
            std::stoull(instance) > UINT32_MAX) {
            throw ZbctlError("the envelope's instance \"" + Printable(instance) +
                             "\" is not a number from 0 to 4294967295");
        }
    }
    std::string data;
    ZbAocTuningProtocol::ExtractData(trimmed, data);
    return DecodeBase64Text(data);
}

std::vector<char> MessageCatalog::DecodeBase64Text(const std::string& text) {
    const auto shown = [&text](size_t from) {
        return "\"" + Printable(text.substr(from, 16)) + (text.size() - from > 16 ? "...\"" : "\"");
    };
    if (text.empty()) throw ZbctlError("not base64: the text is empty");
    const size_t end = std::min(text.find_first_not_of(Base64::kAlphabet), text.size());
    const size_t stop = std::min(text.find_first_not_of('=', end), text.size());
    const size_t padding = stop - end;
    if (stop < text.size()) {
        throw ZbctlError(stop == 0 ? "not base64: " + shown(0)
                                   : "not base64: " + shown(stop) +
                                         " follows the base64 text at character " +
                                         std::to_string(stop + 1));
    }
    if (end % 4 == 1 || padding > 2 || (padding > 0 && (end + padding) % 4 != 0)) {
        throw ZbctlError("not base64: " + std::to_string(end) + " characters and " +
                         std::to_string(padding) + " \"=\" do not make whole bytes");
    }
    return Base64::Decode(text);
}

std::string MessageCatalog::UsageList() {
    std::string text;
    for (const Entry& entry : Catalog()) {
        text +=
            "  " + Join({entry.name, entry.usage}) + "  (id " + std::to_string(entry.id) + ")\n";
    }
    return text;
}

}  // namespace zbctl
}  // namespace TesselFX
