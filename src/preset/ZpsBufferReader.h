#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "preset/IPresetFactory.h"
#include "preset/IPresetHandleFactory.h"
#include "preset/IPresetSetFactory.h"
#include "preset/IPresetSetReader.h"
#include "preset/ZpsFormat.h"
#include "preset/ZpsSectionInfo.h"

namespace TesselFX {

/// Parses preset files ("BPBZ" format) from memory and collects their presets: sections 4
/// give system presets, section 5 user presets and enabled subtype masks. Every read is
/// bounded by the buffer's end; bad input fails with a log line and never reads past it.
/// Parsing adds to the maps of earlier calls. Not thread safe.
class ZpsBufferReader : public IPresetSetReader {
  public:
    ZpsBufferReader(const std::shared_ptr<IPresetFactory>& presetFactory,
                    const std::shared_ptr<IPresetSetFactory>& presetSetFactory,
                    const std::shared_ptr<IPresetHandleFactory>& presetHandleFactory);
    ~ZpsBufferReader() override = default;

    std::shared_ptr<IPresetSet> Read() override;
    bool Read(const std::shared_ptr<IPresetSet>& presetSet) override;
    bool ParseBuffer(const std::vector<char>& buffer, bool isUser) override;

    /// Parameters dropped while parsing; set it before parsing.
    void SetExcludedParameters(const std::set<unsigned int>& excludedParameters);
    const ZpsSectionInfo& GetSystemSectionInfo() const;
    const PresetMap& GetSystemPresets() const;
    const PresetMap& GetUserPresets() const;
    const std::map<OmSm, SubtypeMasks>& GetEnabledSubtypeMasks() const;
    const std::map<unsigned int, std::string>& GetTags() const;

  protected:
    /// Told after each preset how far the parse has come: nothing before that point is read
    /// again.
    using ParsedTo = std::function<void(const char* cursor)>;

    /// ParseBuffer of size bytes at data; parsedTo may be empty.
    bool ParseBytes(const char* data, size_t size, bool isUser, const ParsedTo& parsedTo);
    /// Builds a set from the maps; no look at the parsed flags.
    std::shared_ptr<IPresetSet> CreatePresetSet();
    void SetupPresetSet(const std::shared_ptr<IPresetSet>& presetSet);

    PresetMap m_systemPresets;
    PresetMap m_userPresets;
    bool m_systemParsed = false;
    bool m_userParsed = false;

  private:
    bool ParseSectionInformation(const char*& cursor, const char* end, bool isUser);
    bool ParseSectionRemarks(const char*& cursor, const char* end, bool isUser);
    bool ParseSectionTags(const char*& cursor, const char* end);
    bool ParseSectionPresets(const char*& cursor, const char* end, const ParsedTo& parsedTo);
    bool ParseSectionUserModes(const char*& cursor, const char* end);
    std::shared_ptr<IPreset> ParsePreset(const char*& cursor, const char* end, bool isUser);

    std::shared_ptr<IPresetFactory> m_presetFactory;
    std::shared_ptr<IPresetSetFactory> m_presetSetFactory;
    std::shared_ptr<IPresetHandleFactory> m_presetHandleFactory;
    std::set<unsigned int> m_excludedParameters;
    std::map<unsigned int, std::string> m_tags;
    std::map<OmSm, SubtypeMasks> m_enabledSubtypeMasks;
    ZpsSectionInfo m_systemInfo;
    ZpsSectionInfo m_userInfo;
};

}  // namespace TesselFX
