#pragma once

#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "protocol/IHalControlCommandParser.h"
#include "protocol/MultipleMsgDataMerger.h"
#include "protocol/MultipleMsgDataSplitter.h"

namespace TesselFX {

/// Turns command frames into calls on the control manager, through one table for commands
/// without a reply and one for commands with a reply, both keyed by message id. Reassembles
/// commands that arrive in pieces and keeps the pieces of long replies until they are fetched.
/// No lock of its own: the control manager's lock covers every call.
class HalControlCommandParser : public IHalControlCommandParser {
  public:
    using SetHandler = std::function<bool(HalControlCommandParser*, const zorbaudio_settings_t*,
                                          const char*, unsigned int)>;
    using GetHandler = std::function<bool(HalControlCommandParser*, const zorbaudio_settings_t*,
                                          const char*, unsigned int, std::vector<char>&)>;

    /// Fills both tables; each entry calls its handler through the virtual operation, so that a
    /// subclass may replace a handler.
    HalControlCommandParser();
    ~HalControlCommandParser() override = default;
    HalControlCommandParser(const HalControlCommandParser&) = delete;
    HalControlCommandParser& operator=(const HalControlCommandParser&) = delete;

    bool SetCommand(const zorbaudio_settings_t* settings, const char* buffer,
                    unsigned int size) override;
    /// A reply longer than replySize goes out as its first piece; the tool fetches the others
    /// with id 53.
    bool GetCommand(const zorbaudio_settings_t* settings, const char* buffer, unsigned int size,
                    char* reply, unsigned int& replySize) override;
    void SetHalControlManager(const std::shared_ptr<IHalControlManager>& manager) override;
    bool SetCommandFromMessageDataBuffer(const zorbaudio_settings_t* settings, const char* buffer,
                                         unsigned int size) override;
    bool GetCommandFromMessageDataBuffer(const zorbaudio_settings_t* settings, const char* buffer,
                                         unsigned int size, std::vector<char>& reply) override;
    bool IsSplitRequired(const std::vector<char>& reply, unsigned int size) override;
    /// Keeps the pieces of reply, at most size bytes each, under a new session and gives the
    /// first piece's frame.
    bool SplitReplyData(const std::vector<char>& reply, unsigned int size,
                        std::vector<char>& out) override;
    /// Copies data to out, whose room is size bytes, zeroing that room first; size becomes the
    /// data's length.
    bool CopyReplyData(const std::vector<char>& data, char* out, unsigned int& size) override;

    // Commands without a reply. Each parses the whole frame and calls the manager once.
    virtual bool StartTuningModeFromBuffer(const zorbaudio_settings_t* settings, const char* buffer,
                                           unsigned int size);
    virtual bool SetParameterFromBuffer(const zorbaudio_settings_t* settings, const char* buffer,
                                        unsigned int size);
    virtual bool SetParameterArrayFromBuffer(const zorbaudio_settings_t* settings,
                                             const char* buffer, unsigned int size);
    virtual bool SetChunkFromBuffer(const zorbaudio_settings_t* settings, const char* buffer,
                                    unsigned int size);
    virtual bool SetFullPresetFromBuffer(const zorbaudio_settings_t* settings, const char* buffer,
                                         unsigned int size);
    virtual bool SetLinkLawsValueFromBuffer(const zorbaudio_settings_t* settings,
                                            const char* buffer, unsigned int size);
    virtual bool SetSoundModeFromBuffer(const zorbaudio_settings_t* settings, const char* buffer,
                                        unsigned int size);
    virtual bool SetOutputModeFromBuffer(const zorbaudio_settings_t* settings, const char* buffer,
                                         unsigned int size);
    virtual bool FlushFromBuffer(const zorbaudio_settings_t* settings, const char* buffer,
                                 unsigned int size);
    virtual bool WaitForFlushFromBuffer(const zorbaudio_settings_t* settings, const char* buffer,
                                        unsigned int size);
    virtual bool SetEnableFromBuffer(const zorbaudio_settings_t* settings, const char* buffer,
                                     unsigned int size);
    virtual bool SetBypassFromBuffer(const zorbaudio_settings_t* settings, const char* buffer,
                                     unsigned int size);
    /// Takes one piece of a long command; the last one runs the whole command.
    virtual bool HandleMultipleMsgDataForSetFromBuffer(const zorbaudio_settings_t* settings,
                                                       const char* buffer, unsigned int size);

    // Commands with a reply frame in reply.
    virtual bool GetTuningModeValidationFromBuffer(const zorbaudio_settings_t* settings,
                                                   const char* buffer, unsigned int size,
                                                   std::vector<char>& reply);
    virtual bool GetTuningModeFromBuffer(const zorbaudio_settings_t* settings, const char* buffer,
                                         unsigned int size, std::vector<char>& reply);
    virtual bool GetParameterFromBuffer(const zorbaudio_settings_t* settings, const char* buffer,
                                        unsigned int size, std::vector<char>& reply);
    virtual bool GetParameterArrayFromBuffer(const zorbaudio_settings_t* settings,
                                             const char* buffer, unsigned int size,
                                             std::vector<char>& reply);
    virtual bool GetChunkFromBuffer(const zorbaudio_settings_t* settings, const char* buffer,
                                    unsigned int size, std::vector<char>& reply);
    /// Leaves reply empty: the preset goes out as a notification.
    virtual bool GetFullPresetFromBuffer(const zorbaudio_settings_t* settings, const char* buffer,
                                         unsigned int size, std::vector<char>& reply);
    virtual bool GetLinkLawParameterArrayFromBuffer(const zorbaudio_settings_t* settings,
                                                    const char* buffer, unsigned int size,
                                                    std::vector<char>& reply);
    virtual bool RequestLinkLawsSourceParameterFromBuffer(const zorbaudio_settings_t* settings,
                                                          const char* buffer, unsigned int size,
                                                          std::vector<char>& reply);
    virtual bool RequestLinkLawsSourceParameterArrayFromBuffer(const zorbaudio_settings_t* settings,
                                                               const char* buffer,
                                                               unsigned int size,
                                                               std::vector<char>& reply);
    virtual bool RequestMetersFromBuffer(const zorbaudio_settings_t* settings, const char* buffer,
                                         unsigned int size, std::vector<char>& reply);
    virtual bool GetVersionFromBuffer(const zorbaudio_settings_t* settings, const char* buffer,
                                      unsigned int size, std::vector<char>& reply);
    virtual bool GetEnableFromBuffer(const zorbaudio_settings_t* settings, const char* buffer,
                                     unsigned int size, std::vector<char>& reply);
    virtual bool GetBypassFromBuffer(const zorbaudio_settings_t* settings, const char* buffer,
                                     unsigned int size, std::vector<char>& reply);
    /// Takes one piece of a long command; reply stays empty until the last one.
    virtual bool HandleMultipleMsgDataForGetFromBuffer(const zorbaudio_settings_t* settings,
                                                       const char* buffer, unsigned int size,
                                                       std::vector<char>& reply);
    /// Serves, once, a pending piece of a long reply.
    virtual bool RequestMultipleMessageDataFromBuffer(const zorbaudio_settings_t* settings,
                                                      const char* buffer, unsigned int size,
                                                      std::vector<char>& reply);

  protected:
    /// Zeroes the size bytes of out, copies length bytes of data there and sets size to
    /// length; false after "replySize %u is not enough, actual size %u" when they don't fit.
    static bool CopyToReply(const char* data, size_t length, char* out, unsigned int& size);

  private:
    /// Merged commands that hold pieces again are followed this deep, no deeper.
    static constexpr int kMaxMergeDepth = 4;

    /// Adds a piece to its session; once the session is complete, complete is true and merged
    /// holds the whole command.
    bool MergePiece(const char* buffer, unsigned int size, bool& complete,
                    std::vector<char>& merged);
    /// Runs dispatch on a merged command, one nesting level deeper.
    bool DispatchMerged(const std::function<bool()>& dispatch);

    std::map<int, SetHandler> m_setHandlers;
    std::map<int, GetHandler> m_getHandlers;
    MultipleMsgDataMerger m_merger;
    MultipleMsgDataSplitter m_splitter;
    std::shared_ptr<IHalControlManager> m_manager;
    int m_mergeDepth = 0;
};

}  // namespace TesselFX
