#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "config/CommonSettings.h"

namespace TesselFX {

/// The function through which control buffers leave the library: handle of the control
/// object, settings of the sending handler's control description, the buffer, and an optional
/// reply buffer whose room *replySize holds before the call and whose length it holds after.
/// Returns 0 for success.
using DspSendFunction = int (*)(void* handle, CommonSettings* settings, const void* data,
                                uint32_t size, void* reply, uint32_t* replySize);

/// The only way by which control buffers leave the library. settings are those of the
/// sending handler's control description; they tell the host which DSP instance is meant.
class IDspBufferSender {
  public:
    virtual ~IDspBufferSender() = default;
    /// Delivers one buffer; true when the host accepted it.
    virtual bool Send(const std::shared_ptr<CommonSettings>& settings,
                      const std::vector<char>& buffer) = 0;
    /// Delivers one buffer and receives the DSP's answer into reply.
    virtual bool SendAndReceive(const std::shared_ptr<CommonSettings>& settings,
                                const std::vector<char>& buffer, std::vector<char>& reply) = 0;
    /// Writes the buffer to the log as 32-bit words.
    virtual void DumpBufferToDsp(const std::vector<char>& buffer) = 0;
};

}  // namespace TesselFX
