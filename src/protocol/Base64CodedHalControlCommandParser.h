#pragma once

#include "protocol/HalControlCommandParser.h"

namespace TesselFX {

/// The command parser of a real control object: commands arrive and replies leave as base64
/// text. A text of n characters carries (n >> 2) * 3 bytes, and replies are cut to fit that.
/// Decoding stops at the first character outside the alphabet; the frame checks then decide.
/// No lock of its own, as its base.
class Base64CodedHalControlCommandParser : public HalControlCommandParser {
  public:
    /// text is NUL-terminated; size is not used.
    bool SetCommand(const zorbaudio_settings_t* settings, const char* text,
                    unsigned int size) override;
    /// text is NUL-terminated; size is not used. replySize counts text characters.
    bool GetCommand(const zorbaudio_settings_t* settings, const char* text, unsigned int size,
                    char* reply, unsigned int& replySize) override;
    bool IsSplitRequired(const std::vector<char>& reply, unsigned int size) override;
    bool SplitReplyData(const std::vector<char>& reply, unsigned int size,
                        std::vector<char>& out) override;
    /// Writes data as text; size becomes the text's length, without a terminator, which the
    /// zeroed room supplies when the text is shorter.
    bool CopyReplyData(const std::vector<char>& data, char* out, unsigned int& size) override;
};

}  // namespace TesselFX
