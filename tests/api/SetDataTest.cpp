// zb_set_data through the exported function: the fixed ids with their exact sizes and texts,
// and the custom actions of the configuration, shown in the frames the stand-in library makes.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "../e2e/BringupFiles.h"
#include "LogCapture.h"
#include "zbhalcontroller/zb_api.h"

namespace TesselFX {
namespace test {
namespace {

using bringup_test::Block;
using bringup_test::Frame;
using bringup_test::Preset;
using bringup_test::PresetFile;
using bringup_test::TempDir;
using Frames = std::vector<std::string>;

int RecordFrame(void*, uint32_t, const void* data, uint32_t size, void*, uint32_t*, void* context) {
    static_cast<Frames*>(context)->emplace_back(static_cast<const char*>(data), size);
    return 0;
}

std::string Pointer(const void* pointer) {
    char text[32];
    std::snprintf(text, sizeof(text), "%p", pointer);
    return text;
}

/// Bytes of the caller's native order, as zb_set_data takes them.
template <typename T>
void Put(std::vector<char>& out, size_t offset, T value) {
    if (out.size() < offset + sizeof(value)) out.resize(offset + sizeof(value));
    std::memcpy(out.data() + offset, &value, sizeof(value));
}

// Music (1,1) and Movie (1,2). Action 300: numbers 5 then 7 select Movie (priority 1), a first
// number of 5 or 6 selects Music (priority 2).
class SetDataTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const std::string presets = m_dir.Write(
            "system.zps", PresetFile({Preset(1, 1, 0, 0, {{1, 0.0}, {1006, 1.0}}),
                                      Preset(1, 2, 0, 0, {{1, 0.0}, {1006, 2.0}, {1054, 9.0}})}));
        const std::string config = m_dir.Write(
            "hal.ini",
            "[HAL_SUPPORTED_SAMPLE_RATES]\nrates=48000\n"
            "[HAL_SUPPORTED_PRESETS]\nMusic=OM:1,SM:1\nMovie=OM:1,SM:2\n"
            "[HAL_SUPPORTED_CONTROLS]\nSpeaker=DEV:2,SR:rates,PRESET:Music|Movie,INSTANCE:1\n"
            "[CUSTOM_ACTION_300]\n"
            "either=PRIORITY:2,NUMBERS:5|6,PRESET:Music\n"
            "both=PRIORITY:1,NUMBERS:5:7,PRESET:Movie\n"
            "[COEFS_CONVERTER_SETTING]\nDspKitPath64=" DSPKIT_SIM_PATH "\n");
        ASSERT_EQ(zb_create(&m_handle, &m_frames), 1);
        ASSERT_EQ(zb_initialize(m_handle, presets.c_str(), "", config.c_str(), RecordFrame), 1);
    }
    void TearDown() override { zb_destroy(&m_handle); }

    int SetData(int32_t id, const std::vector<char>& data) {
        return zb_set_data(m_handle, 1, id, const_cast<char*>(data.data()),
                           static_cast<uint32_t>(data.size()));
    }
    Frames Take() {
        Frames out;
        out.swap(m_frames);
        return out;
    }

    TempDir m_dir;
    Frames m_frames;
    void* m_handle = nullptr;
};

TEST_F(SetDataTest, CustomActionSelectsByPriorityAndIgnoresTrailingBytes) {
    LogCapture capture;
    std::vector<char> numbers;
    Put<uint32_t>(numbers, 0, 5);
    Put<uint32_t>(numbers, 4, 7);
    Put<uint16_t>(numbers, 8, 0xFFFF);  // no whole number
    ASSERT_EQ(numbers.size(), 10u);
    // Both rules match 5, 7: priority 1 answers with Movie.
    ASSERT_EQ(SetData(300, numbers), 1);
    EXPECT_EQ(Take(), Frames{Frame({Block(4096, {{1, 0.0f}}), Block(4158, {{14, 2.0f}}),
                                    Block(4161, {{14, 9.0f}})})});

    // Six bytes are the one number 6: only the rule of priority 2 matches.
    std::vector<char> six;
    Put<uint32_t>(six, 0, 6);
    Put<uint16_t>(six, 4, 7);
    ASSERT_EQ(SetData(300, six), 1);
    EXPECT_EQ(Take(), Frames{Frame({Block(4158, {{14, 1.0f}})})});

    capture.Clear();
    std::vector<char> nine;
    Put<uint32_t>(nine, 0, 9);
    EXPECT_EQ(SetData(300, nine), 0);
    EXPECT_EQ(SetData(300, {1, 2, 3}), 0);  // no whole number: no rule with positions matches
    EXPECT_EQ(zb_set_data(m_handle, 1, 300, nullptr, 4), 0);
    EXPECT_EQ(SetData(256, nine), 0);
    EXPECT_EQ(SetData(13, nine), 0);
    EXPECT_EQ(SetData(255, nine), 0);
    EXPECT_EQ(SetData(-1, nine), 0);
    EXPECT_TRUE(capture.Has(3, "Could not find matched action"));
    EXPECT_EQ(capture.ErrorTexts(), (std::vector<std::string>{
                                        "not supported internalAction id 0",
                                        "not supported internalAction id 0",
                                        "invalid input: pData is nullptr",
                                        "id 256 is not defined in the config",
                                        "id 13 is not predefined",
                                        "id 255 is not predefined",
                                        "id -1 is not predefined",
                                    }));
    EXPECT_TRUE(Take().empty());
}

TEST_F(SetDataTest, FixedIdsCheckTheirSizeExactly) {
    struct Case {
        int32_t id;
        const char* label;
        size_t size;
    };
    const Case cases[] = {
        {0, "SET_VOLUME", 8},      {1, "SET_ORIENTATION", 4}, {2, "SET_ACTIVE", 8},
        {3, "SET_OUTPUT_MODE", 4}, {4, "SET_SOUND_MODE", 4},  {5, "SET_ENABLE", 1},
        {6, "SET_ENABLE", 1},      {7, "SET_PARAMETER", 16},  {9, "SET_LINKLAWS_VALUE", 24}};
    LogCapture capture;
    for (const Case& c : cases) {
        capture.Clear();
        std::vector<char> wrong(c.size + 1);
        EXPECT_EQ(SetData(c.id, wrong), 0) << c.id;
        std::vector<char> shorter(c.size - 1);
        EXPECT_EQ(SetData(c.id, shorter), 0) << c.id;
        EXPECT_EQ(zb_set_data(m_handle, 1, c.id, nullptr, static_cast<uint32_t>(c.size)), 0)
            << c.id;
        const auto text = [&](const void* data) {
            return std::string("SetData ") + c.label + " size should be " + std::to_string(c.size) +
                   " and pData " + Pointer(data) + " should not be null";
        };
        EXPECT_EQ(
            capture.ErrorTexts(),
            (std::vector<std::string>{text(wrong.data()), text(shorter.data()), text(nullptr)}))
            << c.id;
    }
    capture.Clear();
    EXPECT_EQ(SetData(8, std::vector<char>(16)), 0);
    EXPECT_EQ(zb_set_data(m_handle, 1, 8, nullptr, 0), 0);
    EXPECT_EQ(SetData(10, std::vector<char>(4)), 0);
    EXPECT_EQ(SetData(11, std::vector<char>(1)), 0);
    EXPECT_EQ(zb_set_data(m_handle, 1, 12, nullptr, 8), 0);
    EXPECT_EQ(capture.ErrorTexts(), (std::vector<std::string>{
                                        "SetData SET_PARAMETER_ARRAY is not supported",
                                        "SetData SET_PARAMETER_ARRAY is not supported",
                                        "SetData WAIT_FOR_FLUSH size should be 0",
                                        "SetData FLUSH size should be 0",
                                        "SetData ON_DSP_WAKEUP size should be 0",
                                    }));
    EXPECT_TRUE(Take().empty());
}

TEST_F(SetDataTest, FixedIdsReachTheirOperations) {
    std::vector<char> active;
    Put<uint32_t>(active, 0, 1);
    Put<uint32_t>(active, 4, 2);
    ASSERT_EQ(SetData(2, active), 1);
    EXPECT_EQ(Take(), Frames{Frame({Block(4096, {{1, 0.0f}}), Block(4158, {{14, 2.0f}}),
                                    Block(4161, {{14, 9.0f}})})});

    std::vector<char> parameter;
    Put<uint32_t>(parameter, 0, 1054);
    Put<uint32_t>(parameter, 4, 0xDEADBEEF);  // padding, not looked at
    Put<double>(parameter, 8, 4.0);
    ASSERT_EQ(SetData(7, parameter), 1);
    EXPECT_EQ(Take(), Frames{Frame({Block(4161, {{14, 4.0f}})})});

    // Enable and bypass: a byte, zero or not.
    ASSERT_EQ(SetData(5, {0}), 1);
    EXPECT_EQ(Take(), Frames{Frame({Block(4096, {{1, 1.0f}})})});
    ASSERT_EQ(SetData(5, {2}), 1);
    EXPECT_EQ(Take(), Frames{Frame({Block(4096, {{1, 0.0f}})})});
    ASSERT_EQ(SetData(6, {static_cast<char>(0x80)}), 1);
    EXPECT_EQ(Take(), Frames{Frame({Block(4096, {{1, 1.0f}})})});
    ASSERT_EQ(SetData(6, {0}), 1);
    EXPECT_EQ(Take(), Frames{Frame({Block(4096, {{1, 0.0f}})})});

    std::vector<char> mode;
    Put<uint32_t>(mode, 0, 1);
    ASSERT_EQ(SetData(4, mode), 1);  // sound mode 1: Music
    EXPECT_EQ(Take(), Frames{Frame({Block(4158, {{14, 1.0f}})})});
    ASSERT_EQ(SetData(3, mode), 1);  // output mode 1 again: nothing changes
    std::vector<char> volume;
    Put<double>(volume, 0, 0.5);
    ASSERT_EQ(SetData(0, volume), 1);
    std::vector<char> angle;
    Put<int32_t>(angle, 0, 90);
    ASSERT_EQ(SetData(1, angle), 1);
    EXPECT_TRUE(Take().empty());

    // The size-0 ids take no data; pData is not looked at.
    ASSERT_EQ(zb_set_data(m_handle, 1, 10, nullptr, 0), 1);
    ASSERT_EQ(SetData(2, active), 1);
    EXPECT_TRUE(Take().empty());
    ASSERT_EQ(zb_set_data(m_handle, 1, 11, &mode, 0), 1);
    EXPECT_EQ(Take(), Frames{Frame({Block(4158, {{14, 2.0f}})})});
    ASSERT_EQ(zb_set_data(m_handle, 1, 12, nullptr, 0), 1);
    EXPECT_EQ(Take(), Frames{Frame({Block(4096, {{1, 0.0f}}), Block(4158, {{14, 2.0f}}),
                                    Block(4161, {{14, 4.0f}})})});

    // Id 9 is the link-law value operation with its three arguments.
    std::vector<char> law;
    Put<uint32_t>(law, 0, 0);
    Put<double>(law, 8, -20.0);
    Put<double>(law, 16, 0.5);
    LogCapture capture;
    const int viaData = SetData(9, law);
    const std::vector<std::string> dataErrors = capture.ErrorTexts();
    capture.Clear();
    EXPECT_EQ(viaData, zb_set_linklaws_value(m_handle, 1, 0, -20.0, 0.5));
    EXPECT_EQ(dataErrors, capture.ErrorTexts());
}

}  // namespace
}  // namespace test
}  // namespace TesselFX
