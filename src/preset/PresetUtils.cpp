#include "preset/PresetUtils.h"

#include <algorithm>

#include "log/TesselLog.h"
#include "preset/BinaryPrimitives.h"
#include "preset/ParameterMaps.h"
#include "preset/PresetFactory.h"
#include "preset/PresetHandleFactory.h"
#include "preset/PresetSetFactory.h"
#include "preset/ZpsBufferReader.h"

namespace TesselFX {

namespace {

// Magic, total size, section size, section id, reserved, tag count, preset count.
constexpr size_t kUserFileFixedSize = 19;
constexpr size_t kTagRecordSize = 8;
// Preset header without its two strings, plus the two string length bytes.
constexpr size_t kPresetFixedSize = 16;
constexpr size_t kParameterItemSize = 13;
constexpr size_t kChunkItemHeaderSize = 5;
constexpr uint8_t kUserModesSectionId = 5;

size_t PresetRecordSize(const IPreset& preset) {
    size_t size = kPresetFixedSize + preset.GetName().size() + preset.GetRemarks().size() +
                  kParameterItemSize * preset.GetParameterCount();
    for (const auto& chunk : preset.GetAllChunks())
        size += kChunkItemHeaderSize + chunk.second.size();
    return size;
}

void WritePreset(char*& cursor, const char* end, const IPreset& preset) {
    char* sizeField = cursor;
    WriteU16(cursor, end, 0);
    WriteU8(cursor, end, static_cast<uint8_t>(preset.GetOutputMode()));
    WriteU8(cursor, end, static_cast<uint8_t>(preset.GetSoundMode()));
    WriteU32(cursor, end, preset.GetSubtypeMask());
    WriteU16(cursor, end,
             static_cast<uint16_t>(preset.GetParameterCount() + preset.GetChunkCount()));
    WriteU8(cursor, end, preset.GetPriority());
    WriteU8(cursor, end, 0);
    WriteU16(cursor, end, preset.GetFlags());
    WriteString(cursor, end, preset.GetName());
    WriteString(cursor, end, preset.GetRemarks());
    for (const auto& parameter : preset.GetAllParameters()) {
        WriteU16(cursor, end, static_cast<uint16_t>(parameter.first));
        WriteU8(cursor, end, 0);
        WriteU16(cursor, end, 8);
        WriteF64(cursor, end, parameter.second);
    }
    for (const auto& chunk : preset.GetAllChunks()) {
        if (chunk.second.empty()) continue;
        WriteU16(cursor, end, static_cast<uint16_t>(chunk.first));
        WriteU8(cursor, end, 3);
        WriteU16(cursor, end, static_cast<uint16_t>(chunk.second.size()));
        WriteBytes(cursor, end, chunk.second.data(), chunk.second.size());
    }
    char* patch = sizeField;
    WriteU16(patch, end, static_cast<uint16_t>(cursor - sizeField - 2));
}

std::string LawColumn(const std::vector<LinkLawEntry>& laws, unsigned int id) {
    const auto law = std::find_if(laws.begin(), laws.end(), [id](const LinkLawEntry& entry) {
        return entry.TargetParamId == id;
    });
    if (law == laws.end()) return " ";
    if (law->targetValues.empty()) return "No points";
    const auto range = std::minmax_element(law->targetValues.begin(), law->targetValues.end());
    return std::to_string(*range.first) + "~" + std::to_string(*range.second);
}

std::string ComparisonReport(const std::string& separator,
                             const std::map<unsigned int, double>& deviceParameters,
                             const std::vector<LinkLawEntry>& deviceLinkLaws,
                             const std::map<unsigned int, double>& fileParameters,
                             const std::vector<LinkLawEntry>& fileLinkLaws) {
    const std::string& s = separator;
    std::string report = "ZBAP" + s + "Value in Device" + s + "LinkLaw in Device" + s +
                         "Value in ZPS" + s + "LinkLaw in ZPS" + s + "\n";
    std::set<unsigned int> ids;
    for (const auto& parameter : deviceParameters) ids.insert(parameter.first);
    for (const auto& parameter : fileParameters) ids.insert(parameter.first);
    const auto side = [&s](const std::map<unsigned int, double>& parameters,
                           const std::vector<LinkLawEntry>& laws, unsigned int id) {
        const auto found = parameters.find(id);
        if (found == parameters.end()) return " " + s + " ";
        return std::to_string(found->second) + s + LawColumn(laws, id);
    };
    for (unsigned int id : ids) {
        report += std::to_string(id) + s + side(deviceParameters, deviceLinkLaws, id) + s +
                  side(fileParameters, fileLinkLaws, id) + s + "\n";
    }
    return report;
}

}  // namespace

bool PresetUtils::GetSerializedUserSectionFromPresetSet(
    const std::shared_ptr<const IPresetSet>& presetSet, std::vector<char>& out) {
    if (!presetSet) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "pPresetSet is NULL");
        return false;
    }
    const std::map<OmSm, SubtypeMasks> enabled = presetSet->GetEnabledSubtypeMasks();
    std::vector<std::shared_ptr<IPreset>> presets;
    for (const auto& preset : presetSet->GetUserPresets()) {
        if (preset && !preset->IsEmpty()) presets.push_back(preset);
    }
    size_t total = kUserFileFixedSize + kTagRecordSize * enabled.size();
    for (const auto& preset : presets) total += PresetRecordSize(*preset);
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "totalSize %u", static_cast<uint32_t>(total));
    out.assign(total, 0);
    char* cursor = out.data();
    const char* end = out.data() + out.size();
    WriteU32(cursor, end, kZpsMagic);
    WriteU32(cursor, end, static_cast<uint32_t>(total));
    char* sectionSizeField = cursor;
    WriteU32(cursor, end, 0);
    WriteU8(cursor, end, kUserModesSectionId);
    WriteU16(cursor, end, 0);
    WriteU16(cursor, end, static_cast<uint16_t>(enabled.size()));
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "Write The number of User enabled subtypeMask %d",
               static_cast<int>(enabled.size()));
    for (const auto& record : enabled) {
        WriteU16(cursor, end, static_cast<uint16_t>(record.first.om));
        WriteU16(cursor, end, static_cast<uint16_t>(record.first.sm));
        WriteU32(cursor, end, record.second);
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "Write Saved user tag om [%d] sm [%d] tag [0x%08x]",
                   record.first.om, record.first.sm, record.second);
    }
    WriteU16(cursor, end, static_cast<uint16_t>(presets.size()));
    for (const auto& preset : presets) {
        preset->Dump();
        WritePreset(cursor, end, *preset);
    }
    char* patch = sectionSizeField;
    WriteU32(patch, end, static_cast<uint32_t>(cursor - sectionSizeField - 4));
    return true;
}

std::map<unsigned int, double> PresetUtils::GetChangedParameters(
    const std::map<unsigned int, double>& current,
    const std::map<unsigned int, double>& reference) {
    std::map<unsigned int, double> changed;
    for (const auto& parameter : current) {
        const auto found = reference.find(parameter.first);
        if (found == reference.end() || found->second != parameter.second) {
            changed.insert(parameter);
        }
    }
    return changed;
}

void PresetUtils::MergeParameters(std::map<unsigned int, double>& target,
                                  const std::map<unsigned int, double>& source) {
    MergeParameterMap(target, source);
}

std::vector<std::map<unsigned int, double>> PresetUtils::SplitParameters(
    const std::map<unsigned int, double>& parameters, unsigned int maxCount) {
    std::vector<std::map<unsigned int, double>> parts;
    std::map<unsigned int, double> part;
    for (const auto& parameter : parameters) {
        part.insert(parameter);
        if (part.size() >= maxCount) {
            parts.push_back(part);
            part.clear();
        }
    }
    // A full last map ends the split; an empty input still gives one empty map.
    if (!part.empty() || parts.empty()) parts.push_back(part);
    return parts;
}

bool PresetUtils::GetParametersFromZpsBuffer(const std::vector<char>& buffer, unsigned int om,
                                             unsigned int sm, SubtypeMasks masks,
                                             const std::set<unsigned int>& excluded,
                                             std::map<unsigned int, double>& parameters,
                                             std::vector<char>& linkLawChunk) {
    ZpsBufferReader reader(std::make_shared<PresetFactory>(), std::make_shared<PresetSetFactory>(),
                           std::make_shared<PresetHandleFactory>());
    reader.SetExcludedParameters(excluded);
    reader.ParseBuffer(buffer, false);
    std::shared_ptr<IPresetSet> presetSet = reader.Read();
    if (!presetSet) return false;
    std::shared_ptr<IPresetHandle> handle = presetSet->RequestPresetHandle(om, sm);
    if (!handle) return false;
    handle->SetSubtypeMasks(masks);
    parameters = handle->GetAllParameters();
    handle->GetChunk(static_cast<int>(ZBAC_LINKLAWS), linkLawChunk);
    return true;
}

std::string PresetUtils::GetComparisonReportPipe(
    const std::map<unsigned int, double>& deviceParameters,
    const std::vector<LinkLawEntry>& deviceLinkLaws,
    const std::map<unsigned int, double>& fileParameters,
    const std::vector<LinkLawEntry>& fileLinkLaws) {
    return ComparisonReport("|", deviceParameters, deviceLinkLaws, fileParameters, fileLinkLaws);
}

std::string PresetUtils::GetComparisonReportComma(
    const std::map<unsigned int, double>& deviceParameters,
    const std::vector<LinkLawEntry>& deviceLinkLaws,
    const std::map<unsigned int, double>& fileParameters,
    const std::vector<LinkLawEntry>& fileLinkLaws) {
    return ComparisonReport(",", deviceParameters, deviceLinkLaws, fileParameters, fileLinkLaws);
}

}  // namespace TesselFX
