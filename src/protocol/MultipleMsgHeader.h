#pragma once

#include <cstdint>

namespace TesselFX {

/// The three u32 that open a piece of a long transfer and a request for one: the piece's
/// counter (from 0), the number of pieces and the session id.
struct MultipleMsgHeader {
    static constexpr unsigned int kSize = 12;

    unsigned int currentMsgCounter = 0;
    unsigned int totalMsgCount = 0;
    unsigned int sessionId = 0;

    /// Reads the fields in order; the first that is missing is logged and gives false.
    bool Read(const char*& cursor, const char* end);
    /// Writes the fields; false without writing when fewer than kSize bytes are left.
    bool Write(char*& cursor, const char* end) const;
};

}  // namespace TesselFX
