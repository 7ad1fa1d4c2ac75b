#pragma once

#include <string>
#include <vector>

#include "LogCapture.h"

namespace TesselFX {
namespace test {

/// Whether text is a source position line, "<file>.cpp:<line>, ".
inline bool IsPositionLine(const std::string& text) {
    const size_t colon = text.rfind(".cpp:");
    if (colon == std::string::npos || text.size() < colon + 8) return false;
    if (text.compare(text.size() - 2, 2, ", ") != 0) return false;
    const std::string line = text.substr(colon + 5, text.size() - colon - 7);
    return line.find_first_not_of("0123456789") == std::string::npos;
}

/// The level-4 texts without the source position lines that precede each error text.
inline std::vector<std::string> ErrorTexts(const LogCapture& capture) {
    std::vector<std::string> texts;
    for (const auto& text : capture.Texts(4)) {
        if (!IsPositionLine(text)) texts.push_back(text);
    }
    return texts;
}

/// The number of source position lines at level 4.
inline size_t PositionLines(const LogCapture& capture) {
    return capture.Texts(4).size() - ErrorTexts(capture).size();
}

}  // namespace test
}  // namespace TesselFX
