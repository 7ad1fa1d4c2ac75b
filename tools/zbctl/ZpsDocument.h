#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
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

/// The presets of a document as a printer reads them, once each and in order, so that they need
/// not all be in memory at once (DecodeZps can hand them over as it reads them).
struct ZpsPresetStream {
    size_t systemCount = 0;
    size_t userCount = 0;
    /// Calls print with each system preset (user false) or each user preset, in order.
    std::function<void(bool user, const std::function<void(const ZpsPreset&)>& print)> forEach;
};

/// The stream of the presets that document holds; document must outlive it.
inline ZpsPresetStream PresetStreamOf(const ZpsDocument& document) {
    ZpsPresetStream stream;
    stream.systemCount = document.systemPresets ? document.systemPresets->size() : 0;
    stream.userCount = document.user ? document.user->presets.size() : 0;
    stream.forEach = [&document](bool user, const std::function<void(const ZpsPreset&)>& print) {
        const auto& presets = user ? document.user->presets : *document.systemPresets;
        for (const ZpsPreset& preset : presets) print(preset);
    };
    return stream;
}

}  // namespace zbctl
}  // namespace TesselFX
