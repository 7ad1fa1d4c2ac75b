#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "preset/IPresetSet.h"
#include "preset/LinkLawEntry.h"

namespace TesselFX {

/// Stateless operations on presets: parameter map arithmetic, the user preset file writer,
/// a one-shot read of a preset buffer and the device-against-file comparison reports.
class PresetUtils {
  public:
    /// Writes a complete user preset file: section 5 with the enabled subtype masks and every
    /// user preset that is not empty.
    static bool GetSerializedUserSectionFromPresetSet(
        const std::shared_ptr<const IPresetSet>& presetSet, std::vector<char>& out);
    /// Entries of current that are not in reference or differ from it (exact comparison).
    static std::map<unsigned int, double> GetChangedParameters(
        const std::map<unsigned int, double>& current,
        const std::map<unsigned int, double>& reference);
    static void MergeParameters(std::map<unsigned int, double>& target,
                                const std::map<unsigned int, double>& source);
    /// Maps of at most maxCount entries in id order; the last one is kept even when empty.
    static std::vector<std::map<unsigned int, double>> SplitParameters(
        const std::map<unsigned int, double>& parameters, unsigned int maxCount);
    /// The merged parameters and link-law chunk of one mode pair and masks of a preset file.
    static bool GetParametersFromZpsBuffer(const std::vector<char>& buffer, unsigned int om,
                                           unsigned int sm, SubtypeMasks masks,
                                           const std::set<unsigned int>& excluded,
                                           std::map<unsigned int, double>& parameters,
                                           std::vector<char>& linkLawChunk);
    static std::string GetComparisonReportPipe(
        const std::map<unsigned int, double>& deviceParameters,
        const std::vector<LinkLawEntry>& deviceLinkLaws,
        const std::map<unsigned int, double>& fileParameters,
        const std::vector<LinkLawEntry>& fileLinkLaws);
    static std::string GetComparisonReportComma(
        const std::map<unsigned int, double>& deviceParameters,
        const std::vector<LinkLawEntry>& deviceLinkLaws,
        const std::map<unsigned int, double>& fileParameters,
        const std::vector<LinkLawEntry>& fileLinkLaws);
};

}  // namespace TesselFX
