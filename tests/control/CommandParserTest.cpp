// The command parsers over a control manager without handlers: every command that needs a
// handler fails, the validation query and the version query answer.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "../e2e/ToolFrames.h"
#include "LogCapture.h"
#include "config/ZorbAudioSettings.h"
#include "control/HalControlManagerImpl.h"
#include "protocol/Base64CodedHalControlCommandParser.h"

namespace TesselFX {
namespace test {
namespace {

using bringup_test::Msg;
using bringup_test::Piece;
using bringup_test::U32;

std::string Request(uint32_t counter, uint32_t session) {
    return Msg(53, U32(counter) + U32(0) + U32(session));
}
uint32_t SessionOf(const std::string& piece) {
    uint32_t session = 0;
    for (int i = 3; i >= 0; --i) session = session << 8 | static_cast<uint8_t>(piece[12 + i]);
    return session;
}

struct Fixture {
    Fixture() {
        settings.AddUint("INSTANCE", 1);
        manager->SetDspKitVersion(std::string(100, 'v'));
        parser.SetHalControlManager(manager);
    }
    bool Set(const std::string& frame) {
        return parser.SetCommand(settings.GetSettings(), frame.data(),
                                 static_cast<unsigned int>(frame.size()));
    }
    /// A get command with room bytes of reply; reply gets what was written.
    bool Get(const std::string& frame, unsigned int room, std::string& reply) {
        std::vector<char> buffer(room + 1, '#');
        unsigned int size = room;
        const bool result =
            parser.GetCommand(settings.GetSettings(), frame.data(),
                              static_cast<unsigned int>(frame.size()), buffer.data(), size);
        reply = result ? std::string(buffer.data(), size) : "#";
        EXPECT_EQ(buffer[room], '#') << "written beyond the room";
        return result;
    }
    ZorbAudioSettings settings;
    std::shared_ptr<HalControlManagerImpl> manager = std::make_shared<HalControlManagerImpl>();
    HalControlCommandParser parser;
};

TEST(CommandParserTest, DispatchRefusesWhatNoTableHolds) {
    Fixture f;
    std::string reply;
    LogCapture capture;
    EXPECT_FALSE(f.Set("\x01\x00\x00"));
    EXPECT_FALSE(f.Set(Msg(8)));
    EXPECT_FALSE(f.Set(Msg(54)));
    EXPECT_FALSE(f.Set(Msg(6, U32(1))));
    EXPECT_FALSE(f.Get(Msg(1, U32(1) + std::string(8, '\0')), 64, reply));
    EXPECT_FALSE(f.Get(Msg(31, std::string(12, '\0')), 64, reply));
    EXPECT_EQ(
        capture.ErrorTexts(),
        (std::vector<std::string>{"size is wrong", "do not support id -1", "do not support id 8",
                                  "invalid id 54", "do not support id -1", "do not support id 6",
                                  "do not support id 1", "do not support id 31"}));

    capture.Clear();
    HalControlCommandParser orphan;
    EXPECT_FALSE(orphan.SetCommand(f.settings.GetSettings(), "\x29\0\0\0\1\0\0\0", 8));
    unsigned int size = 8;
    char out[8];
    EXPECT_FALSE(orphan.GetCommand(f.settings.GetSettings(), "\x30\0\0\0", 4, out, size));
    EXPECT_EQ(capture.ErrorTexts(),
              (std::vector<std::string>{"HalControlManager is null", "HalControlManager is null"}));
}

TEST(CommandParserTest, FailedParsesAndManagerCallsEndTheCommand) {
    Fixture f;
    std::string reply;
    LogCapture capture;
    // A request without its u32, and one without a handler to answer it.
    EXPECT_FALSE(f.Get(Msg(10, "\x01\x00"), 64, reply));
    EXPECT_FALSE(f.Get(Msg(39, U32(0)), 64, reply));
    EXPECT_FALSE(f.Set(Msg(41, "\x01")));
    EXPECT_FALSE(f.Set(Msg(41, U32(1))));
    EXPECT_EQ(capture.ErrorTexts(),
              (std::vector<std::string>{"get zbIndex fail", "not valid messageData",
                                        "handler returned error", "no valid ControlHandler",
                                        "handler returned error", "get zbIndex fail",
                                        "no valid ControlHandler"}));
}

TEST(CommandParserTest, RepliesFitTheRoomOrTravelInPieces) {
    Fixture f;
    std::string reply;
    // Id 48 answers 1 with any payload; a reply of exactly the room is not split.
    ASSERT_TRUE(f.Get(Msg(48, "xyz"), 8, reply));
    EXPECT_EQ(reply, Msg(48, U32(1)));

    const std::string version = Msg(7, U32(6) + "dspkit");
    const std::string whole = Msg(38, U32(100) + std::string(100, 'v'));
    ASSERT_TRUE(f.Get(version, 108, reply));
    EXPECT_EQ(reply, whole);

    // 108 bytes in a room of 30: pieces of 10 data bytes, eleven of them (the order of the
    // requests is free, as the end-to-end session shows).
    ASSERT_TRUE(f.Get(version, 30, reply));
    const uint32_t session = SessionOf(reply);
    EXPECT_EQ(reply, Piece(0, 11, session, whole.substr(0, 10)));
    for (uint32_t counter = 1; counter < 11; ++counter) {
        ASSERT_TRUE(f.Get(Request(counter, session), 30, reply)) << counter;
        EXPECT_EQ(reply, Piece(counter, 11, session, whole.substr(10 * counter, 10)));
    }

    // Every piece is served once; then the session is gone. An unknown session is refused
    // without a line of its own, only the dispatch's.
    const std::string refused = "handler returned error";
    LogCapture capture;
    EXPECT_FALSE(f.Get(Request(3, session), 30, reply));
    EXPECT_FALSE(f.Get(Request(0, session + 1), 30, reply));
    EXPECT_EQ(capture.ErrorTexts(), (std::vector<std::string>{refused, refused}));

    // A known session asked for a counter that is not pending.
    ASSERT_TRUE(f.Get(version, 30, reply));
    const uint32_t next = SessionOf(reply);
    capture.Clear();
    EXPECT_FALSE(f.Get(Request(0, next), 30, reply));
    EXPECT_FALSE(f.Get(Request(11, next), 30, reply));
    EXPECT_TRUE(f.Get(Request(5, next), 30, reply));
    EXPECT_EQ(
        capture.ErrorTexts(),
        (std::vector<std::string>{
            "could not find matched sessionId " + std::to_string(next) + " currentMsgCounter 0",
            refused,
            "could not find matched sessionId " + std::to_string(next) + " currentMsgCounter 11",
            refused}));

    // A room of 20 bytes leaves a piece no data.
    capture.Clear();
    EXPECT_FALSE(f.Get(version, 20, reply));
    EXPECT_EQ(capture.ErrorTexts(),
              std::vector<std::string>{"splitSize too small. min_allowed:20 provided:20"});
}

// Pieces out of order and a query in pieces are shown end to end; here the refusals.
TEST(CommandParserTest, PiecesOfACommandAreCheckedAsTheyArrive) {
    Fixture f;
    LogCapture capture;
    // A piece that repeats a counter, one beyond the total, and one whose size is wrong.
    EXPECT_TRUE(f.Set(Piece(0, 2, 78, "ab")));
    EXPECT_FALSE(f.Set(Piece(0, 2, 78, "ab")));
    EXPECT_FALSE(f.Set(Piece(2, 2, 78, "ab")));
    EXPECT_FALSE(f.Set(Msg(52, U32(1) + U32(2) + U32(78) + U32(5) + "ab")));
    // The set form runs the merged command: here it fails for want of a handler.
    EXPECT_FALSE(f.Set(Piece(1, 2, 78, "cd")));
    EXPECT_EQ(capture.ErrorTexts(),
              (std::vector<std::string>{
                  "Add: index(0/2) already exists", "Add: index(2/2) exceeds boundary",
                  "expected total size 21 from size 5 is wrong, actual size 18",
                  "invalid id 1684234849", "do not support id -1"}));
}

TEST(CommandParserTest, PiecesThatHoldPiecesOfTheirOwnSessionEnd) {
    Fixture f;
    // The empty piece of a finished session merges to itself again and again.
    const std::string inner = Piece(0, 1, 5, "");
    LogCapture capture;
    EXPECT_FALSE(f.Set(Piece(0, 1, 5, inner)));
    const std::vector<std::string> texts = capture.ErrorTexts();
    EXPECT_FALSE(texts.empty());
    EXPECT_EQ(texts.front(), "merged command nested deeper than 4");
}

TEST(CommandParserTest, Base64TextInAndOut) {
    Fixture f;
    Base64CodedHalControlCommandParser parser;
    parser.SetHalControlManager(f.manager);
    char reply[32];
    // Id 48 answers 1 in 8 bytes, 12 characters: a room of 12 holds them, without a terminator.
    std::memset(reply, '#', sizeof(reply));
    unsigned int size = 12;
    ASSERT_TRUE(parser.GetCommand(f.settings.GetSettings(), "MAAAAA==", 0, reply, size));
    EXPECT_EQ(size, 12u);
    EXPECT_EQ(std::string(reply, 13), "MAAAAAEAAAA=#");
    // A larger room is zeroed behind the text.
    size = 16;
    std::memset(reply, '#', sizeof(reply));
    ASSERT_TRUE(parser.GetCommand(f.settings.GetSettings(), "MAAAAA==", 0, reply, size));
    EXPECT_EQ(std::string(reply, 17), std::string("MAAAAAEAAAA=\0\0\0\0#", 17));

    // A room of 11 characters carries 6 bytes: the reply must be split and cannot be.
    LogCapture capture;
    size = 11;
    EXPECT_FALSE(parser.GetCommand(f.settings.GetSettings(), "MAAAAA==", 0, reply, size));
    // Text that decodes to less than an id, and text that stops at a foreign character.
    EXPECT_FALSE(parser.SetCommand(f.settings.GetSettings(), "", 0));
    EXPECT_FALSE(parser.SetCommand(f.settings.GetSettings(), "CAA!AAAA", 0));
    EXPECT_FALSE(parser.SetCommand(f.settings.GetSettings(), "CAAAAA==", 0));
    EXPECT_EQ(capture.ErrorTexts(),
              (std::vector<std::string>{"splitSize too small. min_allowed:20 provided:6",
                                        "size is wrong", "do not support id -1", "size is wrong",
                                        "do not support id -1", "do not support id 8"}));

    // A reply text longer than the room after the split rule cannot arise; the copy refuses it.
    capture.Clear();
    size = 3;
    EXPECT_FALSE(parser.CopyReplyData({'a', 'b', 'c'}, reply, size));
    EXPECT_EQ(capture.ErrorTexts(),
              std::vector<std::string>{"replySize 3 is not enough, actual size 4"});
    size = 4;
    ASSERT_TRUE(parser.CopyReplyData({'a', 'b', 'c'}, reply, size));
    EXPECT_EQ(std::string(reply, 4), "YWJj");
}

}  // namespace
}  // namespace test
}  // namespace TesselFX
