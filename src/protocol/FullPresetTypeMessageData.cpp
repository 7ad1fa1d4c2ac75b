#include "protocol/FullPresetTypeMessageData.h"

#include "log/TesselLog.h"
#include "preset/BinaryPrimitives.h"

namespace TesselFX {

namespace {

constexpr size_t kFixedSize = 28;
constexpr size_t kEntrySize = 12;

void WriteEntries(char*& cursor, const char* end, const std::map<unsigned int, double>& entries) {
    WriteU32(cursor, end, static_cast<uint32_t>(entries.size()));
    for (const auto& entry : entries) {
        WriteU32(cursor, end, entry.first);
        WriteF64(cursor, end, entry.second);
    }
}

/// u32 count, then (u32 id, f64 value) entries into entries; an equal id replaces the former
/// value. entryFailText is logged when an entry is missing.
bool ReadEntries(const char*& cursor, const char* end, std::map<unsigned int, double>& entries,
                 const char* entryFailText) {
    uint32_t count = 0;
    if (!ReadU32(cursor, end, count)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "read count fail");
        return false;
    }
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t id = 0;
        double value = 0.0;
        if (!ReadU32(cursor, end, id) || !ReadF64(cursor, end, value)) {
            TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%s", entryFailText);
            return false;
        }
        entries[id] = value;
    }
    return true;
}

bool ReadFlag(const char*& cursor, const char* end, bool& flag) {
    uint32_t word = 0;
    if (!ReadU32(cursor, end, word)) return false;
    flag = word != 0;
    return true;
}

}  // namespace

std::vector<char> FullPresetTypeMessageData::GetPayload() const {
    std::vector<char> payload(kFixedSize + m_preset.llChunk.size() +
                              kEntrySize *
                                  (m_preset.parameters.size() + m_preset.llSources.size()));
    char* cursor = payload.data();
    const char* end = cursor + payload.size();
    for (bool flag :
         {m_messageFlag, m_preset.hasParameters, m_preset.hasLlChunk, m_preset.hasLlSources}) {
        WriteU32(cursor, end, flag ? 1 : 0);
    }
    WriteEntries(cursor, end, m_preset.parameters);
    WriteU32(cursor, end, static_cast<uint32_t>(m_preset.llChunk.size()));
    WriteBytes(cursor, end, m_preset.llChunk.data(), m_preset.llChunk.size());
    WriteEntries(cursor, end, m_preset.llSources);
    return payload;
}

bool FullPresetTypeMessageData::FromSubBuffer(const char* data, const unsigned int size) {
    TESSEL_LOG_ENTERING(TESSEL_LOG_FXModule);
    ClearMemberVariables();
    const char* cursor = data;
    const char* end = data + size;
    return ReadFullPresetAllBoolVariables(cursor, end) &&
           ReadFullPresetParametersArray(cursor, end) && ReadFullPresetLlChunk(cursor, end) &&
           ReadFullPresetLlSources(cursor, end);
}

void FullPresetTypeMessageData::ClearMemberVariables() {
    m_preset.parameters.clear();
    m_preset.llChunk.clear();
    m_preset.llSources.clear();
}

bool FullPresetTypeMessageData::ReadFullPresetAllBoolVariables(const char*& cursor,
                                                               const char* end) {
    TESSEL_LOG_ENTERING(TESSEL_LOG_FXModule);
    if (!ReadFlag(cursor, end, m_messageFlag) || !ReadFlag(cursor, end, m_preset.hasParameters) ||
        !ReadFlag(cursor, end, m_preset.hasLlChunk) ||
        !ReadFlag(cursor, end, m_preset.hasLlSources)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "read index fail");
        return false;
    }
    return true;
}

bool FullPresetTypeMessageData::ReadFullPresetParametersArray(const char*& cursor,
                                                              const char* end) {
    TESSEL_LOG_ENTERING(TESSEL_LOG_FXModule);
    return ReadEntries(cursor, end, m_preset.parameters, "read param fail");
}

bool FullPresetTypeMessageData::ReadFullPresetLlChunk(const char*& cursor, const char* end) {
    TESSEL_LOG_ENTERING(TESSEL_LOG_FXModule);
    uint32_t length = 0;
    if (!ReadU32(cursor, end, length)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "read count fail");
        return false;
    }
    if (!ReadBytes(cursor, end, length, m_preset.llChunk)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "read chunk fail");
        return false;
    }
    return true;
}

bool FullPresetTypeMessageData::ReadFullPresetLlSources(const char*& cursor, const char* end) {
    TESSEL_LOG_ENTERING(TESSEL_LOG_FXModule);
    return ReadEntries(cursor, end, m_preset.llSources, "read LlSource fail");
}

}  // namespace TesselFX
