#pragma once

#include <regex>
#include <string>
#include <vector>

#include "LogCapture.h"

namespace TesselFX {
namespace test {

/// The level-4 texts without the source position lines that precede each error text.
inline std::vector<std::string> ErrorTexts(const LogCapture& capture) {
    static const std::regex kPosition(".*\\.cpp:[0-9]+, ");
    std::vector<std::string> texts;
    for (const auto& text : capture.Texts(4)) {
        if (!std::regex_match(text, kPosition)) texts.push_back(text);
    }
    return texts;
}

/// The number of source position lines at level 4.
inline size_t PositionLines(const LogCapture& capture) {
    return capture.Texts(4).size() - ErrorTexts(capture).size();
}

}  // namespace test
}  // namespace TesselFX
