#pragma once

// The input of the command_text target and its structure-aware mutation. An input is a sequence
// of commands, each a flags byte, a u16 length (little-endian) and that many bytes: a tuning
// frame (u32 message id, then its payload), or with flag kText the command text as it is.
//
// Flags: bit 0 makes the command a zb_get_command, bit 1 passes the bytes as text as they are
// (else they are a frame and are base64-coded first), bits 2 and 3 pick the instance (0 to 3),
// bits 4 to 6 the reply room (16 << n bytes), and bit 7 puts the session id of the last reply
// that came in pieces into bytes 12 to 15 of the frame, where pieces and piece requests carry
// it: the library draws session ids at random.

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace TesselFX {
namespace fuzz {

struct Command {
    static constexpr uint8_t kGet = 1;
    static constexpr uint8_t kText = 2;
    static constexpr uint8_t kLastSession = 0x80;

    uint8_t flags = 0;
    std::string bytes;

    uint32_t Instance() const { return flags >> 2 & 3; }
    uint32_t ReplyRoom() const { return 16u << (flags >> 4 & 7); }
};

/// The commands of an input; a last command cut short keeps the bytes that are there.
std::vector<Command> ParseCommands(const uint8_t* data, size_t size);
std::string SerializeCommands(const std::vector<Command>& commands);

/// Mutates the commands of data in place and returns the new size (at most maxSize). It works
/// on the decoded frames, a text command's being decoded from base64 and coded again: it writes
/// a well-formed frame of any message id, changes one message id or field to a value that
/// handlers look at (counts and sizes that agree with the payload, parameter ids, link-law
/// sources, NaN and infinite values), cuts a frame into the pieces of a transfer (in any order,
/// now and then with a bad piece header), changes piece headers and flags, adds, repeats,
/// drops and swaps commands, and otherwise leaves a frame's bytes to libFuzzer's own mutation.
size_t MutateCommands(uint8_t* data, size_t size, size_t maxSize, unsigned seed);

/// Joins commands of two inputs: a run of the first's, then a run of the second's.
size_t CrossOverCommands(const uint8_t* first, size_t firstSize, const uint8_t* second,
                         size_t secondSize, uint8_t* out, size_t maxSize, unsigned seed);

}  // namespace fuzz
}  // namespace TesselFX
