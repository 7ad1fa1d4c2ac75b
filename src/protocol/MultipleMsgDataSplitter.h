#pragma once

#include <map>
#include <memory>
#include <vector>

#include "protocol/MultipleMessageData.h"

namespace TesselFX {

/// Keeps the pieces of long replies until the tool fetches them, by session id. A session
/// ends when its last piece has been fetched with erase, in any order, or on Remove; nothing
/// expires it otherwise. No lock: the caller serialises all calls.
class MultipleMsgDataSplitter {
  public:
    virtual ~MultipleMsgDataSplitter() = default;

    /// Cuts buffer into pieces of splitSize-byte frames under a new session id. A session id
    /// already held, or a buffer that cannot be split, is logged and gives false.
    virtual bool Add(unsigned int sessionId, unsigned int splitSize,
                     const std::vector<char>& buffer);
    /// The piece of a session and counter, or null (logged) when there is none. With erase
    /// the piece is taken out, and the session with its last piece.
    virtual std::shared_ptr<MultipleMessageData> GetSplitData(unsigned int sessionId,
                                                              unsigned int currentMsgCounter,
                                                              bool erase);
    virtual void Remove(unsigned int sessionId);
    virtual bool Contains(unsigned int sessionId) const;

  private:
    std::map<unsigned int, std::vector<std::shared_ptr<MultipleMessageData>>> m_sessions;
};

}  // namespace TesselFX
