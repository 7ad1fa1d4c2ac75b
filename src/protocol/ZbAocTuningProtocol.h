#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TesselFX {

/// The text envelope in which data leaves the library towards the caller's notifier:
/// "dsp_instance=<instance>;tessel_data=<payload>", the payload last and undelimited.
namespace ZbAocTuningProtocol {

extern const char* const kDspInstanceKey;
extern const char* const kTesselDataKey;

/// Largest envelope, header included.
constexpr size_t kMaxDspBufferSize = 16000;

/// The header text up to and including the "=" after the data key, without a terminator.
std::vector<char> BuildHeader(uint32_t instance);

/// Length of the header of the widest instance number (ten digits), so that any real header
/// fits in it. Computed once on first use; thread safe.
size_t HeaderSize();

}  // namespace ZbAocTuningProtocol
}  // namespace TesselFX
