#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "preset/LinkLawEntry.h"

namespace TesselFX {
namespace zbctl {

/// The stored but uninterpreted fields of an Information section.
struct ZpsInformation {
    uint32_t value = 0;
    uint8_t bytes[4] = {0, 0, 0, 0};
    uint32_t word = 0;
    uint32_t reserved[2] = {0, 0};
};

/// One preset record as the file holds it. Link laws are the decoded form of chunk 1; the
/// other chunks stay raw bytes.
struct ZpsPreset {
    uint32_t outputMode = 0;
    uint32_t soundMode = 0;
    uint32_t subtypeMask = 0;
    std::string name;
    std::string remarks;
    uint16_t flags = 0;
    uint8_t priority = 0;
    std::map<unsigned int, double> parameters;
    std::vector<LinkLawEntry> linkLaws;
    std::map<unsigned int, std::vector<char>> chunks;
};

/// The enabled subtypes of one mode pair (a record of the UserModes section).
struct ZpsEnabledMask {
    uint32_t outputMode = 0;
    uint32_t soundMode = 0;
    uint32_t mask = 0;
};

/// The UserModes section: enabled subtypes per mode pair and the user presets.
struct ZpsUserModes {
    std::vector<ZpsEnabledMask> enabledMasks;
    std::vector<ZpsPreset> presets;
};

/// The whole content of a preset file: system presets, and a user part (enabled masks and
/// user presets) when the file has a UserModes section. Sections are written in id order.
struct ZpsDocument {
    std::optional<ZpsInformation> information;
    std::map<unsigned int, std::string> tags;
    std::optional<std::string> remarks;
    /// The Presets section, when the file has one.
    std::optional<std::vector<ZpsPreset>> systemPresets;
    /// The UserModes section, when the file has one.
    std::optional<ZpsUserModes> user;
};

}  // namespace zbctl
}  // namespace TesselFX
