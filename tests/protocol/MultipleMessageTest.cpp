// Long transfers: splitting, the splitter's sessions, merging in any order.

#include <gtest/gtest.h>

#include <memory>
#include <set>

#include "ProtocolTestSupport.h"
#include "protocol/MultipleMessageData.h"
#include "protocol/MultipleMsgDataMerger.h"
#include "protocol/MultipleMsgDataSplitter.h"
#include "protocol/NewSessionId.h"

namespace TesselFX {
namespace {

using test::Bytes;
using test::LogCapture;
using Pieces = std::vector<std::shared_ptr<MultipleMessageData>>;
using Frames = std::vector<std::vector<char>>;

std::vector<char> Counting(size_t size) {
    std::vector<char> out(size);
    for (size_t i = 0; i < size; ++i) out[i] = static_cast<char>(i);
    return out;
}

TEST(MultipleMessage, SplitCutsFramesOfTheSplitSize) {
    // 21 bytes a frame leaves one byte a piece: three pieces for three bytes.
    Frames frames;
    ASSERT_TRUE(MultipleMessageData::SplitToBuffers(9, 21, Bytes({'a', 'b', 'c'}), frames));
    EXPECT_EQ(frames,
              (Frames{Bytes({52, 0, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0, 9, 0, 0, 0, 1, 0, 0, 0, 'a'}),
                      Bytes({52, 0, 0, 0, 1, 0, 0, 0, 3, 0, 0, 0, 9, 0, 0, 0, 1, 0, 0, 0, 'b'}),
                      Bytes({52, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 9, 0, 0, 0, 1, 0, 0, 0, 'c'})}));

    // A buffer of exactly one chunk is one piece; one byte more makes two, the last short.
    Pieces pieces;
    ASSERT_TRUE(MultipleMessageData::Split(1, 30, Counting(10), pieces));
    ASSERT_EQ(pieces.size(), 1u);
    EXPECT_EQ(pieces[0]->GetBuffer().size(), 30u);
    ASSERT_TRUE(MultipleMessageData::Split(1, 30, Counting(11), pieces));
    ASSERT_EQ(pieces.size(), 2u);
    EXPECT_EQ(pieces[0]->GetBuffer().size(), 30u);
    EXPECT_EQ(pieces[1]->GetData(), Bytes({10}));
    EXPECT_EQ(pieces[1]->GetTotalMsgCount(), 2u);

    // Refusals leave the pieces as they were.
    LogCapture capture;
    EXPECT_FALSE(MultipleMessageData::Split(1, 30, {}, pieces));
    EXPECT_TRUE(capture.Has(4, "input buffer is empty"));
    EXPECT_FALSE(MultipleMessageData::Split(1, 20, Counting(3), pieces));
    EXPECT_TRUE(capture.Has(4, "splitSize too small. min_allowed:20 provided:20"));
    EXPECT_EQ(pieces.size(), 2u);

    // Merging the frames in order gives the buffer back; a foreign piece is refused.
    std::vector<char> merged = {'o', 'l', 'd'};
    ASSERT_TRUE(MultipleMessageData::SplitToBuffers(5, 24, Counting(50), frames));
    ASSERT_EQ(frames.size(), 13u);
    ASSERT_TRUE(MultipleMessageData::MergeBuffers(frames, merged));
    EXPECT_EQ(merged, Counting(50));
    EXPECT_TRUE(MultipleMessageData::MergeBuffers({}, merged));
    EXPECT_TRUE(merged.empty());
    Frames other;
    ASSERT_TRUE(MultipleMessageData::SplitToBuffers(6, 24, Counting(4), other));
    frames.push_back(other[0]);
    EXPECT_FALSE(MultipleMessageData::MergeBuffers(frames, merged));
    EXPECT_TRUE(capture.Has(4, "session id don't match (6!=5)"));
    frames.back().pop_back();
    EXPECT_FALSE(MultipleMessageData::MergeBuffers(frames, merged));
    EXPECT_TRUE(capture.Has(4, "failed to load from buffer"));
}

TEST(MultipleMessage, SplitterServesEachPieceOnceInAnyOrder) {
    LogCapture capture(0);
    MultipleMsgDataSplitter splitter;
    ASSERT_TRUE(splitter.Add(7, 21, Bytes({'a', 'b', 'c'})));
    EXPECT_FALSE(splitter.Add(7, 21, Bytes({'d'})));
    EXPECT_TRUE(capture.Has(4, "sessionId 7 already exist"));
    EXPECT_FALSE(splitter.Add(8, 21, {}));
    EXPECT_FALSE(splitter.Contains(8));

    // Looking without erase leaves the piece.
    ASSERT_NE(splitter.GetSplitData(7, 2, false), nullptr);
    EXPECT_TRUE(capture.Has(0, "GetSplitData sessionId 7 currentMsgCounter 2"));
    const auto second = splitter.GetSplitData(7, 1, true);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->GetData(), Bytes({'b'}));
    EXPECT_EQ(splitter.GetSplitData(7, 1, true), nullptr);
    EXPECT_TRUE(capture.Has(4, "could not find matched sessionId 7 currentMsgCounter 1"));
    EXPECT_EQ(splitter.GetSplitData(7, 3, true), nullptr);
    ASSERT_NE(splitter.GetSplitData(7, 0, true), nullptr);
    EXPECT_TRUE(splitter.Contains(7));
    ASSERT_NE(splitter.GetSplitData(7, 2, true), nullptr);
    EXPECT_FALSE(splitter.Contains(7));
    EXPECT_EQ(splitter.GetSplitData(7, 0, true), nullptr);
    EXPECT_TRUE(capture.Has(4, "could not find session id 7"));

    // Remove ends a session at once; the id may then be used again.
    ASSERT_TRUE(splitter.Add(7, 21, Bytes({'a', 'b'})));
    splitter.Remove(7);
    EXPECT_FALSE(splitter.Contains(7));
    EXPECT_TRUE(splitter.Add(7, 21, Bytes({'a'})));
}

/// A piece as the parser gets it: parsed from a frame.
std::unique_ptr<MultipleMessageData> Piece(unsigned counter, unsigned total, unsigned session,
                                           std::vector<char> data) {
    auto piece = std::make_unique<MultipleMessageData>();
    const std::vector<char> frame =
        MultipleMessageData(counter, total, session, std::move(data)).GetBuffer();
    EXPECT_TRUE(test::Load(*piece, frame));
    return piece;
}

TEST(MultipleMessage, MergerTakesPiecesInAnyOrderAndKeepsCompletedSessions) {
    LogCapture capture(1);
    MultipleMsgDataMerger merger;
    std::vector<char> merged;
    bool complete = true;
    auto piece = Piece(2, 3, 4, {'c'});
    ASSERT_TRUE(merger.Add(piece, complete));
    EXPECT_FALSE(complete);
    EXPECT_TRUE(capture.Has(1, " MultipleMsgDataMerger::Add result = true"));
    EXPECT_FALSE(merger.FillMergedBuffer(4, merged));
    EXPECT_TRUE(capture.Texts(4).empty());

    // Duplicates and counters out of range are refused; the session stays.
    piece = Piece(2, 3, 4, {'x'});
    EXPECT_FALSE(merger.Add(piece, complete));
    EXPECT_TRUE(capture.Has(4, "Add: index(2/3) already exists"));
    EXPECT_TRUE(capture.Has(1, " MultipleMsgDataMerger::Add result = false"));
    piece = Piece(3, 3, 4, {'x'});
    EXPECT_FALSE(merger.Add(piece, complete));
    EXPECT_TRUE(capture.Has(4, "Add: index(3/3) exceeds boundary"));
    // The total of later pieces is not looked at.
    piece = Piece(0, 9, 4, {'a', 'a'});
    ASSERT_TRUE(merger.Add(piece, complete));
    EXPECT_FALSE(complete);
    piece = Piece(1, 3, 4, {'b'});
    ASSERT_TRUE(merger.Add(piece, complete));
    EXPECT_TRUE(complete);
    ASSERT_TRUE(merger.FillMergedBuffer(4, merged));
    EXPECT_EQ(merged, Bytes({'a', 'a', 'b', 'c'}));

    EXPECT_FALSE(merger.FillMergedBuffer(5, merged));
    EXPECT_TRUE(capture.Has(4, "FillMergedBuffer: failed to find session 5"));

    // A completed session is kept: a repeated id reads as complete at once, and its next
    // full transfer is appended to the old bytes.
    piece = Piece(0, 2, 4, {'d'});
    ASSERT_TRUE(merger.Add(piece, complete));
    EXPECT_TRUE(complete);
    piece = Piece(1, 2, 4, {'e'});
    ASSERT_TRUE(merger.Add(piece, complete));
    piece = Piece(2, 2, 4, {'f'});
    ASSERT_TRUE(merger.Add(piece, complete));
    ASSERT_TRUE(merger.FillMergedBuffer(4, merged));
    EXPECT_EQ(merged, Bytes({'a', 'a', 'b', 'c', 'd', 'e', 'f'}));

    // A session of total 0 takes no piece.
    piece = Piece(0, 0, 6, {'a'});
    EXPECT_FALSE(merger.Add(piece, complete));
    EXPECT_TRUE(capture.Has(4, "Add: index(0/0) exceeds boundary"));
}

TEST(MultipleMessage, SessionIdsAreDrawnFromZeroTo2147483647) {
    std::set<uint32_t> ids;
    for (int i = 0; i < 64; ++i) {
        const uint32_t id = NewSessionId();
        EXPECT_LE(id, 2147483647u);
        ids.insert(id);
    }
    EXPECT_GT(ids.size(), 60u);
}

}  // namespace
}  // namespace TesselFX
