#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../dsp/Bytes.h"
#include "LogCapture.h"
#include "protocol/MessageData.h"

namespace TesselFX {
namespace test {

/// Parses a payload into message and expects a refusal whose error is the two lines of the
/// logger: the source position, then text.
inline void ExpectRefused(MessageData& message, const std::vector<char>& payload,
                          const std::string& text) {
    LogCapture capture;
    EXPECT_FALSE(message.SetPayload(payload.data(), static_cast<unsigned int>(payload.size())))
        << text;
    const std::vector<std::string> errors = capture.Texts(4);
    ASSERT_GE(errors.size(), 2u) << text;
    EXPECT_EQ(errors.back(), text);
    const std::string& position = errors[errors.size() - 2];
    EXPECT_NE(position.find(".cpp:"), std::string::npos) << position;
    EXPECT_EQ(position.substr(position.size() - 2), ", ") << position;
}

/// Parses a whole frame.
inline bool Load(MessageData& message, const std::vector<char>& frame) {
    return message.SetBuffer(frame.data(), static_cast<unsigned int>(frame.size()));
}

/// Concatenates byte lists.
inline std::vector<char> Join(std::initializer_list<std::vector<char>> parts) {
    std::vector<char> out;
    for (const auto& part : parts) out.insert(out.end(), part.begin(), part.end());
    return out;
}

}  // namespace test
}  // namespace TesselFX
