#pragma once

#include <cstddef>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "ZpsDocument.h"

namespace TesselFX {
namespace zbctl {

/// Checks a HAL configuration with the library's own INI reader and line parsers, one line at
/// a time, and reports what it defines and every line the library refuses, with the library's
/// own log text as the reason. A line whose parser throws (which would make zb_initialize
/// throw) is reported as such and checking goes on with the next line. A configuration that
/// cannot work as a whole (empty, without presets or controls, cut by a NUL byte) is refused,
/// and a number that a parser reads only in part is a warning. Print escapes what it echoes.
class ConfigChecker {
  public:
    struct Finding {
        size_t line = 0;    ///< 0 when the finding has no line of its own
        std::string where;  ///< "[SECTION] key" or a short label
        std::string reason;
        bool error = true;  ///< false for a warning, which does not fail the check
    };

    /// Throws ZbctlError when the file cannot be read.
    explicit ConfigChecker(const std::string& path);

    /// Parses the configuration; fills the summary and the findings.
    void Check();
    /// Reports base presets of the controls that the preset file lacks (errors) and missing
    /// sub presets of their subtypes (warnings). Call after Check.
    void CheckPresets(const ZpsDocument& presets, const std::string& presetsName);

    const std::vector<Finding>& Findings() const { return m_findings; }
    bool HasErrors() const;
    /// The summary of what the configuration defines, then the findings.
    void Print(std::ostream& out) const;

  private:
    size_t LineOf(const std::string& section, const std::string& key) const;
    size_t LineOfSection(const std::string& section) const;
    void IndexLines();
    void Add(size_t line, const std::string& where, const std::string& reason, bool error);

    std::string m_path;
    std::string m_text;
    std::map<std::pair<std::string, std::string>, size_t> m_keyLines;
    std::map<std::string, size_t> m_sectionLines;
    std::vector<std::pair<std::string, std::vector<std::string>>> m_summary;  // heading, lines
    std::vector<Finding> m_findings;
    // What the presets check needs of the parsed controls: control name, preset name, om, sm,
    // and the subtype masks the preset may select.
    struct ControlPreset {
        std::string control;
        std::string preset;
        uint32_t om;
        uint32_t sm;
        std::vector<uint32_t> subtypes;
    };
    std::vector<ControlPreset> m_controlPresets;
};

}  // namespace zbctl
}  // namespace TesselFX
