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

/// Parses preset files ("BPBZ" format) from memory, or from a source read piece by piece
/// through a window (ParseStream), and collects their presets: sections 4
/// give system presets, section 5 user presets and enabled subtype masks. Every read is
/// bounded by the buffer's end; bad input fails with a log line and never reads past it.
/// Parsing adds to the maps of earlier calls. Not thread safe.
class ZpsBufferReader : public IPresetSetReader {
  public:
    ZpsBufferReader(const std::shared_ptr<IPresetFactory>& presetFactory,
                    const std::shared_ptr<IPresetSetFactory>& presetSetFactory,
                    const std::shared_ptr<IPresetHandleFactory>& presetHandleFactory);
    ~ZpsBufferReader() override = default;

    /// The longest record of a preset file: an item with a value of 65,535 bytes behind its
    /// 5-byte head. A section's head and fixed fields, a tag, a preset's head are shorter.
    static constexpr size_t kLongestRecord = 5 + 65535;
    /// The most bytes of a file that ParseStream holds at once.
    static constexpr size_t kWindowSize = 8 * kLongestRecord;

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
    /// Reads at most count more bytes of the data to `to` and returns how many; 0 at the end
    /// of the data or on an error.
    using ReadMore = std::function<size_t(char* to, size_t count)>;

    /// ParseBuffer of the size bytes that readMore gives, taken a window of at most
    /// kWindowSize bytes at a time: a file of any size takes no more memory than that besides
    /// the presets made of it. When readMore runs dry early, fails with the size line of the
    /// bytes that it gave, after whatever records came whole before.
    bool ParseStream(size_t size, bool isUser, const ReadMore& readMore);
    /// Builds a set from the maps; no look at the parsed flags.
    std::shared_ptr<IPresetSet> CreatePresetSet();
    void SetupPresetSet(const std::shared_ptr<IPresetSet>& presetSet);

    PresetMap m_systemPresets;
    PresetMap m_userPresets;
    bool m_systemParsed = false;
    bool m_userParsed = false;

  private:
    /// The parse of size bytes, the first of which lie between cursor and end.
    bool Parse(const char* cursor, const char* end, size_t size, bool isUser);
    bool ParseSectionInformation(const char*& cursor, const char* end, bool isUser);
    bool ParseSectionRemarks(const char*& cursor, const char* end, bool isUser);
    bool ParseSectionTags(const char*& cursor, const char*& end);
    bool ParseSectionPresets(const char*& cursor, const char*& end);
    bool ParseSectionUserModes(const char*& cursor, const char*& end);
    std::shared_ptr<IPreset> ParsePreset(const char*& cursor, const char*& end, bool isUser);

    /// Called before each record: keeps the longest record, or all that is left of the data,
    /// between cursor and end, moving what is left to the front of the window and reading
    /// more behind it. False once the source gave fewer bytes than its size (the parse then
    /// stops with the size line). Does nothing while a buffer is parsed.
    bool Need(const char*& cursor, const char*& end);
    void Refill(const char*& cursor, const char*& end);
    /// Moves cursor count bytes on, through as many windows as that takes.
    void Skip(const char*& cursor, const char*& end, size_t count);
    /// The bytes of the data from cursor on, in the window or still to be read.
    size_t Left(const char* cursor, const char* end) const;

    std::shared_ptr<IPresetFactory> m_presetFactory;
    std::shared_ptr<IPresetSetFactory> m_presetSetFactory;
    std::shared_ptr<IPresetHandleFactory> m_presetHandleFactory;
    std::set<unsigned int> m_excludedParameters;
    std::map<unsigned int, std::string> m_tags;
    std::map<OmSm, SubtypeMasks> m_enabledSubtypeMasks;
    ZpsSectionInfo m_systemInfo;
    ZpsSectionInfo m_userInfo;

    // The window of ParseStream and where its bytes come from; empty while a buffer is parsed.
    std::unique_ptr<char[]> m_window;
    size_t m_windowSize = 0;
    ReadMore m_readMore;
    size_t m_unread = 0;   // bytes of the data not yet read into the window
    size_t m_missing = 0;  // bytes of the data that readMore did not give
};

}  // namespace TesselFX
