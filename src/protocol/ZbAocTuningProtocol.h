#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace TesselFX {

/// The text envelope in which data leaves the library towards the caller's notifier:
/// "dsp_instance=<instance>;tessel_data=<payload>", the payload last and undelimited.
/// Stateless apart from the header size, which is computed once; thread safe.
namespace ZbAocTuningProtocol {

extern const char* const kDspInstanceKey;
extern const char* const kTesselDataKey;

/// Largest envelope, header included.
constexpr size_t kMaxDspBufferSize = 16000;
/// The largest envelope as the number of bytes that base64 text of that length carries.
constexpr size_t kMaxDecodedSize = 12000;

/// The header text up to and including the "=" after the data key, without a terminator.
std::vector<char> BuildHeader(uint32_t instance);

/// Length of the header of the widest instance number (ten digits), so that any real header
/// fits in it. Computed once on first use; thread safe.
size_t HeaderSize();

/// The header, then the payload bytes unchanged.
std::vector<char> WrapRaw(uint32_t instance, const std::vector<char>& payload);
/// The same for size bytes at payload, which may be null when size is 0.
std::vector<char> WrapRaw(uint32_t instance, const char* payload, size_t size);
/// The header, then the payload as base64 text.
std::vector<char> WrapBase64(uint32_t instance, const std::vector<char>& payload);
/// The payload of a base64 envelope, decoded into out; false when the text has no data key.
bool UnwrapBase64(const std::vector<char>& buffer, std::vector<char>& out);
/// The value of the first ";"-separated part that contains the data key: what lies beyond the
/// key's length plus one, counted from the part's start. False when no part has the key.
bool ExtractData(const std::string& text, std::string& value);

/// The largest envelope, kMaxDspBufferSize.
size_t MaxBufferSize();
/// The decoded bound, kMaxDecodedSize.
size_t MaxDecodedSize();
/// The number of bytes that base64 text of size characters carries: (size >> 2) * 3.
size_t DecodedSize(size_t size);

}  // namespace ZbAocTuningProtocol
}  // namespace TesselFX
