#pragma once

#include <cstdint>
#include <string>

namespace TesselFX {

/// The information and remarks sections of a preset file, kept as stored; nothing in the
/// library interprets them.
struct ZpsSectionInfo {
    uint32_t infoValue = 0;
    uint8_t infoBytes[4] = {0, 0, 0, 0};
    uint16_t infoWord = 0;
    std::string remarks;
};

}  // namespace TesselFX
