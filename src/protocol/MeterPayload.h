#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "dsp/CMeterInfo.h"
#include "dsp/CMeterValue.h"

namespace TesselFX {

/// The meter messages' payloads are written into a buffer of this size and cut to what was
/// written: a map that needs more goes out cut off after its last whole field, with the full
/// count at its head, and its reader then fails.
constexpr size_t kMeterPayloadMaxSize = 10240;

/// u32 count, then per meter u32 size of its info (12 or 16) and the info, in key order.
std::vector<char> SerializeMeterInfoMap(const std::map<uint32_t, CMeterInfo>& infos);
/// Replaces infos with the entries of a payload, each under its meter index. False (logged) at
/// the first entry that is missing or malformed.
bool DeserializeMeterInfoMap(const char* data, unsigned int size,
                             std::map<uint32_t, CMeterInfo>& infos);

/// u32 count, then per meter u32 8, u32 key and the value's 4 bytes, in key order.
std::vector<char> SerializeMeterValueMap(const std::map<uint32_t, CMeterValue>& values);
/// Replaces values with the entries of a payload. False (logged) at the first entry that is
/// missing or whose size is not 8.
bool DeserializeMeterValueMap(const char* data, unsigned int size,
                              std::map<uint32_t, CMeterValue>& values);

}  // namespace TesselFX
