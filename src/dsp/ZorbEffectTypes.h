#pragma once

// C types of the algorithm library's entry points. They stay in the global namespace, as the
// library declares them, so that the function types the wrapper calls through are the
// library's own.

#include <stdint.h>

#ifndef ZORB_STREAM_FORMAT_T_DEFINED
#define ZORB_STREAM_FORMAT_T_DEFINED
/// One stream description: sample rate, channels, format code 3, 0, sample size.
typedef struct ZorbStreamFormat_t {
    uint32_t sampleRate;
    uint32_t channels;
    uint32_t formatCode;
    uint32_t reserved;
    uint32_t sampleSize;
} ZorbStreamFormat_t;
#endif

/// An audio stream of the library; opaque to the host, only passed on.
struct ZorbStream_t;

namespace TesselFX {

constexpr uint32_t kZorbStreamFormatCode = 3;

/// Callback type of the library's RPC registrations.
typedef int (*ZorbRpcCallback)(void* context, unsigned* data, unsigned size);

}  // namespace TesselFX
