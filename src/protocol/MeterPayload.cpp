#include "protocol/MeterPayload.h"

#include "log/TesselLog.h"
#include "preset/BinaryPrimitives.h"

namespace TesselFX {

namespace {

/// Runs write over a zeroed buffer of the cap and keeps what it wrote; a write that does not
/// fit stops it, and that failure is not reported.
template <typename Write>
std::vector<char> WriteCapped(Write write) {
    std::vector<char> payload(kMeterPayloadMaxSize, 0);
    char* cursor = payload.data();
    write(cursor, payload.data() + payload.size());
    payload.resize(static_cast<size_t>(cursor - payload.data()));
    return payload;
}

bool ReadCount(const char*& cursor, const char* end, uint32_t& count) {
    if (!ReadU32(cursor, end, count)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "read count fail");
        return false;
    }
    return true;
}

/// A meter entry's u32 size and that many bytes.
bool ReadEntry(const char*& cursor, const char* end, uint32_t& size, std::vector<char>& bytes) {
    if (!ReadU32(cursor, end, size) || !ReadBytes(cursor, end, size, bytes)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "read meter fail");
        return false;
    }
    return true;
}

}  // namespace

std::vector<char> SerializeMeterInfoMap(const std::map<uint32_t, CMeterInfo>& infos) {
    return WriteCapped([&infos](char*& cursor, const char* end) {
        if (!WriteU32(cursor, end, static_cast<uint32_t>(infos.size()))) return;
        for (const auto& entry : infos) {
            const CMeterInfo& info = entry.second;
            if (!WriteU32(cursor, end, static_cast<uint32_t>(info.GetSerializedSize())) ||
                !info.Serialize(cursor, end)) {
                return;
            }
        }
    });
}

bool DeserializeMeterInfoMap(const char* data, unsigned int size,
                             std::map<uint32_t, CMeterInfo>& infos) {
    infos.clear();
    const char* end = data + size;
    uint32_t count = 0;
    if (!ReadCount(data, end, count)) return false;
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t infoSize = 0;
        std::vector<char> bytes;
        CMeterInfo info;
        size_t consumed = 0;
        if (!ReadEntry(data, end, infoSize, bytes) ||
            !info.Deserialize(bytes.data(), bytes.size(), consumed)) {
            return false;
        }
        infos[info.GetIndex()] = info;
    }
    return true;
}

std::vector<char> SerializeMeterValueMap(const std::map<uint32_t, CMeterValue>& values) {
    return WriteCapped([&values](char*& cursor, const char* end) {
        if (!WriteU32(cursor, end, static_cast<uint32_t>(values.size()))) return;
        for (const auto& entry : values) {
            const CMeterValue& value = entry.second;
            if (!WriteU32(cursor, end, 4u + static_cast<uint32_t>(value.GetSize())) ||
                !WriteU32(cursor, end, entry.first) ||
                !WriteBytes(cursor, end, static_cast<const char*>(value.GetData()),
                            static_cast<size_t>(value.GetSize()))) {
                return;
            }
        }
    });
}

bool DeserializeMeterValueMap(const char* data, unsigned int size,
                              std::map<uint32_t, CMeterValue>& values) {
    values.clear();
    const char* end = data + size;
    uint32_t count = 0;
    if (!ReadCount(data, end, count)) return false;
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t entrySize = 0;
        std::vector<char> entry;
        uint32_t key = 0;
        CMeterValue value;
        if (!ReadEntry(data, end, entrySize, entry)) return false;
        const char* cursor = entry.data();
        // The size counts the key; what follows it is the value, which must be 4 bytes.
        if (!ReadU32(cursor, entry.data() + entry.size(), key)) {
            TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "read meter fail");
            return false;
        }
        if (!value.SetData(cursor, static_cast<int>(entry.size() - sizeof(key)))) return false;
        values[key] = value;
    }
    return true;
}

}  // namespace TesselFX
