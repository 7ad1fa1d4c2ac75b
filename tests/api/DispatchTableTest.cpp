// Every request id of the tuning protocol through zb_set_command and zb_get_command on an
// initialised handle with the stand-in DSP library: one row per command, each checking the
// result, the reply text and frame, the frames that reach the DSP, the notifications that
// follow, the error lines and the tuning mode before and after.

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "../e2e/ToolFrames.h"
#include "LogCapture.h"
#include "zbhalcontroller/zb_api.h"

namespace TesselFX {
namespace test {
namespace {

using namespace bringup_test;
using Frames = std::vector<std::string>;
using Parameters = std::map<unsigned, double>;

/// Room that zb_get_command keeps back: the widest envelope header (36) and a terminator.
constexpr uint32_t kReserved = 37;
const std::string kEnvelope = "dsp_instance=1;tessel_data=";
/// Stands for the session id of the row's long transfer, which the library draws at random.
const std::string kSession = "\xEE\xEE\xEE\xEE";

/// The DSP's answers to the meter and version requests: four meters of the stand-in library
/// (u32 count, then per meter f32 value and i32 flag), and a version text.
std::string DspAnswer(uint32_t opcode) {
    if (opcode == 4) {
        std::string meters;
        PutU32(meters, 4);
        for (auto meter : std::vector<std::pair<float, uint32_t>>{
                 {300.5f, 1}, {-7.75f, 1}, {2.5f, 0}, {42.25f, 1}}) {
            PutF32(meters, meter.first);
            PutU32(meters, meter.second);
        }
        return U32(3) + U32(static_cast<uint32_t>(meters.size())) + meters;
    }
    return opcode == 5 ? U32(6) + U32(8) + "HW 7.3.1" : "";
}

/// The parameter ids 3000 and up with values 0.25 apart, count of them.
Parameters Extra(unsigned count) {
    Parameters extra;
    for (unsigned i = 0; i < count; ++i) extra[3000 + i] = 0.25 * (i + 1);
    return extra;
}

/// The coefficient blocks of the stand-in library for these parameters, in one frame:
/// parameter p is input p % 16 of block 4096 + p / 16.
std::string FrameOf(const Parameters& parameters) {
    std::map<unsigned, std::map<unsigned, float>> blocks;
    for (const auto& p : parameters) blocks[4096 + p.first / 16][p.first % 16] = p.second;
    std::vector<std::string> out;
    for (const auto& block : blocks) out.push_back(Block(block.first, block.second));
    return Frame(out);
}

/// The payload of a full preset: flag words, parameters, link-law chunk, sources.
std::string FullPreset(uint32_t hasParameters, uint32_t hasChunk, uint32_t hasSources,
                       const Parameters& parameters, const std::string& chunk,
                       const Parameters& sources) {
    return U32(0) + U32(hasParameters) + U32(hasChunk) + U32(hasSources) + Pairs(parameters) +
           U32(static_cast<uint32_t>(chunk.size())) + chunk + Pairs(sources);
}

/// The link law of the Lab preset: source 0 drives parameter 1038 through three points.
const std::string kLaw = LinkLaw(0, 1038, {{0.0f, 0.0f}, {100.0f, 400.0f}, {1000.0f, 1000.0f}});
/// Lab (1,1), the starting preset; Calm (1,2); Wide (3,1), with extra parameters per row.
const Parameters kLab = {{1, 0.0}, {1006, 1.25}, {1022, -3.5}, {1038, 0.5}, {2821, 1.0}};
const Parameters kCalm = {{1, 0.0}, {1054, 9.75}};
const Parameters kWide = {{1, 0.0}, {1070, 4.5}};
/// The sources that the fixture sets, and Lab with their master values.
const Parameters kSources = {{3, 6.5}, {4, -1.5}};
const Parameters kLabNow = {{1, 0.0},     {1006, 1.25},  {1022, -3.5}, {1038, 0.5},
                            {2803, 0.75}, {2804, 0.125}, {2821, 1.0}};
/// Wide with count extra parameters.
Parameters WideWith(unsigned count) {
    Parameters wide = kWide;
    for (const auto& p : Extra(count)) wide.insert(p);
    return wide;
}

struct Command {
    bool get;
    std::string frame;  // sent as base64 text, unless text is set
    uint32_t replySize = 4096;
    const char* text = nullptr;
    uint32_t instance = 1;
};
Command Set(const std::string& frame) { return {false, frame}; }
Command SetText(const char* text) { return {false, "", 0, text}; }
Command Get(const std::string& frame, uint32_t replySize = 4096) {
    return {true, frame, replySize};
}
/// A get command for instance 2, which no control handles.
Command GetElsewhere(const std::string& frame) { return {true, frame, 4096, nullptr, 2}; }

struct Row {
    const char* name;
    bool tuningBefore;
    std::vector<Command> before;  // run after the fixture, each must succeed
    Command command;
    int result;
    std::string reply;  // decoded reply frame of a get command that succeeds
    Frames dsp;
    Frames notified;
    bool tuningAfter;
    std::vector<std::string> errors;
    unsigned wideExtra = 0;  // parameters 3000 and up added to Wide
    bool dspSilent = false;  // the DSP fails the row's command
};

/// What the callbacks of the handle saw.
struct Bench {
    bool silent = false;
    Frames dsp;
    std::vector<std::string> texts;
};

int PlayDsp(void*, uint32_t instance, const void* data, uint32_t size, void* reply,
            uint32_t* replySize, void* context) {
    EXPECT_EQ(instance, 1u);
    auto* bench = static_cast<Bench*>(context);
    bench->dsp.emplace_back(static_cast<const char*>(data), size);
    if (bench->silent) return -1;
    uint32_t opcode = 0;
    if (size >= 4) std::memcpy(&opcode, data, 4);
    const std::string answer = DspAnswer(opcode);
    if (reply != nullptr && replySize != nullptr && answer.size() <= *replySize) {
        std::memcpy(reply, answer.data(), answer.size());
        *replySize = static_cast<uint32_t>(answer.size());
    }
    return 0;
}

int Listen(void*, const void* data, uint32_t size, void* context) {
    static_cast<Bench*>(context)->texts.emplace_back(static_cast<const char*>(data), size);
    return 0;
}

class DispatchTable {
  public:
    explicit DispatchTable(const Row& row) : m_row(row) {
        PresetRecord lab = Preset(1, 1, 0, 0, kLab);
        lab.chunks[1] = kLaw;
        const std::string presets =
            m_dir.Write("system.zps", PresetFile({lab, Preset(1, 2, 0, 0, kCalm),
                                                  Preset(3, 1, 0, 0, WideWith(row.wideExtra))}));
        const std::string config = m_dir.Write(
            "hal.ini",
            "[HAL_SUPPORTED_SAMPLE_RATES]\nrates=48000\n"
            "[HAL_SUPPORTED_PRESETS]\nLab=OM:1,SM:1\nCalm=OM:1,SM:2\nWide=OM:3,SM:1\n"
            "[HAL_SUPPORTED_CONTROLS]\nSpeaker=DEV:2,SR:rates,PRESET:Lab|Calm|Wide,INSTANCE:1\n"
            "[COEFS_CONVERTER_SETTING]\nDspKitPath64=" DSPKIT_SIM_PATH "\n");
        EXPECT_EQ(zb_create(&m_handle, &m_bench), 1);
        EXPECT_EQ(zb_initialize(m_handle, presets.c_str(), "", config.c_str(), PlayDsp), 1);
        EXPECT_EQ(zb_set_active(m_handle, 1, 1, 1), 1);
        // Sources 3 and 4 have no law: their values are kept and reported, and their master
        // values land in parameters 2803 and 2804.
        EXPECT_EQ(zb_set_linklaws_value(m_handle, 1, 3, 6.5, 0.75), 1);
        EXPECT_EQ(zb_set_linklaws_value(m_handle, 1, 4, -1.5, 0.125), 1);
        EXPECT_EQ(zb_register_notifier(m_handle, 1, Listen), 1);
    }
    ~DispatchTable() { zb_destroy(&m_handle); }

    void Run() {
        if (m_row.tuningBefore) {
            EXPECT_EQ(Call(Set(Msg(47, U32(1)))), 1);
        }
        for (const Command& command : m_row.before) EXPECT_EQ(Call(command), 1);
        EXPECT_EQ(TuningMode(), m_row.tuningBefore) << "before";
        m_bench = Bench();

        LogCapture capture;
        m_bench.silent = m_row.dspSilent;
        EXPECT_EQ(Call(m_row.command), m_row.result);
        const Frames notified = Notified();
        std::vector<std::string> errors = capture.ErrorTexts();
        for (std::string& error : errors) {
            const size_t at =
                m_session == 0 ? std::string::npos : error.find(std::to_string(m_session));
            if (at != std::string::npos)
                error.replace(at, std::to_string(m_session).size(), "<session>");
        }
        EXPECT_EQ(errors, m_row.errors);
        if (m_row.command.get) {
            // A reply that succeeds is the base64 text of its frame, zeros to the end of the
            // room, and the caller's bytes behind; a failed one leaves the buffer untouched.
            const uint32_t size = m_row.command.replySize;
            std::string expected(size, '#');
            if (m_row.result == 1) {
                const uint32_t room = size > kReserved ? size - kReserved : 0;
                std::string text = ToText(WithSession(m_row.reply));
                text.resize(room, '\0');
                expected.replace(0, room, text);
            }
            EXPECT_EQ(m_text, expected);
        }
        EXPECT_EQ(m_bench.dsp, m_row.dsp);
        Frames expected;
        for (const std::string& frame : m_row.notified) expected.push_back(WithSession(frame));
        EXPECT_EQ(notified, expected);
        m_bench = Bench();
        EXPECT_EQ(TuningMode(), m_row.tuningAfter) << "after";
    }

  private:
    /// The command with the row's session put in for kSession; a get's text lands in m_text.
    int Call(const Command& command) {
        const std::string frame = WithSession(command.frame);
        std::string text = command.text != nullptr ? command.text : ToText(frame);
        if (!command.get) return zb_set_command(m_handle, command.instance, &text[0]);
        m_text.assign(command.replySize, '#');
        const int result =
            zb_get_command(m_handle, command.instance, text.c_str(), &m_text[0], command.replySize);
        if (result == 1) NoteSession(FromText(m_text.substr(0, m_text.find('\0'))));
        return result;
    }

    /// Notes the session of a piece (id 52): the first one seen is the row's.
    void NoteSession(const std::string& frame) {
        if (frame.size() < 16 || frame.compare(0, 4, U32(52)) != 0) return;
        uint32_t session = 0;
        std::memcpy(&session, frame.data() + 12, 4);
        if (m_session == 0) m_session = session;
        EXPECT_EQ(session, m_session) << "one session per row";
    }

    /// bytes with the row's session put in for kSession.
    std::string WithSession(std::string bytes) const {
        for (size_t at = bytes.find(kSession); at != std::string::npos; at = bytes.find(kSession))
            bytes.replace(at, 4, U32(m_session));
        return bytes;
    }

    /// The frames notified, each from its envelope of instance 1 with base64 text.
    Frames Notified() {
        Frames frames;
        for (const std::string& text : m_bench.texts) {
            if (text.compare(0, kEnvelope.size(), kEnvelope) != 0) {
                ADD_FAILURE() << "no envelope: " << text;
                continue;
            }
            const std::string body = text.substr(kEnvelope.size());
            frames.push_back(FromText(body));
            EXPECT_EQ(ToText(frames.back()), body) << "not base64 with fill";
            NoteSession(frames.back());
        }
        return frames;
    }

    bool TuningMode() {
        EXPECT_EQ(Call(Get(Msg(49))), 1);
        const std::string reply = FromText(m_text.substr(0, m_text.find('\0')));
        EXPECT_TRUE(reply == Msg(49, U32(0)) || reply == Msg(49, U32(1))) << reply;
        return reply == Msg(49, U32(1));
    }

    const Row& m_row;
    TempDir m_dir;
    Bench m_bench;
    void* m_handle = nullptr;
    std::string m_text;
    uint32_t m_session = 0;
};

/// A frame of the DSP with one block: parameter p at value v.
std::string One(unsigned p, float v) { return Frame({Block(4096 + p / 16, {{p % 16, v}})}); }

const std::string kDisable = Msg(41, U32(0));
const std::string kQuery = Msg(10, U32(1006));
const std::string kKitVersion = Msg(38, U32(23) + "DspKitSim 1.00 stand-in");
const std::string kLabChunk = Msg(6, U32(1) + U32(static_cast<uint32_t>(kLaw.size())) + kLaw);
// Index 0 as float; 1 as integer with reset value 77; 2 as float with reset value 1.5f, whose
// flag the DSP did not raise; 3 of type 3, which gives no value; 9, which the library lacks,
// with reset value 3.25f.
const std::string kMeterRequest =
    Msg(36, U32(5) +                                                    //
                U32(12) + U32(0) + U32(1) + U32(1) +                    //
                U32(16) + U32(1) + U32(2) + U32(2) + U32(77) +          //
                U32(16) + U32(2) + U32(1) + U32(3) + U32(0x3FC00000) +  //
                U32(16) + U32(3) + U32(3) + U32(2) + U32(5) +           //
                U32(16) + U32(9) + U32(1) + U32(2) + U32(0x40500000));
const std::string kNoPreset = Msg(51, FullPreset(0, 0, 0, {}, "", {}));
const std::string kWideChange = Msg(14, U32(3));
/// Chunk 1 of size zero bytes for the tuning copy, and the full preset notified after it.
std::string ChunkOf(uint32_t size) { return Msg(5, U32(1) + U32(size) + std::string(size, '\0')); }
std::string TunedPreset(uint32_t size) {
    return Msg(51, FullPreset(1, 1, 1, kLabNow, std::string(size, '\0'), kSources));
}
/// The frame of a change to Wide with count extra parameters: parameter 1 stays 0.
std::string WideFrame(unsigned count) {
    Parameters changed = WideWith(count);
    changed.erase(1);
    return FrameOf(changed);
}

// clang-format off
const Row kRows[] = {
    // Commands without a reply.
    {"47 with 1 starts tuning", false, {}, Set(Msg(47, U32(1))), 1, "", {}, {}, true, {}},
    {"47 with 0 leaves tuning and sends the preset again", true,
     {Set(Msg(1, U32(1006) + F64(-4.25)))}, Set(Msg(47, U32(0))), 1, "",
     {One(1006, 1.25f)}, {}, false, {}},
    {"47 with 2 is not 1: it leaves tuning", true,
     {Set(Msg(1, U32(1006) + F64(-4.25)))}, Set(Msg(47, U32(2))), 1, "",
     {One(1006, 1.25f)}, {}, false, {}},
    {"1 sets one parameter of the tuning copy", false, {}, Set(Msg(1, U32(1022) + F64(-6.75))), 1,
     "", {One(1022, -6.75f)}, {}, true, {}},
    {"3 sets parameters of the tuning copy", false, {},
     Set(Msg(3, Pairs({{1006, 2.125}, {1070, 8.5}}))), 1, "",
     {Frame({Block(4158, {{14, 2.125f}}), Block(4162, {{14, 8.5f}})})}, {}, true, {}},
    {"5 sets a chunk of the tuning copy", false, {},
     Set(Msg(5, U32(1) + U32(static_cast<uint32_t>(kLaw.size())) + kLaw)), 1, "", {}, {}, true, {}},
    {"50 sets a full preset of the tuning copy", true, {},
     Set(Msg(50, FullPreset(1, 0, 0, {{1006, 7.5}, {1070, -2.25}}, "", {}))), 1, "",
     {Frame({Block(4158, {{14, 7.5f}}), Block(4162, {{14, -2.25f}})})}, {}, true, {}},
    {"50 needs tuning mode", false, {},
     Set(Msg(50, FullPreset(1, 0, 0, {{1006, 7.5}}, "", {}))), 0, "", {}, {}, false,
     {"tuning is not active yet", "Failed to set fullPreset"}},
    {"35 sets a link-law source and its master value", false, {},
     Set(Msg(35, U32(0) + F64(-20.0) + F64(25.0))), 1, "",
     {Frame({Block(4160, {{14, 500.0f}}), Block(4271, {{0, 25.0f}, {3, 0.75f}, {4, 0.125f}})})},
     {Msg(4, Pairs({{1, 0.0}, {1006, 1.25}, {1022, -3.5}, {1038, 500.0}, {2800, 25.0},
                    {2803, 0.75}, {2804, 0.125}, {2821, 1.0}})),
      Msg(31, U32(0) + F64(-20.0))},
     false, {}},
    {"12 sets the sound mode", false, {}, Set(Msg(12, U32(2))), 1, "", {One(1054, 9.75f)},
     {Msg(4, Pairs(kCalm)), Msg(6, U32(1) + U32(0))}, false, {}},
    {"12 while tuning keeps the tuning copy", true, {}, Set(Msg(12, U32(2))), 1, "", {}, {}, true,
     {}},
    {"14 sets the output mode", false, {}, Set(kWideChange), 1, "",
     {One(1070, 4.5f)}, {Msg(4, Pairs(kWide)), Msg(6, U32(1) + U32(0))}, false, {}},
    {"46 holds what follows", false, {}, Set(Msg(46)), 1, "", {}, {}, false, {}},
    {"45 sends what was held", false, {Set(Msg(46)), Set(kDisable)}, Set(Msg(45)), 1, "",
     {One(1, 1.0f)}, {}, false, {}},
    {"45 without 46", false, {}, Set(Msg(45)), 0, "", {}, {}, false,
     {"Must call WaitForFlush before call Flush"}},
    {"41 with 0 disables", false, {}, Set(kDisable), 1, "", {One(1, 1.0f)}, {}, false, {}},
    {"41 with 2 is not 1: it disables", false, {}, Set(Msg(41, U32(2))), 1, "", {One(1, 1.0f)}, {},
     false, {}},
    {"44 with 1 bypasses", false, {}, Set(Msg(44, U32(1))), 1, "", {One(1, 1.0f)}, {}, false, {}},
    {"52 takes the first piece of a command", false, {},
     Set(Piece(0, 2, 4242, kDisable.substr(0, 4))), 1, "", {}, {}, false, {}},
    {"52 runs the command with its last piece", false,
     {Set(Piece(1, 2, 4242, kDisable.substr(4)))}, Set(Piece(0, 2, 4242, kDisable.substr(0, 4))),
     1, "", {One(1, 1.0f)}, {}, false, {}},
    // Commands with a reply.
    {"48 asks whether tuning is valid", false, {}, Get(Msg(48)), 1, Msg(48, U32(1)), {}, {},
     false, {}},
    {"49 tells the tuning mode", true, {}, Get(Msg(49, "any")), 1, Msg(49, U32(1)), {}, {}, true,
     {}},
    {"10 reads a parameter", false, {}, Get(Msg(10, U32(1022))), 1, Msg(2, U32(1022) + F64(-3.5)),
     {}, {}, false, {}},
    {"11 reads parameters", false, {}, Get(Msg(11, U32(3) + U32(1038) + U32(9999) + U32(1006))), 1,
     Msg(4, Pairs({{1006, 1.25}, {1038, 0.5}})), {}, {}, false, {}},
    {"6 reads a chunk", false, {}, Get(Msg(6, U32(1))), 1, kLabChunk, {}, {}, false, {}},
    {"51 answers with nothing and notifies the full preset", false, {}, Get(kNoPreset), 1, "", {},
     {Msg(51, FullPreset(1, 1, 1, kLabNow, kLaw, kSources))}, false, {}},
    {"29 reads the link-law parameters", false, {}, Get(Msg(29)), 1, Msg(4, Pairs({{1038, 0.5}})),
     {}, {}, false, {}},
    {"30 reads a link-law source", false, {}, Get(Msg(30, U32(4))), 1, Msg(34, Pairs({{4, -1.5}})),
     {}, {}, false, {}},
    {"33 reads link-law sources", false, {}, Get(Msg(33, U32(3) + U32(9) + U32(4) + U32(3))), 1,
     Msg(34, Pairs({{3, 6.5}, {4, -1.5}})), {}, {}, false, {}},
    {"36 reads meters from the DSP", false, {}, Get(kMeterRequest), 1,
     Msg(37, U32(4) + U32(8) + U32(0) + U32(0x43964000) + U32(8) + U32(1) + U32(0xFFFFFFF9) +
                 U32(8) + U32(2) + U32(0x3FC00000) + U32(8) + U32(9) + U32(0x40500000)),
     {U32(4)}, {}, false, {"Hifi3ReplyBufferParser::FlagTestAndClear index out of range 9"}},
    {"36 with a silent DSP reads no meters", false, {}, Get(kMeterRequest), 1, Msg(37, U32(0)),
     {U32(4)}, {}, false, {}, 0, true},
    {"7 reads the DSP's version", false, {}, Get(Msg(7, U32(3) + "dsp")), 1,
     Msg(38, U32(8) + "HW 7.3.1"), {U32(5)}, {}, false, {}},
    {"7 with a silent DSP", false, {}, Get(Msg(7, U32(3) + "dsp")), 0, "", {U32(5)}, {}, false,
     {"SendBufferToDsp fail", "handler returned error"}, 0, true},
    {"7 reads the library's version", false, {}, Get(Msg(7, U32(13) + "halcontroller")), 1,
     Msg(38, U32(9) + "1.553.0.0"), {}, {}, false, {}},
    {"39 reads the enable state", false, {Set(kDisable)}, Get(Msg(39, U32(1))), 1, Msg(40, U32(0)),
     {}, {}, false, {}},
    {"42 reads the bypass state", false, {Set(Msg(44, U32(1)))}, Get(Msg(42, U32(0))), 1,
     Msg(43, U32(1)), {}, {}, false, {}},
    {"52 answers a query with its last piece", false,
     {Get(Piece(0, 2, 99, kQuery.substr(0, 5)))}, Get(Piece(1, 2, 99, kQuery.substr(5))), 1,
     Msg(2, U32(1006) + F64(1.25)), {}, {}, false, {}},
    {"53 serves a pending piece of a long reply", false,
     {Get(Msg(7, U32(6) + "dspkit"), kReserved + 40)},
     Get(Msg(53, U32(2) + U32(4) + kSession), kReserved + 40), 1,
     Piece(2, 4, 0xEEEEEEEE, kKitVersion.substr(20, 10)), {}, {}, false, {}},
    // The reply room: the text of 78 bytes is 104 characters.
    {"a room one short of the text splits", false, {}, Get(Msg(6, U32(1)), kReserved + 103), 1,
     Piece(0, 2, 0xEEEEEEEE, kLabChunk.substr(0, 55)), {}, {}, false, {}},
    {"a room the text fills", false, {}, Get(Msg(6, U32(1)), kReserved + 104), 1, kLabChunk, {}, {},
     false, {}},
    {"a room one longer than the text", false, {}, Get(Msg(6, U32(1)), kReserved + 105), 1,
     kLabChunk, {}, {}, false, {}},
    {"a buffer one short of the header", false, {}, Get(Msg(48), 35), 0, "", {}, {}, false,
     {"splitSize too small. min_allowed:20 provided:0"}},
    {"a buffer of the header", false, {}, Get(Msg(48), 36), 0, "", {}, {}, false,
     {"splitSize too small. min_allowed:20 provided:0"}},
    {"a buffer one longer than the header", false, {}, Get(Msg(48), 37), 0, "", {}, {}, false,
     {"splitSize too small. min_allowed:20 provided:0"}},
    // Parameter notifications hold at most 997 entries.
    {"14 to a preset of 996 parameters", false, {}, Set(kWideChange), 1, "",
     {WideFrame(994)}, {Msg(4, Pairs(WideWith(994))), Msg(6, U32(1) + U32(0))}, false, {},
     994},
    {"14 to a preset of 997 parameters", false, {}, Set(kWideChange), 1, "",
     {WideFrame(995)}, {Msg(4, Pairs(WideWith(995))), Msg(6, U32(1) + U32(0))}, false, {},
     995},
    {"14 to a preset of 998 parameters", false, {}, Set(kWideChange), 1, "",
     {WideFrame(996)},
     {Msg(4, Pairs(WideWith(995))), Msg(4, Pairs({{3995, 0.25 * 996}})), Msg(6, U32(1) + U32(0))},
     false, {}, 996},
    // Notifications of at most 11973 bytes go whole, longer ones in pieces.
    {"51 of 11972 bytes", true, {Set(ChunkOf(11832))}, Get(kNoPreset), 1, "", {},
     {TunedPreset(11832)}, true, {}},
    {"51 of 11973 bytes", true, {Set(ChunkOf(11833))}, Get(kNoPreset), 1, "", {},
     {TunedPreset(11833)}, true, {}},
    {"51 of 11974 bytes", true, {Set(ChunkOf(11834))}, Get(kNoPreset), 1, "", {},
     {Piece(0, 2, 0xEEEEEEEE, TunedPreset(11834).substr(0, 11953)),
      Piece(1, 2, 0xEEEEEEEE, TunedPreset(11834).substr(11953))},
     true, {}},
    // Refusals.
    {"8 has no handler", false, {}, Set(Msg(8)), 0, "", {}, {}, false, {"do not support id 8"}},
    {"54 is no id", false, {}, Set(Msg(54)), 0, "", {}, {}, false,
     {"invalid id 54", "do not support id -1"}},
    {"three bytes are no frame", false, {}, Set(std::string("\x29\x00\x00", 3)), 0, "", {}, {},
     false, {"size is wrong", "do not support id -1"}},
    {"6 is no setting", false, {}, Set(Msg(6, U32(1))), 0, "", {}, {}, false,
     {"do not support id 6"}},
    {"41 is no query", false, {}, Get(Msg(41, U32(1))), 0, "", {}, {}, false,
     {"do not support id 41"}},
    {"10 without its number", false, {}, Get(Msg(10, "\x01\x00")), 0, "", {}, {}, false,
     {"get zbIndex fail", "not valid messageData", "handler returned error"}},
    {"48 answers 1 also without a handler", false, {}, GetElsewhere(Msg(48)), 1, Msg(48, U32(1)),
     {}, {}, false, {}},
    {"49 without a handler", false, {}, GetElsewhere(Msg(49)), 0, "", {}, {}, false,
     {"no valid ControlHandler", "handler returned error"}},
    {"10 without a handler", false, {}, GetElsewhere(Msg(10, U32(1006))), 0, "", {}, {}, false,
     {"no valid ControlHandler", "handler returned error"}},
    {"11 without a handler", false, {}, GetElsewhere(Msg(11, U32(1) + U32(1006))), 0, "", {}, {},
     false, {"no valid ControlHandler", "handler returned error"}},
    {"30 without a handler", false, {}, GetElsewhere(Msg(30, U32(3))), 0, "", {}, {}, false,
     {"no valid ControlHandler", "handler returned error"}},
    {"29 without a handler", false, {}, GetElsewhere(Msg(29)), 0, "", {}, {}, false,
     {"no valid ControlHandler", "handler returned error"}},
    {"11 with a wrong count", false, {}, Get(Msg(11, U32(2) + U32(1))), 0, "", {}, {}, false,
     {"expected size 12 from count 2 is wrong, actual size 8", "not valid messageData",
      "handler returned error"}},
    {"6 without its index", false, {}, Get(Msg(6)), 0, "", {}, {}, false,
     {"get zbIndex fail", "not valid messageData", "handler returned error"}},
    {"51 without a full preset", false, {}, Get(Msg(51, U32(0))), 0, "", {}, {}, false,
     {"read index fail", "not valid messageData", "handler returned error"}},
    {"30 without its index", false, {}, Get(Msg(30)), 0, "", {}, {}, false,
     {"get zbIndex fail", "not valid messageData", "handler returned error"}},
    {"33 with a wrong count", false, {}, Get(Msg(33, U32(1))), 0, "", {}, {}, false,
     {"expected size 8 from count 1 is wrong, actual size 4", "not valid messageData",
      "handler returned error"}},
    {"36 with a short meter", false, {}, Get(Msg(36, U32(1) + U32(8) + U32(0) + U32(1))), 0, "",
     {}, {}, false,
     {"CMeterInfo::Deserialize Not enough data for meters", "not valid messageData",
      "handler returned error"}},
    {"39 without its value", false, {}, Get(Msg(39)), 0, "", {}, {}, false,
     {"get zbIndex fail", "not valid messageData", "handler returned error"}},
    {"42 without its value", false, {}, Get(Msg(42)), 0, "", {}, {}, false,
     {"get zbIndex fail", "not valid messageData", "handler returned error"}},
    {"52 of a query with a wrong size", false, {},
     Get(Msg(52, U32(1) + U32(2) + U32(78) + U32(5) + "ab")), 0, "", {}, {}, false,
     {"expected total size 21 from size 5 is wrong, actual size 18", "handler returned error"}},
    {"10 of an unknown parameter", false, {}, Get(Msg(10, U32(9999))), 0, "", {}, {}, false,
     {"parameter 9999 is found", "handler returned error"}},
    {"text after a fill character is ignored", false, {}, SetText("KQAAAAAAAAA=KQAAAAEAAAA="), 1, "",
     {One(1, 1.0f)}, {}, false, {}},
    {"empty text", false, {}, SetText(""), 0, "", {}, {}, false,
     {"size is wrong", "do not support id -1"}},
    {"52 repeats a counter", false, {Set(Piece(0, 2, 78, "ab"))}, Set(Piece(0, 2, 78, "ab")), 0, "",
     {}, {}, false, {"Add: index(0/2) already exists"}},
    {"52 beyond its total", false, {}, Set(Piece(2, 2, 78, "ab")), 0, "", {}, {}, false,
     {"Add: index(2/2) exceeds boundary"}},
    {"52 whose merged command is its own piece again", false, {},
     Set(Piece(0, 1, 5, Piece(0, 1, 5, ""))), 0, "", {}, {}, false,
     {"merged command nested deeper than 4"}},
    {"53 of an unknown session", false, {}, Get(Msg(53, U32(0) + U32(1) + U32(123456))), 0, "", {},
     {}, false, {"handler returned error"}},
    {"53 serves each piece once", false,
     {Get(Msg(7, U32(6) + "dspkit"), kReserved + 40),
      Get(Msg(53, U32(2) + U32(4) + kSession), kReserved + 40)},
     Get(Msg(53, U32(2) + U32(4) + kSession), kReserved + 40), 0, "", {}, {}, false,
     {"could not find matched sessionId <session> currentMsgCounter 2", "handler returned error"}},
};
// clang-format on

TEST(DispatchTableTest, EveryRequestIdEndToEnd) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        DispatchTable(row).Run();
    }
}

}  // namespace
}  // namespace test
}  // namespace TesselFX
