// Every message kind, cut at every length and with every byte flipped: a clean refusal or a
// parse within the frame, never a read past it (the sanitizer builds check that).

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "ProtocolTestSupport.h"
#include "protocol/BoolMessages.h"
#include "protocol/CharArrayMessages.h"
#include "protocol/ChunkMessages.h"
#include "protocol/FullPresetMessages.h"
#include "protocol/IdMessages.h"
#include "protocol/MultipleMessageData.h"
#include "protocol/MultipleMsgDataMerger.h"
#include "protocol/ParameterArrayMessages.h"
#include "protocol/ParameterMessages.h"
#include "protocol/RequestMetersMessageData.h"
#include "protocol/RequestMultipleMessageData.h"
#include "protocol/SetLinkLawsValueMessageData.h"
#include "protocol/UintArrayMessages.h"
#include "protocol/UintMessages.h"
#include "protocol/UpdateMetersMessageData.h"

namespace TesselFX {
namespace {

using test::LogCapture;

struct Kind {
    std::function<std::unique_ptr<MessageData>()> make;
    std::vector<char> frame;  ///< a valid frame of the kind
};

template <typename Message, typename... Args>
Kind KindOf(Args&&... args) {
    return {[] { return std::make_unique<Message>(); },
            Message(std::forward<Args>(args)...).GetBuffer()};
}

std::vector<Kind> AllKinds() {
    TesselTuning::FullPreset preset;
    preset.hasParameters = true;
    preset.parameters = {{1, 0.5}, {2, 1.5}};
    preset.llChunk = {1, 2, 3};
    preset.llSources = {{2800, 4.0}};
    return {
        KindOf<SetParameterMessageData>(1u, 0.5),
        KindOf<SetParameterArrayMessageData>(std::map<unsigned int, double>{{1, 0.5}, {9, 2.0}}),
        KindOf<SetChunkMessageData>(1u, std::vector<char>{1, 2, 3, 4}),
        KindOf<GetChunkMessageData>(1u),
        KindOf<GetVersionMessageData>(std::string("dsp")),
        KindOf<GetParameterArrayMessageData>(std::vector<uint32_t>{1, 2, 3}),
        KindOf<GetLinkLawParameterArrayMessageData>(),
        KindOf<SetLinkLawsValueMessageData>(2800u, 1.0, 2.0),
        KindOf<RequestMetersMessageData>(std::map<uint32_t, CMeterInfo>{
            {0, CMeterInfo(0, 1, 1)}, {3, CMeterInfo(3, 2, 3, CMeterValue(7u))}}),
        KindOf<UpdateMetersMessageData>(
            std::map<uint32_t, CMeterValue>{{0, CMeterValue(1.0f)}, {3, CMeterValue(7u)}}),
        KindOf<SetEnableMessageData>(true),
        KindOf<SetFullPresetMessageData>(preset, true),
        KindOf<MultipleMessageData>(0u, 2u, 5u, std::vector<char>{1, 2, 3}),
        KindOf<RequestMultipleMessageData>(0u, 2u, 5u),
    };
}

TEST(MalformedMessages, EveryTruncationIsRefused) {
    LogCapture capture;
    for (const Kind& kind : AllKinds()) {
        for (size_t size = 0; size < kind.frame.size(); ++size) {
            // An exact-size copy, so that a read past it is a sanitizer error.
            const std::vector<char> cut(kind.frame.begin(), kind.frame.begin() + size);
            std::unique_ptr<MessageData> message = kind.make();
            EXPECT_FALSE(test::Load(*message, cut)) << "id " << kind.frame[0] << " cut to " << size;
        }
    }
}

TEST(MalformedMessages, EveryFlippedByteParsesCleanlyOrIsRefused) {
    LogCapture capture;
    for (const Kind& kind : AllKinds()) {
        for (size_t i = 0; i < kind.frame.size(); ++i) {
            for (int mask : {0x01, 0x80, 0xFF}) {
                std::vector<char> corrupt = kind.frame;
                corrupt[i] = static_cast<char>(corrupt[i] ^ mask);
                std::unique_ptr<MessageData> message = kind.make();
                if (test::Load(*message, corrupt)) {
                    // What parsed writes back within the frame's own size, bar the id.
                    EXPECT_LE(message->GetBuffer().size(), corrupt.size())
                        << "id " << kind.frame[0] << " byte " << i;
                }
            }
        }
    }
}

TEST(MalformedMessages, RefusedPiecesLeaveTheMergerAsItWas) {
    LogCapture capture;
    std::vector<std::vector<char>> frames;
    const std::vector<char> buffer = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    ASSERT_TRUE(MultipleMessageData::SplitToBuffers(5, 24, buffer, frames));
    ASSERT_EQ(frames.size(), 3u);
    MultipleMsgDataMerger merger;
    bool complete = false;
    const auto add = [&merger, &complete](const std::vector<char>& frame) {
        auto piece = std::make_unique<MultipleMessageData>();
        return test::Load(*piece, frame) && merger.Add(piece, complete);
    };
    ASSERT_TRUE(add(frames[0]));
    for (size_t i = 0; i < frames[1].size(); ++i) {
        EXPECT_FALSE(add(std::vector<char>(frames[1].begin(), frames[1].begin() + i))) << i;
        // Flipped id, counter, session or size: a wrong size or id is refused by the piece, a
        // counter that is held or out of range by the merger, and another session opens a
        // session of its own. The total of a later piece and the data are not checked by
        // design, so their flips are left out.
        if (i >= 20 || (i >= 8 && i < 12)) continue;
        std::vector<char> corrupt = frames[1];
        corrupt[i] = static_cast<char>(corrupt[i] ^ 0xFF);
        MultipleMessageData piece;
        const bool otherSession = test::Load(piece, corrupt) && piece.GetSessionId() != 5;
        EXPECT_EQ(add(corrupt), otherSession) << i;
    }
    ASSERT_TRUE(add(frames[2]));
    EXPECT_FALSE(complete);
    ASSERT_TRUE(add(frames[1]));
    EXPECT_TRUE(complete);
    std::vector<char> merged;
    ASSERT_TRUE(merger.FillMergedBuffer(5, merged));
    EXPECT_EQ(merged, buffer);
}

}  // namespace
}  // namespace TesselFX
