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

}  // namespace TesselFX
