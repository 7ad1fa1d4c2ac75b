#include "preset/ZpsBufferReader.h"

#include <algorithm>
#include <cstring>

#include "log/TesselLog.h"
#include "preset/BinaryPrimitives.h"
#include "preset/ZpsFormat.h"

namespace TesselFX {

ZpsBufferReader::ZpsBufferReader(const std::shared_ptr<IPresetFactory>& presetFactory,
                                 const std::shared_ptr<IPresetSetFactory>& presetSetFactory,
                                 const std::shared_ptr<IPresetHandleFactory>& presetHandleFactory)
    : m_presetFactory(presetFactory),
      m_presetSetFactory(presetSetFactory),
      m_presetHandleFactory(presetHandleFactory) {}

void ZpsBufferReader::SetExcludedParameters(const std::set<unsigned int>& excludedParameters) {
    m_excludedParameters = excludedParameters;
}

const ZpsSectionInfo& ZpsBufferReader::GetSystemSectionInfo() const { return m_systemInfo; }

const PresetMap& ZpsBufferReader::GetSystemPresets() const { return m_systemPresets; }

const PresetMap& ZpsBufferReader::GetUserPresets() const { return m_userPresets; }

const std::map<OmSm, SubtypeMasks>& ZpsBufferReader::GetEnabledSubtypeMasks() const {
    return m_enabledSubtypeMasks;
}

const std::map<unsigned int, std::string>& ZpsBufferReader::GetTags() const { return m_tags; }

bool ZpsBufferReader::ParseBuffer(const std::vector<char>& buffer, bool isUser) {
    return Parse(buffer.data(), buffer.data() + buffer.size(), buffer.size(), isUser);
}

bool ZpsBufferReader::ParseStream(size_t size, bool isUser, const ReadMore& readMore) {
    // The window and the source are forgotten however the parse ends, so that a later
    // ParseBuffer never reads from them.
    struct Forget {
        ZpsBufferReader& reader;
        ~Forget() {
            reader.m_window.reset();
            reader.m_readMore = nullptr;
            reader.m_unread = 0;
            reader.m_missing = 0;
        }
    } forget{*this};
    m_windowSize = std::min(size, kWindowSize);
    m_window.reset(new char[m_windowSize]);
    m_readMore = readMore;
    m_unread = size;
    m_missing = 0;
    const char* cursor = m_window.get();
    const char* end = cursor;
    Refill(cursor, end);
    return Parse(cursor, end, size, isUser);
}

inline bool ZpsBufferReader::Need(const char*& cursor, const char*& end) {
    if (static_cast<size_t>(end - cursor) < kLongestRecord && m_unread != 0) Refill(cursor, end);
    return m_missing == 0;
}

void ZpsBufferReader::Refill(const char*& cursor, const char*& end) {
    const size_t kept = static_cast<size_t>(end - cursor);
    char* const window = m_window.get();
    std::memmove(window, cursor, kept);
    size_t filled = kept;
    while (m_unread != 0 && filled < m_windowSize) {
        const size_t wanted = std::min(m_windowSize - filled, m_unread);
        const size_t got = std::min(m_readMore(window + filled, wanted), wanted);
        if (got == 0) {
            m_missing = m_unread;
            m_unread = 0;
            break;
        }
        filled += got;
        m_unread -= got;
    }
    cursor = window;
    end = window + filled;
}

void ZpsBufferReader::Skip(const char*& cursor, const char*& end, size_t count) {
    for (;;) {
        const size_t here = std::min(count, static_cast<size_t>(end - cursor));
        cursor += here;
        count -= here;
        if (count == 0 || m_unread == 0) return;
        Refill(cursor, end);
    }
}

size_t ZpsBufferReader::Left(const char* cursor, const char* end) const {
    return static_cast<size_t>(end - cursor) + m_unread;
}

bool ZpsBufferReader::Parse(const char* cursor, const char* end, size_t size, bool isUser) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s: isUserZps = %s", "ParseBuffer",
               isUser ? "true" : "false");
    uint32_t magic = 0;
    if (!ReadU32(cursor, end, magic) || magic != kZpsMagic) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "read bpbz tag 0x%u fail", magic);
        return false;
    }
    uint32_t totalSize = 0;
    ReadU32(cursor, end, totalSize);
    if (size < totalSize) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "size in zps %u does not match the real size %u",
                         totalSize, static_cast<uint32_t>(size));
        return false;
    }
    for (;;) {
        if (!Need(cursor, end)) break;
        uint32_t sectionSize = 0;
        uint8_t sectionId = 0;
        if (!ReadU32(cursor, end, sectionSize) || !ReadU8(cursor, end, sectionId)) break;
        // The section may end one byte past the data's end, as the size counts the id byte.
        const size_t left = Left(cursor, end);
        if (sectionSize > left + 1) break;
        bool parsed = true;
        switch (sectionId) {
            case kZpsSectionInformation:
                parsed = ParseSectionInformation(cursor, end, isUser);
                break;
            case kZpsSectionTags:
                parsed = ParseSectionTags(cursor, end);
                break;
            case kZpsSectionRemarks:
                parsed = ParseSectionRemarks(cursor, end, isUser);
                break;
            case kZpsSectionPresets:
                parsed = ParseSectionPresets(cursor, end);
                break;
            case kZpsSectionUserModes:
                parsed = ParseSectionUserModes(cursor, end);
                break;
            default:
                // Skipped by its size from behind the id byte; a skip to one past the end
                // leaves nothing to read.
                Skip(cursor, end, sectionSize > left ? left : sectionSize);
                break;
        }
        if (!parsed && m_missing == 0) return false;
        if (!parsed) break;
    }
    if (m_missing != 0) {
        // The data ended early (the file shrank while it was read): the parse stopped at the
        // record that it could not have whole, without that record's own error line.
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "size in zps %u does not match the real size %u",
                         totalSize, static_cast<uint32_t>(size - m_missing));
        return false;
    }
    (isUser ? m_userParsed : m_systemParsed) = true;
    return true;
}

bool ZpsBufferReader::ParseSectionInformation(const char*& cursor, const char* end, bool isUser) {
    ZpsSectionInfo& info = isUser ? m_userInfo : m_systemInfo;
    uint32_t word = 0;
    uint32_t dropped = 0;
    if (!ReadU32(cursor, end, info.infoValue) || !ReadU8(cursor, end, info.infoBytes[0]) ||
        !ReadU8(cursor, end, info.infoBytes[1]) || !ReadU8(cursor, end, info.infoBytes[2]) ||
        !ReadU8(cursor, end, info.infoBytes[3]) || !ReadU32(cursor, end, word) ||
        !ReadU32(cursor, end, dropped) || !ReadU32(cursor, end, dropped)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "ParseSectionInformation error");
        return false;
    }
    info.infoWord = static_cast<uint16_t>(word & 0xFFFF);
    return true;
}

bool ZpsBufferReader::ParseSectionRemarks(const char*& cursor, const char* end, bool isUser) {
    if (!ReadString(cursor, end, (isUser ? m_userInfo : m_systemInfo).remarks)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "ParseSectionRemarks error");
        return false;
    }
    return true;
}

bool ZpsBufferReader::ParseSectionTags(const char*& cursor, const char*& end) {
    uint8_t count = 0;
    if (!ReadU8(cursor, end, count)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "ParseSectionTags parse count error");
        return false;
    }
    for (uint8_t i = 0; i < count; ++i) {
        if (!Need(cursor, end)) return false;
        uint8_t id = 0;
        std::string name;
        if (!ReadU8(cursor, end, id) || !ReadString(cursor, end, name)) {
            TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "ParseSectionTags parse value or name error");
            return false;
        }
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "SectionTags %d %s", id, name.c_str());
        m_tags[id] = name;
    }
    return true;
}

bool ZpsBufferReader::ParseSectionPresets(const char*& cursor, const char*& end) {
    uint16_t count = 0;
    if (!ReadU16(cursor, end, count)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "ParseSectionPresets read count error");
        return false;
    }
    for (uint16_t i = 0; i < count; ++i) {
        if (!Need(cursor, end)) return false;
        std::shared_ptr<IPreset> preset = ParsePreset(cursor, end, false);
        if (!preset) {
            if (m_missing != 0) return false;
            TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "ParseSectionPresets parse preset error");
            return false;
        }
        m_systemPresets[{preset->GetOutputMode(), preset->GetSoundMode(),
                         preset->GetSubtypeMask()}] = preset;
    }
    return true;
}

bool ZpsBufferReader::ParseSectionUserModes(const char*& cursor, const char*& end) {
    uint16_t reserved = 0;
    uint16_t tagCount = 0;
    if (!ReadU16(cursor, end, reserved) || !ReadU16(cursor, end, tagCount)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "ParseSectionUserModes error");
        return false;
    }
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "User tags (%d)", tagCount);
    for (uint16_t i = 0; i < tagCount; ++i) {
        if (!Need(cursor, end)) return false;
        uint16_t om = 0;
        uint16_t sm = 0;
        uint32_t tag = 0;
        if (!ReadU16(cursor, end, om) || !ReadU16(cursor, end, sm) || !ReadU32(cursor, end, tag)) {
            TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "ParseSectionUserModes error");
            return false;
        }
        TESSEL_LOG(1, TESSEL_LOG_FXModule,
                   "ZpsReader::ParseSectionUserModes Loaded user om [%d] sm [%d] tag [0x%08x]", om,
                   sm, tag);
        m_enabledSubtypeMasks[OmSm{om, sm}] = tag;
    }
    uint16_t presetCount = 0;
    if (!Need(cursor, end)) return false;
    if (!ReadU16(cursor, end, presetCount)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "ParseSectionUserModes error");
        return false;
    }
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "User presets (%d)", presetCount);
    for (uint16_t i = 0; i < presetCount; ++i) {
        if (!Need(cursor, end)) return false;
        std::shared_ptr<IPreset> preset = ParsePreset(cursor, end, true);
        if (!preset) {
            if (m_missing != 0) return false;
            TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "ParseSectionPresets error");
            return false;
        }
        m_userPresets[{preset->GetOutputMode(), preset->GetSoundMode(), preset->GetSubtypeMask()}] =
            preset;
    }
    return true;
}

std::shared_ptr<IPreset> ZpsBufferReader::ParsePreset(const char*& cursor, const char*& end,
                                                      bool isUser) {
    uint16_t size = 0;
    uint8_t outputMode = 0;
    uint8_t soundMode = 0;
    uint32_t subTypeMask = 0;
    uint16_t parametersCount = 0;
    uint8_t priority = 0;
    uint8_t reserved = 0;
    uint16_t flags = 0;
    std::string name;
    std::string remarks;
    if (!ReadU16(cursor, end, size) || !ReadU8(cursor, end, outputMode) ||
        !ReadU8(cursor, end, soundMode) || !ReadU32(cursor, end, subTypeMask) ||
        !ReadU16(cursor, end, parametersCount) || !ReadU8(cursor, end, priority) ||
        !ReadU8(cursor, end, reserved) || !ReadU16(cursor, end, flags) ||
        !ReadString(cursor, end, name) || !ReadString(cursor, end, remarks)) {
        return nullptr;
    }
    std::shared_ptr<IPreset> preset = m_presetFactory->Create(
        outputMode, soundMode, subTypeMask, name, remarks, flags, priority, isUser);
    TESSEL_LOG(1, TESSEL_LOG_FXModule,
               "ZpsBufferReader::ParsePreset : size %d outputMode %d soundMode %d subTypeMask %u "
               "parametersCount %d",
               size, outputMode, soundMode, subTypeMask, parametersCount);
    // Collected in file order and handed over at once after all chunks; a later equal id
    // replaces an earlier one.
    std::vector<unsigned int> ids;
    std::vector<double> values;
    ids.reserve(parametersCount);
    values.reserve(parametersCount);
    for (uint16_t i = 0; i < parametersCount; ++i) {
        if (!Need(cursor, end)) return nullptr;
        uint16_t id = 0;
        uint8_t type = 0;
        uint16_t valueSize = 0;
        bool ok = ReadU16(cursor, end, id) && ReadU8(cursor, end, type) &&
                  ReadU16(cursor, end, valueSize);
        if (ok && type == kZpsItemParameter) {
            // A parameter value is always 8 bytes, whatever the size field says.
            double value = 0.0;
            ok = ReadF64(cursor, end, value);
            if (ok && (m_excludedParameters.empty() || m_excludedParameters.count(id) == 0)) {
                ids.push_back(id);
                values.push_back(value);
            }
        } else if (ok && type == kZpsItemChunk) {
            std::vector<char> bytes;
            ok = ReadBytes(cursor, end, valueSize, bytes);
            if (ok) preset->SetChunk(id, bytes);
        } else if (ok) {
            // Skipped by its size; a size past the end leaves nothing more to read.
            cursor += std::min<size_t>(valueSize, static_cast<size_t>(end - cursor));
        }
        if (!ok) {
            TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "ParsePreset error");
            return nullptr;
        }
    }
    preset->SetParameterArray(ids, values);
    return preset;
}

std::shared_ptr<IPresetSet> ZpsBufferReader::CreatePresetSet() {
    std::shared_ptr<IPresetSet> presetSet =
        m_presetSetFactory->Create(m_systemPresets, m_userPresets, m_presetHandleFactory);
    if (presetSet) SetupPresetSet(presetSet);
    return presetSet;
}

std::shared_ptr<IPresetSet> ZpsBufferReader::Read() {
    if (!m_systemParsed) return nullptr;
    return CreatePresetSet();
}

bool ZpsBufferReader::Read(const std::shared_ptr<IPresetSet>& presetSet) {
    if (!presetSet) return false;
    presetSet->SetPresets(m_systemPresets, m_systemParsed, m_userPresets, m_userParsed);
    SetupPresetSet(presetSet);
    return true;
}

void ZpsBufferReader::SetupPresetSet(const std::shared_ptr<IPresetSet>& presetSet) {
    presetSet->SetEnabledSubtypeMasks(m_enabledSubtypeMasks);
    presetSet->SetTags(m_tags);
    presetSet->Validate();
}

}  // namespace TesselFX
