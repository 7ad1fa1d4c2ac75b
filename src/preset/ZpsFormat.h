#pragma once

#include <cstdint>

namespace TesselFX {

/// Magic of a preset file: the bytes "BPBZ" read as a little-endian u32.
constexpr uint32_t kZpsMagic = 0x5A425042;

/// Section ids of a preset file; each section starts with its id byte.
enum ZpsSectionId : uint8_t {
    kZpsSectionInformation = 1,
    kZpsSectionTags = 2,
    kZpsSectionRemarks = 3,
    kZpsSectionPresets = 4,
    kZpsSectionUserModes = 5,
};

/// Item types inside a preset record.
enum ZpsItemType : uint8_t {
    kZpsItemParameter = 0,
    kZpsItemChunk = 3,
};

}  // namespace TesselFX
