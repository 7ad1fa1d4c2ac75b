#include "protocol/MultipleMsgHeader.h"

#include "log/TesselLog.h"
#include "preset/BinaryPrimitives.h"

namespace TesselFX {

bool MultipleMsgHeader::Read(const char*& cursor, const char* end) {
    if (!ReadU32(cursor, end, currentMsgCounter)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "read current msg counter fail");
        return false;
    }
    if (!ReadU32(cursor, end, totalMsgCount)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "read total msg count fail");
        return false;
    }
    if (!ReadU32(cursor, end, sessionId)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "read current session id fail");
        return false;
    }
    return true;
}

bool MultipleMsgHeader::Write(char*& cursor, const char* end) const {
    if (cursor > end || static_cast<unsigned int>(end - cursor) < kSize) {
        return false;
    }
    WriteU32(cursor, end, currentMsgCounter);
    WriteU32(cursor, end, totalMsgCount);
    WriteU32(cursor, end, sessionId);
    return true;
}

}  // namespace TesselFX
