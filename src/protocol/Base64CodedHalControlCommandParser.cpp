#include "protocol/Base64CodedHalControlCommandParser.h"

#include <cstring>
#include <string>

#include "protocol/Base64.h"
#include "protocol/ZbAocTuningProtocol.h"

namespace TesselFX {

namespace {

std::vector<char> DecodeText(const char* text) {
    return text != nullptr ? Base64::Decode(text, std::strlen(text)) : std::vector<char>();
}

unsigned int DecodedRoom(unsigned int size) {
    return static_cast<unsigned int>(ZbAocTuningProtocol::DecodedSize(size));
}

}  // namespace

bool Base64CodedHalControlCommandParser::SetCommand(const zorbaudio_settings_t* settings,
                                                    const char* text, unsigned int) {
    const std::vector<char> frame = DecodeText(text);
    return HalControlCommandParser::SetCommand(settings, frame.data(),
                                               static_cast<unsigned int>(frame.size()));
}

bool Base64CodedHalControlCommandParser::GetCommand(const zorbaudio_settings_t* settings,
                                                    const char* text, unsigned int, char* reply,
                                                    unsigned int& replySize) {
    const std::vector<char> frame = DecodeText(text);
    return HalControlCommandParser::GetCommand(
        settings, frame.data(), static_cast<unsigned int>(frame.size()), reply, replySize);
}

bool Base64CodedHalControlCommandParser::IsSplitRequired(const std::vector<char>& reply,
                                                         unsigned int size) {
    return HalControlCommandParser::IsSplitRequired(reply, DecodedRoom(size));
}

bool Base64CodedHalControlCommandParser::SplitReplyData(const std::vector<char>& reply,
                                                        unsigned int size, std::vector<char>& out) {
    return HalControlCommandParser::SplitReplyData(reply, DecodedRoom(size), out);
}

bool Base64CodedHalControlCommandParser::CopyReplyData(const std::vector<char>& data, char* out,
                                                       unsigned int& size) {
    const std::string text = Base64::Encode(data);
    return CopyToReply(text.data(), text.size(), out, size);
}

}  // namespace TesselFX
