#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "BringupFiles.h"
#include "zbhalcontroller/zb_api.h"

// The tuning tool's side of the exported interface: frames laid out by hand, their base64 text,
// and a control object with a recording notifier.
namespace bringup_test {

/// Base64 of the standard alphabet with "=" fill, written for the tests alone.
inline std::string ToText(const std::string& bytes) {
    static const char alphabet[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (size_t i = 0; i < bytes.size(); i += 3) {
        uint32_t group = 0;
        for (size_t k = 0; k < 3; ++k) {
            group = (group << 8) | (i + k < bytes.size() ? static_cast<uint8_t>(bytes[i + k]) : 0);
        }
        const size_t count = bytes.size() - i < 3 ? bytes.size() - i : 3;
        for (size_t k = 0; k < 4; ++k) {
            text.push_back(k <= count ? alphabet[(group >> (18 - 6 * k)) & 63] : '=');
        }
    }
    return text;
}

/// The reverse of ToText for well-formed text.
inline std::string FromText(const std::string& text) {
    static const std::string alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    uint32_t group = 0;
    int bits = 0;
    for (char c : text) {
        const size_t value = alphabet.find(c);
        if (value == std::string::npos) break;
        group = (group << 6) | static_cast<uint32_t>(value);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes.push_back(static_cast<char>((group >> bits) & 0xFF));
        }
    }
    return bytes;
}

/// A frame: u32 id, then the payload.
inline std::string Msg(uint32_t id, const std::string& payload = "") {
    std::string out;
    PutU32(out, id);
    return out + payload;
}
inline std::string U32(uint32_t value) {
    std::string out;
    PutU32(out, value);
    return out;
}
inline std::string F64(double value) {
    std::string out;
    PutF64(out, value);
    return out;
}
/// u32 count, then (u32 id, f64 value) pairs.
inline std::string Pairs(const std::map<unsigned, double>& pairs) {
    std::string out = U32(static_cast<uint32_t>(pairs.size()));
    for (const auto& pair : pairs) out += U32(pair.first) + F64(pair.second);
    return out;
}
/// A piece of a long transfer, id 52.
inline std::string Piece(uint32_t counter, uint32_t total, uint32_t session,
                         const std::string& data) {
    return Msg(52, U32(counter) + U32(total) + U32(session) +
                       U32(static_cast<uint32_t>(data.size())) + data);
}

inline int IgnoringSender(void*, uint32_t, const void*, uint32_t, void*, uint32_t*, void*) {
    return 0;
}

/// The tool: records each notification's text and answers with result; onNotify, when set,
/// runs inside the callback.
struct Tool {
    void* handle = nullptr;
    std::vector<std::string> texts;
    int result = 0;
    std::function<void()> onNotify;

    /// The frames notified since the last call; each text must carry the envelope of instance.
    std::vector<std::string> TakeFrames(uint32_t instance = 1) {
        const std::string header = "dsp_instance=" + std::to_string(instance) + ";tessel_data=";
        std::vector<std::string> frames;
        for (const std::string& text : texts) {
            if (text.compare(0, header.size(), header) != 0) {
                ADD_FAILURE() << "no envelope: " << text;
                continue;
            }
            const std::string body = text.substr(header.size());
            EXPECT_EQ(ToText(FromText(body)), body) << "not base64 with fill";
            frames.push_back(FromText(body));
        }
        texts.clear();
        return frames;
    }
};

inline int RecordingNotifier(void* handle, const void* data, uint32_t size, void* context) {
    Tool* tool = static_cast<Tool*>(context);
    EXPECT_EQ(handle, tool->handle);
    tool->texts.emplace_back(static_cast<const char*>(data), size);
    if (tool->onNotify) tool->onNotify();
    return tool->result;
}

inline PresetRecord SimplePreset(uint32_t om, uint32_t sm, std::map<unsigned, double> parameters) {
    PresetRecord record;
    record.outputMode = om;
    record.soundMode = sm;
    record.name = "p" + std::to_string(om) + std::to_string(sm);
    record.parameters = std::move(parameters);
    return record;
}

/// Twenty parameters 2000 to 2019 with values 0.5 to 19.5: Many (2,1).
inline std::map<unsigned, double> ManyParameters() {
    std::map<unsigned, double> many{{1, 0.0}};
    for (unsigned i = 0; i < 20; ++i) many[2000 + i] = i + 0.5;
    return many;
}

/// A control object of one handler, instance 1, with presets Music (1,1), Movie (1,2) and
/// Many (2,1), and the stand-in DSP library.
class ToolSessionTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const std::string presets =
            m_dir.Write("system.zps", PresetFile({SimplePreset(1, 1, {{1, 0.0}, {1006, 1.0}}),
                                                  SimplePreset(1, 2, {{1, 0.0}, {1022, 2.0}}),
                                                  SimplePreset(2, 1, ManyParameters())}));
        const std::string config = m_dir.Write(
            "hal.ini",
            "[HAL_SUPPORTED_SAMPLE_RATES]\nrates=48000\n"
            "[HAL_VOLUME_PRIORITY]\nAUDIO_STREAM_MUSIC=VOLUME_PRIORITY_HIGH\n"
            "[HAL_SUPPORTED_PRESETS]\nMusic=OM:1,SM:1\nMovie=OM:1,SM:2\nMany=OM:2,SM:1\n"
            "[HAL_SUPPORTED_CONTROLS]\n"
            "Speaker=DEV:2,SR:rates,PRESET:Music|Movie|Many,INSTANCE:1\n"
            "[COEFS_CONVERTER_SETTING]\nDspKitPath64=" DSPKIT_SIM_PATH "\n");
        ASSERT_EQ(zb_create(&m_handle, &m_tool), 1);
        m_tool.handle = m_handle;
        ASSERT_EQ(zb_initialize(m_handle, presets.c_str(), "", config.c_str(), IgnoringSender), 1);
    }
    void TearDown() override { zb_destroy(&m_handle); }

    /// zb_set_command with the text of frame.
    int Set(const std::string& frame) {
        std::string text = ToText(frame);
        return zb_set_command(m_handle, 1, &text[0]);
    }
    /// zb_get_command with the text of frame and a reply buffer of replySize bytes; reply gets
    /// the decoded reply frame, or "#" when the call fails.
    int Get(const std::string& frame, std::string& reply, uint32_t replySize = 4096) {
        std::vector<char> buffer(replySize, '\0');
        const int result =
            zb_get_command(m_handle, 1, ToText(frame).c_str(), buffer.data(), replySize);
        reply = result == 1 ? FromText(std::string(buffer.data())) : "#";
        return result;
    }

    TempDir m_dir;
    Tool m_tool;
    void* m_handle = nullptr;
};

}  // namespace bringup_test
