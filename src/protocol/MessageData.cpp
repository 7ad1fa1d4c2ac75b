#include "protocol/MessageData.h"

#include "log/TesselLog.h"
#include "preset/BinaryPrimitives.h"

namespace TesselFX {

std::vector<char> MessageData::GetBuffer() const {
    const std::vector<char> payload = GetPayload();
    std::vector<char> frame(sizeof(uint32_t));
    char* cursor = frame.data();
    WriteU32(cursor, cursor + frame.size(), GetId());
    frame.insert(frame.end(), payload.begin(), payload.end());
    return frame;
}

bool MessageData::SetBuffer(const char* data, unsigned int size) {
    if (GetMessageId(data, size) == -1) {
        return false;
    }
    return SetPayload(data + sizeof(uint32_t), size - static_cast<unsigned int>(sizeof(uint32_t)));
}

int MessageData::GetMessageId(const char* data, unsigned int size) {
    const char* cursor = data;
    uint32_t id = 0;
    if (data == nullptr || !ReadU32(cursor, data + size, id)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "size is wrong");
        return -1;
    }
    if (id == 0 || id > kMaxMessageId) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "invalid id %d", static_cast<int>(id));
        return -1;
    }
    return static_cast<int>(id);
}

int MessageData::GetMessageId(const std::string& frame) {
    return GetMessageId(frame.data(), static_cast<unsigned int>(frame.size()));
}

bool MessageData::CheckExactSize(unsigned int expected, unsigned int size) {
    if (size != expected) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "expected size %u is wrong, actual size %u", expected,
                         size);
        return false;
    }
    return true;
}

bool MessageData::CheckSizeFromCount(uint32_t expected, uint32_t count, unsigned int size) {
    if (size != expected) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule,
                         "expected size %u from count %u is wrong, actual size %u", expected, count,
                         size);
        return false;
    }
    return true;
}

bool MessageData::ReadCount(const char*& cursor, const char* end, uint32_t& count) {
    if (!ReadU32(cursor, end, count)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "read count fail");
        return false;
    }
    return true;
}

bool MessageData::ReadSizedArray(const char*& cursor, const char* end, uint32_t fixedSize,
                                 unsigned int payloadSize, std::vector<char>& out) {
    uint32_t length = 0;
    if (!ReadU32(cursor, end, length)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "read size fail");
        return false;
    }
    const uint32_t expected = length + fixedSize;
    if (expected != payloadSize) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule,
                         "expected total size %u from size %u is wrong, actual size %u", expected,
                         length, payloadSize);
        return false;
    }
    if (!ReadBytes(cursor, end, length, out)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "read array fail");
        return false;
    }
    return true;
}

}  // namespace TesselFX
