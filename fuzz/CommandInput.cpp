#include "CommandInput.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>

#include "BringupFiles.h"
#include "ToolFrames.h"

// libFuzzer's own mutation of a byte range, available to a custom mutator.
extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);

namespace TesselFX {
namespace fuzz {

namespace {

using bringup_test::F64;
using bringup_test::LinkLaw;
using bringup_test::Msg;
using bringup_test::U32;
using Random = std::minstd_rand;

/// How a message's payload is laid out; the frame ids without a class read as kUint.
enum class Layout {
    kEmpty,
    kUint,
    kParameter,
    kParameterArray,
    kUintArray,
    kChunk,
    kText,
    kLinkLawsValue,
    kFullPreset,
    kMeterInfos,
    kMeterValues,
    kPiece,
    kPieceRequest,
};

Layout LayoutOf(uint32_t id) {
    switch (id) {
        case 1: case 2: case 31: return Layout::kParameter;
        case 3: case 4: case 34: return Layout::kParameterArray;
        case 5: return Layout::kChunk;
        case 7: case 38: return Layout::kText;
        case 11: case 33: return Layout::kUintArray;
        case 29: case 45: case 46: case 48: return Layout::kEmpty;
        case 35: return Layout::kLinkLawsValue;
        case 36: return Layout::kMeterInfos;
        case 37: return Layout::kMeterValues;
        case 50: case 51: return Layout::kFullPreset;
        case 52: return Layout::kPiece;
        case 53: return Layout::kPieceRequest;
        default: return Layout::kUint;
    }
}

/// Message ids with a handler, the ids the others share, and two invalid ones.
const uint32_t kIds[] = {1,  3,  5,  6,  7,  10, 11, 12, 14, 29, 30, 33, 35, 36, 39, 41,
                         42, 44, 45, 46, 47, 48, 49, 50, 51, 52, 53, 2,  4,  8,  31, 34,
                         37, 38, 40, 43, 0,  54};
/// Parameter ids of the presets, link-law sources and switches, and edges.
const uint32_t kParameterIds[] = {1,    2,    1006, 1022, 1038, 1054, 2800, 2801, 2804,
                                  2805, 2820, 2821, 0,    3,    0xFFFF, 0x10000, 0xFFFFFFFF};
/// Counts, sizes, modes and flags.
const uint32_t kWords[] = {0, 1, 2, 3, 4, 5, 7, 8, 12, 16, 20, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};

template <typename T, size_t N>
T Pick(Random& random, const T (&values)[N]) {
    return values[random() % N];
}

uint32_t Below(Random& random, uint32_t bound) { return bound == 0 ? 0 : random() % bound; }

double Value(Random& random) {
    static const double kValues[] = {0.0,    -0.0,   0.5,    1.0,     -1.0,   3.0,
                                     100.0,  1000.0, -96.0,  1e300,   -1e300, 5e-324,
                                     std::numeric_limits<double>::quiet_NaN(),
                                     std::numeric_limits<double>::infinity(),
                                     -std::numeric_limits<double>::infinity()};
    return random() % 4 == 0 ? static_cast<double>(random() % 2000) / 4 - 250 : Pick(random, kValues);
}

uint32_t Word(Random& random) {
    return random() % 2 == 0 ? Pick(random, kParameterIds) : Pick(random, kWords);
}

std::string Pairs(Random& random, uint32_t count) {
    std::string out = U32(count);
    for (uint32_t i = 0; i < count; ++i) out += U32(Pick(random, kParameterIds)) + F64(Value(random));
    return out;
}

/// A link-law stream: a valid one mostly, of source 0 to 4 onto a parameter of the presets.
std::string LinkLawStream(Random& random) {
    std::string stream;
    for (uint32_t laws = 1 + Below(random, 2); laws > 0; --laws) {
        std::vector<std::pair<float, float>> points;
        for (uint32_t i = 0, n = Below(random, 4); i < n; ++i) {
            points.emplace_back(static_cast<float>(Value(random)), static_cast<float>(Value(random)));
        }
        stream += LinkLaw(Below(random, 6), Pick(random, kParameterIds), points);
    }
    return stream;
}

std::string Chunk(Random& random) {
    const uint32_t index = Below(random, 3);
    std::string data = index == 1 || random() % 2 == 0 ? LinkLawStream(random) : "";
    if (random() % 4 == 0) data.resize(Below(random, static_cast<uint32_t>(data.size()) + 8));
    return U32(index) + U32(static_cast<uint32_t>(data.size())) + data;
}

std::string FullPreset(Random& random) {
    std::string out;
    for (int flag = 0; flag < 4; ++flag) out += U32(Below(random, 3));
    out += Pairs(random, Below(random, 4));
    const std::string chunk = random() % 2 == 0 ? LinkLawStream(random) : "";
    out += U32(static_cast<uint32_t>(chunk.size())) + chunk;
    const uint32_t count = Below(random, 3);
    std::string sources = U32(count);
    for (uint32_t i = 0; i < count; ++i) sources += U32(2800 + Below(random, 6)) + F64(Value(random));
    return out + sources;
}

std::string MeterInfos(Random& random) {
    const uint32_t count = Below(random, 4);
    std::string out = U32(count);
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t mode = 1 + Below(random, 3);
        std::string info = U32(Below(random, 6)) + U32(1 + Below(random, 2)) + U32(mode);
        if (mode >= 2) info += U32(Word(random));
        out += U32(static_cast<uint32_t>(info.size())) + info;
    }
    return out;
}

/// A well-formed frame of id, with values that the handlers look at.
std::string Frame(Random& random, uint32_t id) {
    switch (LayoutOf(id)) {
        case Layout::kEmpty:
            return Msg(id);
        case Layout::kUint:
            return Msg(id, U32(Word(random)));
        case Layout::kParameter:
            return Msg(id, U32(Pick(random, kParameterIds)) + F64(Value(random)));
        case Layout::kParameterArray:
            return Msg(id, Pairs(random, Below(random, 9)));
        case Layout::kUintArray: {
            // Up to twelve ids: a reply long enough to come in pieces.
            const uint32_t count = Below(random, 13);
            std::string ids = U32(count);
            for (uint32_t i = 0; i < count; ++i) ids += U32(Pick(random, kParameterIds));
            return Msg(id, ids);
        }
        case Layout::kChunk:
            return Msg(id, Chunk(random));
        case Layout::kText: {
            static const char* const kNames[] = {"dsp", "dspkit", "halcontroller", "", "DSP"};
            const std::string name = Pick(random, kNames);
            return Msg(id, U32(static_cast<uint32_t>(name.size())) + name);
        }
        case Layout::kLinkLawsValue:
            return Msg(id, U32(Below(random, 6)) + F64(Value(random)) + F64(Value(random)));
        case Layout::kFullPreset:
            return Msg(id, FullPreset(random));
        case Layout::kMeterInfos:
            return Msg(id, MeterInfos(random));
        case Layout::kMeterValues:
            return Msg(id, U32(1) + U32(8) + U32(0) + U32(Word(random)));
        case Layout::kPiece: {
            const uint32_t inner = Pick(random, kIds);
            return bringup_test::Piece(0, 1, Below(random, 4), Frame(random, inner == 52 ? 1 : inner));
        }
        case Layout::kPieceRequest:
            return Msg(id, U32(Below(random, 4)) + U32(1 + Below(random, 4)) + U32(Below(random, 4)));
    }
    return Msg(id);
}

void PutWordAt(std::string& frame, size_t offset, uint32_t value) {
    if (offset + 4 <= frame.size()) frame.replace(offset, 4, U32(value));
}

uint32_t WordAt(const std::string& frame, size_t offset) {
    uint32_t value = 0;
    if (offset + 4 <= frame.size()) std::memcpy(&value, frame.data() + offset, 4);
    return value;
}

/// Makes the first count or size field of the frame agree with its length again, after a
/// change of the payload; some checks compare the two exactly.
void FixLengthField(std::string& frame) {
    const uint32_t size = static_cast<uint32_t>(frame.size());
    switch (LayoutOf(WordAt(frame, 0))) {
        case Layout::kParameterArray:
            if (size >= 8) PutWordAt(frame, 4, (size - 8) / 12);
            frame.resize(8 + 12 * WordAt(frame, 4));
            break;
        case Layout::kUintArray:
            if (size >= 8) PutWordAt(frame, 4, (size - 8) / 4);
            frame.resize(8 + 4 * WordAt(frame, 4));
            break;
        case Layout::kChunk:
            if (size >= 12) PutWordAt(frame, 8, size - 12);
            break;
        case Layout::kText:
            if (size >= 8) PutWordAt(frame, 4, size - 8);
            break;
        case Layout::kPiece:
            if (size >= 20) PutWordAt(frame, 16, size - 20);
            break;
        default:
            break;
    }
}

/// One change of one field: an id, a word or a double at a place of the payload, the length.
void MutateField(Random& random, std::string& frame) {
    if (frame.size() < 4) frame.resize(4);
    switch (random() % 7) {
        case 0:
            PutWordAt(frame, 0, Pick(random, kIds));
            break;
        case 1:
        case 2:
            PutWordAt(frame, 4 * Below(random, static_cast<uint32_t>(frame.size() / 4)),
                      Word(random));
            break;
        case 3: {
            if (frame.size() < 12) break;
            const size_t offset = 4 + Below(random, static_cast<uint32_t>(frame.size() - 11));
            frame.replace(offset, 8, F64(Value(random)));
            break;
        }
        case 4:
            frame.resize(Below(random, static_cast<uint32_t>(frame.size()) + 1));
            break;
        case 5:
            frame.append(Below(random, 16), static_cast<char>(random()));
            FixLengthField(frame);
            break;
        default:
            FixLengthField(frame);
            break;
    }
}

/// The frame cut into the pieces of one transfer, in order or shuffled, now and then with one
/// bad header: a counter at the total, a repeated piece, a size off by one, another total or
/// session.
std::vector<std::string> Pieces(Random& random, const std::string& frame) {
    const uint32_t size = static_cast<uint32_t>(std::max<size_t>(frame.size(), 1));
    const uint32_t chunk = 1 + Below(random, std::min<uint32_t>(size, 64));
    const uint32_t total = (size + chunk - 1) / chunk;
    const uint32_t session = random() % 2 == 0 ? Below(random, 4) : static_cast<uint32_t>(random());
    std::vector<std::string> pieces;
    for (uint32_t i = 0; i < total; ++i) {
        pieces.push_back(bringup_test::Piece(i, total, session, frame.substr(i * chunk, chunk)));
    }
    if (random() % 2 == 0) std::shuffle(pieces.begin(), pieces.end(), random);
    if (random() % 4 == 0 && !pieces.empty()) {
        std::string& bad = pieces[Below(random, static_cast<uint32_t>(pieces.size()))];
        switch (random() % 5) {
            case 0: PutWordAt(bad, 4, total); break;
            case 1: pieces.push_back(bad); break;
            case 2: PutWordAt(bad, 16, WordAt(bad, 16) + 1); break;
            case 3: PutWordAt(bad, 8, total + 1); break;
            default: PutWordAt(bad, 12, session + 1); break;
        }
    }
    return pieces;
}

std::string DecodeFrame(const Command& command) {
    return (command.flags & Command::kText) != 0 ? bringup_test::FromText(command.bytes)
                                                 : command.bytes;
}

void EncodeFrame(Command& command, const std::string& frame) {
    command.bytes =
        (command.flags & Command::kText) != 0 ? bringup_test::ToText(frame) : frame;
}

/// Whether id is a request that zb_get_command answers.
bool IsGetId(uint32_t id) {
    static const uint32_t kGetIds[] = {6, 7, 10, 11, 29, 30, 33, 36, 39, 42, 48, 49, 51, 53};
    return std::find(std::begin(kGetIds), std::end(kGetIds), id) != std::end(kGetIds);
}

/// A command of a well-formed frame of any id, mostly through the call that handles the id.
Command NewCommand(Random& random) {
    Command command;
    const uint32_t id = Pick(random, kIds);
    const bool get = random() % 4 == 0 ? random() % 2 == 0 : IsGetId(id);
    command.flags = static_cast<uint8_t>((random() & 0x7C) | (get ? Command::kGet : 0));
    // Requests of a pending piece mostly name the session of the last reply in pieces.
    if (id == 53 && random() % 4 != 0) command.flags |= Command::kLastSession;
    command.bytes = Frame(random, id);
    return command;
}

/// libFuzzer's own mutation of a frame's bytes.
void MutateBytes(std::string& frame, size_t maxSize) {
    std::vector<uint8_t> buffer(std::max(frame.size(), maxSize));
    std::memcpy(buffer.data(), frame.data(), frame.size());
    buffer.resize(LLVMFuzzerMutate(buffer.data(), frame.size(), buffer.size()));
    frame.assign(buffer.begin(), buffer.end());
}

constexpr size_t kMaxFrame = 4096;

}  // namespace

std::vector<Command> ParseCommands(const uint8_t* data, size_t size) {
    std::vector<Command> commands;
    size_t at = 0;
    while (at + 3 <= size) {
        Command command;
        command.flags = data[at];
        const size_t length = std::min<size_t>(data[at + 1] | data[at + 2] << 8, size - at - 3);
        command.bytes.assign(reinterpret_cast<const char*>(data + at + 3), length);
        commands.push_back(std::move(command));
        at += 3 + length;
    }
    return commands;
}

std::string SerializeCommands(const std::vector<Command>& commands) {
    std::string out;
    for (const Command& command : commands) {
        const size_t length = std::min<size_t>(command.bytes.size(), 0xFFFF);
        out.push_back(static_cast<char>(command.flags));
        out.push_back(static_cast<char>(length & 0xFF));
        out.push_back(static_cast<char>(length >> 8));
        out.append(command.bytes, 0, length);
    }
    return out;
}

namespace {

size_t Store(std::vector<Command>& commands, uint8_t* out, size_t maxSize) {
    std::string bytes = SerializeCommands(commands);
    while (bytes.size() > maxSize && commands.size() > 1) {
        commands.pop_back();
        bytes = SerializeCommands(commands);
    }
    bytes.resize(std::min(bytes.size(), maxSize));
    std::memcpy(out, bytes.data(), bytes.size());
    return bytes.size();
}

}  // namespace

size_t MutateCommands(uint8_t* data, size_t size, size_t maxSize, unsigned seed) {
    Random random(seed);
    std::vector<Command> commands = ParseCommands(data, size);
    if (commands.empty() || random() % 16 == 0) {
        commands.push_back(NewCommand(random));
        return Store(commands, data, maxSize);
    }
    const size_t at = Below(random, static_cast<uint32_t>(commands.size()));
    Command& command = commands[at];
    std::string frame = DecodeFrame(command);
    switch (random() % 10) {
        case 0:
            frame = Frame(random, Pick(random, kIds));
            break;
        case 1:
        case 2:
            MutateField(random, frame);
            break;
        case 3: {
            // A transfer in pieces, which the parser merges and handles as one command.
            std::vector<Command> pieces;
            for (std::string& piece : Pieces(random, frame)) {
                Command added;
                added.flags = static_cast<uint8_t>(command.flags & ~Command::kText);
                added.bytes = std::move(piece);
                pieces.push_back(std::move(added));
            }
            commands.erase(commands.begin() + at);
            commands.insert(commands.begin() + at, pieces.begin(), pieces.end());
            return Store(commands, data, maxSize);
        }
        case 4:
            if (LayoutOf(WordAt(frame, 0)) == Layout::kPiece ||
                LayoutOf(WordAt(frame, 0)) == Layout::kPieceRequest) {
                PutWordAt(frame, 4 + 4 * Below(random, 4), Pick(random, kWords));
            } else {
                command.flags ^= static_cast<uint8_t>(1u << Below(random, 8));
            }
            break;
        case 5:
            commands.insert(commands.begin() + Below(random, static_cast<uint32_t>(commands.size()) + 1),
                            random() % 2 == 0 ? NewCommand(random) : command);
            return Store(commands, data, maxSize);
        case 6:
            if (commands.size() > 1) {
                if (random() % 2 == 0) {
                    commands.erase(commands.begin() + at);
                } else {
                    std::swap(command, commands[Below(random, static_cast<uint32_t>(commands.size()))]);
                }
                return Store(commands, data, maxSize);
            }
            MutateField(random, frame);
            break;
        default:
            MutateBytes(frame, std::min(kMaxFrame, maxSize));
            break;
    }
    if (frame.size() > kMaxFrame) frame.resize(kMaxFrame);
    EncodeFrame(command, frame);
    return Store(commands, data, maxSize);
}

size_t CrossOverCommands(const uint8_t* first, size_t firstSize, const uint8_t* second,
                         size_t secondSize, uint8_t* out, size_t maxSize, unsigned seed) {
    Random random(seed);
    const std::vector<Command> a = ParseCommands(first, firstSize);
    const std::vector<Command> b = ParseCommands(second, secondSize);
    const size_t fromA = Below(random, static_cast<uint32_t>(a.size()) + 1);
    const size_t fromB = Below(random, static_cast<uint32_t>(b.size()) + 1);
    std::vector<Command> joined(a.begin(), a.begin() + fromA);
    joined.insert(joined.end(), b.begin() + fromB, b.end());
    return Store(joined, out, maxSize);
}

}  // namespace fuzz
}  // namespace TesselFX
