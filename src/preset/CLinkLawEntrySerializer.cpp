#include "preset/CLinkLawEntrySerializer.h"

#include <algorithm>

#include "log/TesselLog.h"
#include "preset/BinaryPrimitives.h"

namespace TesselFX {

namespace {

const char kLogTag[] = "CLinkLawEntrySerializer";

// Size of an entry without its method name and points: seven words and two trailing floats.
constexpr size_t kFixedEntrySize = 36;

// Reads one entry and the size its stream declares. False when the stream ends inside it.
bool ReadEntry(const char*& cursor, const char* end, LinkLawEntry& entry, uint32_t& streamSize) {
    const char* start = cursor;
    uint32_t methodLength = 0;
    if (!ReadU32(cursor, end, entry.size) || !ReadU32(cursor, end, entry.version) ||
        !ReadU32(cursor, end, entry.MasterControlId) ||
        !ReadU32(cursor, end, entry.SourceControlId) ||
        !ReadU32(cursor, end, entry.TargetParamId) || !ReadU32(cursor, end, methodLength)) {
        return false;
    }
    streamSize = entry.size;
    if (methodLength >= 1) {
        std::vector<char> method;
        if (!ReadBytes(cursor, end, methodLength, method)) return false;
        entry.ConversionMethod.assign(method.begin(), method.end());
    }
    uint32_t count = 0;
    if (!ReadU32(cursor, end, count)) return false;
    if (count != 0) {
        // Both tables must be there before anything is allocated for them.
        if (static_cast<size_t>(end - cursor) / 8 < count) return false;
        entry.masterValues.resize(count);
        entry.targetValues.resize(count);
        for (float& value : entry.masterValues) ReadF32(cursor, end, value);
        for (float& value : entry.targetValues) ReadF32(cursor, end, value);
    }
    if (entry.version != 0) {
        const size_t pointsEnd = static_cast<size_t>(cursor - start);
        if (!ReadF32(cursor, end, entry.extraValue0) || !ReadF32(cursor, end, entry.extraValue1)) {
            return false;
        }
        if (entry.version != 1) {
            // A later version is kept in the form of version 1.
            entry.size = static_cast<uint32_t>(pointsEnd + 8);
            entry.version = 1;
        }
    }
    return true;
}

}  // namespace

CLinkLawEntrySerializer::~CLinkLawEntrySerializer() { Clear(); }

size_t CLinkLawEntrySerializer::EntrySize(const LinkLawEntry& entry) {
    return kFixedEntrySize + entry.ConversionMethod.size() + 8 * entry.masterValues.size();
}

bool CLinkLawEntrySerializer::Serialize(const std::vector<LinkLawEntry>& entries) {
    TesselLog::Get().Print(3, kLogTag, "CLinkLawEntrySerializer::Serialize.");
    Clear();
    size_t total = 0;
    for (const LinkLawEntry& entry : entries) total += EntrySize(entry);
    if (total == 0) return false;
    m_buffer.resize(total);
    char* cursor = m_buffer.data();
    const char* end = m_buffer.data() + m_buffer.size();
    for (const LinkLawEntry& entry : entries) {
        const uint32_t count = static_cast<uint32_t>(entry.masterValues.size());
        WriteU32(cursor, end, static_cast<uint32_t>(EntrySize(entry)));
        WriteU32(cursor, end, entry.version);
        WriteU32(cursor, end, entry.MasterControlId);
        WriteU32(cursor, end, entry.SourceControlId);
        WriteU32(cursor, end, entry.TargetParamId);
        WriteU32(cursor, end, static_cast<uint32_t>(entry.ConversionMethod.size()));
        WriteBytes(cursor, end, entry.ConversionMethod.data(), entry.ConversionMethod.size());
        WriteU32(cursor, end, count);
        for (float value : entry.masterValues) WriteF32(cursor, end, value);
        // As many target values as master values; a shorter table is padded with 0.
        for (uint32_t i = 0; i < count; ++i) {
            WriteF32(cursor, end, i < entry.targetValues.size() ? entry.targetValues[i] : 0.0f);
        }
        WriteF32(cursor, end, entry.extraValue0);
        WriteF32(cursor, end, entry.extraValue1);
    }
    return true;
}

bool CLinkLawEntrySerializer::Deserialize(const char* data, unsigned int size,
                                          std::vector<LinkLawEntry>& entries) {
    TesselLog::Get().Print(3, kLogTag, "CLinkLawEntrySerializer::Deserialize.");
    Clear();
    if (size == 0 || data == nullptr) return false;
    m_buffer.assign(data, data + size);
    const char* begin = m_buffer.data();
    const char* end = begin + m_buffer.size();
    size_t offset = 0;
    // Bytes that the entries read so far took. The declared sizes may make entries overlap
    // in a stream that is not sound; all entries together may take no more bytes than the
    // stream has, so that decoding needs memory in proportion to the stream's size.
    size_t taken = 0;
    while (offset < size) {
        const char* cursor = begin + offset;
        const size_t left = size - taken;
        const char* limit = cursor + std::min(left, static_cast<size_t>(end - cursor));
        LinkLawEntry entry;
        uint32_t streamSize = 0;
        if (!ReadEntry(cursor, limit, entry, streamSize)) {
            if (limit == end) return false;
            TesselLog::Get().Print(4, kLogTag, "%s:%d, ", __FILE__, __LINE__);
            TesselLog::Get().Print(4, kLogTag,
                                   "CLinkLawEntrySerializer::Deserialize entry at %u takes more "
                                   "than the %u bytes left of %u; the rest is refused",
                                   static_cast<unsigned>(offset), static_cast<unsigned>(left),
                                   size);
            return !entries.empty();
        }
        taken += static_cast<size_t>(cursor - (begin + offset));
        entries.push_back(entry);
        // The walk goes on by the size the stream declares, not by what was read; a zero
        // size would never end.
        if (streamSize == 0) return false;
        offset += streamSize;
    }
    return !entries.empty();
}

const char* CLinkLawEntrySerializer::GetBuffer() const {
    return m_buffer.empty() ? nullptr : m_buffer.data();
}

unsigned int CLinkLawEntrySerializer::GetSize() const {
    return static_cast<unsigned int>(m_buffer.size());
}

void CLinkLawEntrySerializer::Clear() {
    TesselLog::Get().Print(3, kLogTag, "CLinkLawEntrySerializer::Clear.");
    std::vector<char>().swap(m_buffer);
}

}  // namespace TesselFX
