#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>

#include "zbhalcontroller/zb_api.h"

namespace {

TEST(ZbApiE2eTest, TheLibraryExportsTheTwentyTwoFunctions) {
    Dl_info info{};
    ASSERT_NE(dladdr(reinterpret_cast<void*>(&zb_create), &info), 0);
    void* library = dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr);
    for (const char* name : {"zb_create",
                             "zb_destroy",
                             "zb_initialize",
                             "zb_set_enable",
                             "zb_set_bypass",
                             "zb_set_active",
                             "zb_set_sound_mode",
                             "zb_set_output_mode",
                             "zb_set_volume",
                             "zb_set_orientation",
                             "zb_set_parameter",
                             "zb_set_parameters_array",
                             "zb_set_command",
                             "zb_get_command",
                             "zb_set_linklaws_value",
                             "zb_wait_for_flush",
                             "zb_flush",
                             "zb_register_notifier",
                             "zb_set_data",
                             "zb_get_version",
                             "zb_on_dsp_wakeup",
                             "zb_is_feature_supported"}) {
        EXPECT_NE(dlsym(library, name), nullptr) << name;
    }
    EXPECT_EQ(dlsym(library, "zorbaudio_initialize"), nullptr);
    dlclose(library);
}

TEST(ZbApiE2eTest, UnknownHandlesFailAndKnownOnesNeedInitialization) {
    void* unknown = reinterpret_cast<void*>(0x99);
    EXPECT_EQ(zb_set_enable(unknown, 0, 1), 0);
    EXPECT_EQ(zb_is_feature_supported(unknown, "DumpBufferToDsp"), 0);
    zb_destroy(&unknown);
    EXPECT_EQ(unknown, reinterpret_cast<void*>(0x99));

    void* handle = nullptr;
    ASSERT_EQ(zb_create(&handle, nullptr), 1);
    EXPECT_EQ(zb_set_enable(handle, 0, 1), 0);
    EXPECT_EQ(zb_set_volume(handle, 0, 0.5), 0);
    EXPECT_EQ(zb_set_parameters_array(handle, 0, 0, nullptr, nullptr), 0);
    EXPECT_EQ(zb_is_feature_supported(handle, "DumpBufferToDsp"), 0);
    EXPECT_EQ(zb_initialize(handle, "system.zps", nullptr, "hal.ini", nullptr), 0);
    zb_destroy(&handle);
    EXPECT_EQ(zb_set_enable(handle, 0, 1), 0);
}

TEST(ZbApiE2eTest, GetVersionCopiesOnlyWhenTheTerminatorFits) {
    void* handle = nullptr;
    ASSERT_EQ(zb_create(&handle, nullptr), 1);
    char text[12];
    std::memset(text, '#', sizeof(text));
    EXPECT_EQ(zb_get_version(handle, 0, "halcontroller", text, 9), 0);
    EXPECT_EQ(text[0], '#');
    EXPECT_EQ(zb_get_version(handle, 0, "halcontroller", text, 10), 1);
    EXPECT_EQ(std::memcmp(text, "1.553.0.0\0", 10), 0);
    EXPECT_EQ(zb_get_version(handle, 0, "dsp", text, sizeof(text)), 0);
    zb_destroy(&handle);
}

}  // namespace
