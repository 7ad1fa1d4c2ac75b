#include "ZpsText.h"

#include "Printable.h"

namespace TesselFX {
namespace zbctl {

namespace {

std::string Subtypes(uint32_t mask) {
    if (mask == 0) return "base";
    std::string text = "subtype";
    for (unsigned int bit = 0; bit < 32; ++bit) {
        if (mask & (1u << bit)) text += " " + std::to_string(bit);
    }
    return text;
}

void PrintPreset(std::ostream& out, const ZpsPreset& preset) {
    out << "  om " << preset.outputMode << " sm " << preset.soundMode << " "
        << Subtypes(preset.subtypeMask) << ": \"" << Printable(preset.name) << "\"";
    if (preset.priority != 0) out << ", priority " << static_cast<unsigned>(preset.priority);
    if (preset.flags & 1) out << ", default sound mode";
    if (preset.flags & ~1u) out << ", flags 0x" << std::hex << preset.flags << std::dec;
    out << "\n";
    if (!preset.remarks.empty()) out << "    remarks: " << Printable(preset.remarks) << "\n";
    if (!preset.parameters.empty()) {
        out << "    parameters:";
        for (const auto& parameter : preset.parameters)
            out << " " << parameter.first << "=" << parameter.second;
        out << "\n";
    }
    for (const LinkLawEntry& entry : preset.linkLaws) {
        out << "    link law: source " << entry.SourceControlId << " (master "
            << entry.MasterControlId << ") -> parameter " << entry.TargetParamId << ", "
            << Printable(entry.ConversionMethod) << ":";
        for (size_t i = 0; i < entry.masterValues.size(); ++i) {
            out << " " << entry.masterValues[i] << "->"
                << (i < entry.targetValues.size() ? entry.targetValues[i] : 0.0f);
        }
        out << "\n";
    }
    for (const auto& chunk : preset.chunks) {
        out << "    chunk " << chunk.first << ": " << chunk.second.size() << " bytes\n";
    }
}

}  // namespace

void PrintZps(std::ostream& out, const ZpsDocument& document, const ZpsPresetStream& presets) {
    const auto print = [&out](const ZpsPreset& preset) { PrintPreset(out, preset); };
    if (document.information) {
        const ZpsInformation& info = *document.information;
        out << "information: value " << info.value << ", bytes " << unsigned(info.bytes[0]) << " "
            << unsigned(info.bytes[1]) << " " << unsigned(info.bytes[2]) << " "
            << unsigned(info.bytes[3]) << ", word " << info.word << "\n";
    }
    for (const auto& tag : document.tags)
        out << "tag " << tag.first << ": " << Printable(tag.second) << "\n";
    if (document.remarks) out << "remarks: " << Printable(*document.remarks) << "\n";
    if (document.systemPresets) {
        out << "system presets: " << presets.systemCount << "\n";
        presets.forEach(false, print);
    }
    if (document.user) {
        out << "user modes: " << document.user->enabledMasks.size() << " enabled subtype records\n";
        for (const ZpsEnabledMask& record : document.user->enabledMasks) {
            out << "  om " << record.outputMode << " sm " << record.soundMode
                << " enabled: " << Subtypes(record.mask) << "\n";
        }
        out << "user presets: " << presets.userCount << "\n";
        presets.forEach(true, print);
    }
}

}  // namespace zbctl
}  // namespace TesselFX
