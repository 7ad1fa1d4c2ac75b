#pragma once

#include <cstdint>

namespace TesselFX {

/// One stream description as the algorithm library reads it.
struct ZorbStreamFormat_t {
    uint32_t sampleRate;
    uint32_t channels;
    uint32_t formatCode;  ///< always kZorbStreamFormatCode
    uint32_t reserved;    ///< always 0
    uint32_t sampleSize;
};
constexpr uint32_t kZorbStreamFormatCode = 3;

/// An audio stream of the library; opaque here, only passed on.
struct ZorbStream_t;

/// Callback type of the library's RPC registrations.
typedef int (*ZorbRpcCallback)(void* context, unsigned* data, unsigned size);

}  // namespace TesselFX
