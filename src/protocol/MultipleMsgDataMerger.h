#pragma once

#include <map>
#include <memory>
#include <vector>

#include "protocol/MultipleMessageData.h"

namespace TesselFX {

/// Collects the pieces of incoming commands by session id, in any order. A completed session
/// is kept with its merged bytes and complete flag for the merger's lifetime: a later transfer
/// under the same id finds it complete at once and appends to the merged bytes when it ends.
/// Tools must not repeat a session id. No lock: the caller serialises all calls.
class MultipleMsgDataMerger {
  public:
    /// Takes the piece's data into its session, opening the session (with the piece's total)
    /// when it is new. complete tells whether the session has all its pieces. A counter at or
    /// above the total, or one already held, is logged and gives false; the session stays.
    bool Add(std::unique_ptr<MultipleMessageData>& piece, bool& complete);
    /// The merged bytes of a complete session. An unknown session is logged; an incomplete
    /// one gives false silently.
    bool FillMergedBuffer(int sessionId, std::vector<char>& out);

  private:
    struct MergeSession {
        unsigned int totalMsgCount = 0;
        bool complete = false;
        std::vector<char> merged;
        std::map<unsigned int, std::vector<char>> pieces;

        bool AddPiece(unsigned int counter, std::vector<char> data, bool& complete);
    };

    std::map<int, std::unique_ptr<MergeSession>> m_sessions;
};

}  // namespace TesselFX
