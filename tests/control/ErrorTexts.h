#pragma once

#include <string>
#include <vector>

#include "LogCapture.h"

namespace TesselFX {
namespace test {

/// The texts of the captured error lines without the source position line of each, in order.
inline std::vector<std::string> ErrorTexts(const LogCapture& capture) {
    std::vector<std::string> texts;
    for (const auto& text : capture.Texts(4)) {
        if (text.find(".cpp:") == std::string::npos) {
            texts.push_back(text);
        }
    }
    return texts;
}

}  // namespace test
}  // namespace TesselFX
