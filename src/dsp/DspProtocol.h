#pragma once

#include <cstddef>
#include <cstdint>

namespace TesselFX {

/// Result of the DSP buffer layer: 0 success, otherwise one of the codes below.
typedef int status_t;
constexpr status_t kStatusOk = 0;
constexpr status_t kStatusBadValue = -22;
constexpr status_t kStatusUnknownError = static_cast<status_t>(0x80000000u);

/// Requests of the host to the DSP; every integer is a little-endian u32.
constexpr uint32_t kDspOpcodeSetCoefficients = 1;
constexpr uint32_t kDspOpcodeGetMeters = 4;
constexpr uint32_t kDspOpcodeGetVersion = 5;
/// Replies of the DSP.
constexpr uint32_t kDspReplyMeters = 3;
constexpr uint32_t kDspReplyVersion = 6;

/// Largest payload of one set-coefficients frame, and the frame size it gives with the
/// opcode and length words. The reply buffer of a send has the same capacity.
constexpr size_t kDspOpcodeMaxPayload = 15992;
constexpr size_t kMaxDspBufferSize = 16000;

}  // namespace TesselFX
