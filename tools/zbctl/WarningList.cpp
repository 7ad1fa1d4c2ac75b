#include "WarningList.h"

namespace TesselFX {
namespace zbctl {

std::vector<std::string> WarningList::Lines() const {
    std::vector<std::string> lines = m_texts;
    for (const auto& count : m_counts) {
        if (count.second <= kShownPerKind) continue;
        lines.push_back(std::to_string(count.second - kShownPerKind) +
                        " more warnings of the kind \"" + count.first + "\"");
    }
    return lines;
}

}  // namespace zbctl
}  // namespace TesselFX
