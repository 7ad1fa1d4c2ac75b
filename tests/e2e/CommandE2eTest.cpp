// A tuning tool's session through zb_set_command and zb_get_command of the real shared library:
// base64 text in, base64 text out, long replies in pieces, long commands from pieces.

#include <gtest/gtest.h>

#include "ToolSession.h"

namespace bringup_test {
namespace {

using CommandE2eTest = ToolSessionTest;

uint32_t SessionOf(const std::string& piece) {
    return static_cast<uint8_t>(piece[12]) | static_cast<uint8_t>(piece[13]) << 8 |
           static_cast<uint8_t>(piece[14]) << 16 |
           static_cast<uint32_t>(static_cast<uint8_t>(piece[15])) << 24;
}

TEST_F(CommandE2eTest, AToolSessionOfQueriesAndSettings) {
    std::string reply;
    // The exact texts of one exchange: id 48 is answered with 1.
    char text[64] = {};
    ASSERT_EQ(zb_get_command(m_handle, 1, "MAAAAA==", text, sizeof(text)), 1);
    EXPECT_STREQ(text, "MAAAAAEAAAA=");

    ASSERT_EQ(Get(Msg(49), reply), 1);
    EXPECT_EQ(reply, Msg(49, U32(0)));
    ASSERT_EQ(Get(Msg(7, U32(13) + "halcontroller"), reply), 1);
    EXPECT_EQ(reply, Msg(38, U32(9) + "1.553.0.0"));
    ASSERT_EQ(Get(Msg(7, U32(6) + "dspkit"), reply), 1);
    EXPECT_EQ(reply, Msg(38, U32(23) + "DspKitSim 1.00 stand-in"));

    ASSERT_EQ(Set(Msg(14, U32(1))), 1);
    ASSERT_EQ(Set(Msg(12, U32(2))), 1);
    ASSERT_EQ(Get(Msg(10, U32(1022)), reply), 1);
    EXPECT_EQ(reply, Msg(2, U32(1022) + F64(2.0)));
    ASSERT_EQ(Get(Msg(11, U32(3) + U32(1022) + U32(9999) + U32(1)), reply), 1);
    EXPECT_EQ(reply, Msg(4, Pairs({{1, 0.0}, {1022, 2.0}})));
    EXPECT_EQ(Get(Msg(10, U32(9999)), reply), 0);

    ASSERT_EQ(Set(Msg(41, U32(0))), 1);
    ASSERT_EQ(Get(Msg(39, U32(0)), reply), 1);
    EXPECT_EQ(reply, Msg(40, U32(0)));
    // Only exactly 1 is true.
    ASSERT_EQ(Set(Msg(41, U32(2))), 1);
    ASSERT_EQ(Get(Msg(39, U32(0)), reply), 1);
    EXPECT_EQ(reply, Msg(40, U32(0)));
    ASSERT_EQ(Set(Msg(41, U32(1))), 1);
    ASSERT_EQ(Set(Msg(44, U32(1))), 1);
    ASSERT_EQ(Get(Msg(42, U32(0)), reply), 1);
    EXPECT_EQ(reply, Msg(43, U32(1)));

    ASSERT_EQ(Set(Msg(46)), 1);
    ASSERT_EQ(Set(Msg(45)), 1);
    EXPECT_EQ(Set(Msg(45)), 0);
    ASSERT_EQ(Get(Msg(6, U32(1)), reply), 1);
    EXPECT_EQ(reply, Msg(6, U32(1) + U32(0)));
}

TEST_F(CommandE2eTest, ALongReplyIsFetchedInPiecesInAnyOrder) {
    ASSERT_EQ(zb_set_active(m_handle, 1, 2, 1), 1);
    std::map<unsigned, double> all = ManyParameters();
    const std::string whole = Msg(4, Pairs(all));
    ASSERT_EQ(whole.size(), 8u + 21 * 12);

    std::string reply;
    ASSERT_EQ(Get(Msg(11, U32(0)), reply, 4096), 1);
    EXPECT_EQ(reply, whole);

    // A buffer of 137 bytes leaves 100 characters for the reply: 75 bytes, 55 of them data.
    ASSERT_EQ(Get(Msg(11, U32(0)), reply, 137), 1);
    ASSERT_EQ(reply.size(), 75u);
    const uint32_t session = SessionOf(reply);
    EXPECT_EQ(reply, Piece(0, 5, session, whole.substr(0, 55)));
    std::string merged = reply.substr(20);
    std::map<uint32_t, std::string> rest;
    for (uint32_t counter : {3u, 1u, 4u, 2u}) {
        ASSERT_EQ(Get(Msg(53, U32(counter) + U32(5) + U32(session)), reply, 137), 1);
        EXPECT_EQ(reply, Piece(counter, 5, session, whole.substr(55 * counter, 55)));
        rest[counter] = reply.substr(20);
    }
    for (const auto& piece : rest) merged += piece.second;
    EXPECT_EQ(merged, whole);
    // Each piece is served once.
    EXPECT_EQ(Get(Msg(53, U32(2) + U32(5) + U32(session)), reply, 137), 0);
}

TEST_F(CommandE2eTest, ALongCommandIsMergedFromPieces) {
    const std::string disable = Msg(41, U32(0));
    ASSERT_EQ(Set(Piece(1, 3, 4242, disable.substr(3, 3))), 1);
    ASSERT_EQ(Set(Piece(2, 3, 4242, disable.substr(6))), 1);
    std::string reply;
    ASSERT_EQ(Get(Msg(39, U32(0)), reply), 1);
    EXPECT_EQ(reply, Msg(40, U32(1)));
    ASSERT_EQ(Set(Piece(0, 3, 4242, disable.substr(0, 3))), 1);
    ASSERT_EQ(Get(Msg(39, U32(0)), reply), 1);
    EXPECT_EQ(reply, Msg(40, U32(0)));

    // A query in pieces: the first answers with empty text, the last with the reply.
    const std::string query = Msg(10, U32(1006));
    char text[64];
    std::memset(text, '#', sizeof(text));
    ASSERT_EQ(zb_get_command(m_handle, 1, ToText(Piece(0, 2, 99, query.substr(0, 5))).c_str(), text,
                             sizeof(text)),
              1);
    EXPECT_STREQ(text, "");
    ASSERT_EQ(Get(Piece(1, 2, 99, query.substr(5)), reply), 1);
    EXPECT_EQ(reply, Msg(2, U32(1006) + F64(1.0)));
}

TEST_F(CommandE2eTest, BadTextIsRefusedCleanly) {
    std::string reply;
    char empty[] = "";
    EXPECT_EQ(zb_set_command(m_handle, 1, empty), 0);
    char foreign[] = "!!!!!!!!";
    EXPECT_EQ(zb_set_command(m_handle, 1, foreign), 0);
    char truncated[] = "KQAA";  // three bytes of a SetEnable frame
    EXPECT_EQ(zb_set_command(m_handle, 1, truncated), 0);
    // Text after a fill character is ignored: this is a whole SetEnable(0).
    char trailing[] = "KQAAAAAAAAA=KQAAAAEAAAA=";
    EXPECT_EQ(zb_set_command(m_handle, 1, trailing), 1);
    ASSERT_EQ(Get(Msg(39, U32(0)), reply), 1);
    EXPECT_EQ(reply, Msg(40, U32(0)));

    EXPECT_EQ(Set(Msg(8)), 0);
    EXPECT_EQ(Set(Msg(54)), 0);
    EXPECT_EQ(Set(Msg(0)), 0);
    EXPECT_EQ(Set(Msg(10, U32(1))), 0);         // a query is not a setting
    EXPECT_EQ(Get(Msg(41, U32(1)), reply), 0);  // nor the reverse
    EXPECT_EQ(Set(Msg(41)), 0);
    EXPECT_EQ(Set(Msg(3, U32(2) + U32(1) + F64(1.0))), 0);
    EXPECT_EQ(Set(Msg(5, U32(1) + U32(10) + "abc")), 0);
    EXPECT_EQ(Get(Msg(11, U32(0x40000000)), reply), 0);
    EXPECT_EQ(Get(Msg(7, U32(100) + "dsp"), reply), 0);
    EXPECT_EQ(Set(Msg(52, U32(0) + U32(1) + U32(5) + U32(1000) + "x")), 0);
    EXPECT_EQ(Get(Msg(53, U32(0) + U32(1)), reply), 0);
    EXPECT_EQ(Get(Msg(53, U32(0) + U32(1) + U32(123456)), reply), 0);
    // Every cut of a valid query fails, and the whole one still works.
    const std::string query = Msg(11, U32(2) + U32(1) + U32(1006));
    for (size_t cut = 0; cut < query.size(); ++cut) {
        EXPECT_EQ(Get(query.substr(0, cut), reply), 0) << cut;
    }
    ASSERT_EQ(zb_set_enable(m_handle, 1, 1), 1);
    ASSERT_EQ(Get(query, reply), 1);
    EXPECT_EQ(reply, Msg(4, Pairs({{1, 0.0}, {1006, 1.0}})));

    // A reply buffer too small for any reply.
    char tiny[40];
    EXPECT_EQ(zb_get_command(m_handle, 1, "MAAAAA==", tiny, sizeof(tiny)), 0);
    EXPECT_EQ(zb_get_command(m_handle, 1, "MAAAAA==", tiny, 0), 0);
}

}  // namespace
}  // namespace bringup_test
