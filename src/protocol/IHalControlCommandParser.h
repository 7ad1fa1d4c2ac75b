#pragma once

#include <memory>
#include <vector>

#include "config/ZorbAudioSettings.h"
#include "control/IHalControlManager.h"

namespace TesselFX {

/// Turns a tuning tool's command frame into one call on the control manager and the result
/// into a reply frame. No lock of its own: the control manager's lock covers every call.
class IHalControlCommandParser {
  public:
    virtual ~IHalControlCommandParser() = default;

    /// Runs a command that has no reply.
    virtual bool SetCommand(const zorbaudio_settings_t* settings, const char* buffer,
                            unsigned int size) = 0;
    /// Runs a command and writes its reply to reply; replySize holds the room before the call
    /// and the reply's length after it.
    virtual bool GetCommand(const zorbaudio_settings_t* settings, const char* buffer,
                            unsigned int size, char* reply, unsigned int& replySize) = 0;
    /// The manager that commands go to; must be set before the first command.
    virtual void SetHalControlManager(const std::shared_ptr<IHalControlManager>& manager) = 0;
    virtual bool SetCommandFromMessageDataBuffer(const zorbaudio_settings_t* settings,
                                                 const char* buffer, unsigned int size) = 0;
    virtual bool GetCommandFromMessageDataBuffer(const zorbaudio_settings_t* settings,
                                                 const char* buffer, unsigned int size,
                                                 std::vector<char>& reply) = 0;
    virtual bool IsSplitRequired(const std::vector<char>& reply, unsigned int size) = 0;
    virtual bool SplitReplyData(const std::vector<char>& reply, unsigned int size,
                                std::vector<char>& out) = 0;
    virtual bool CopyReplyData(const std::vector<char>& data, char* out, unsigned int& size) = 0;
};

}  // namespace TesselFX
