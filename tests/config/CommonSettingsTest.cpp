#include <gtest/gtest.h>

#include <cstring>
#include <tuple>

#include "config/CommonSettings.h"
#include "config/ZorbAudioSettings.h"

namespace TesselFX {
namespace {

TEST(CommonSettings, MatchesTreatsAutoAsWildcardAndIgnoresOneSidedKeys) {
    CommonSettings autoRoute, usb, bt, none, empty;
    autoRoute.AddString("ROUTE", "AUTO");
    usb.AddString("ROUTE", "usb");
    bt.AddString("ROUTE", "bt");
    none.AddUint("INSTANCE", 3);

    EXPECT_TRUE(autoRoute.Matches(&usb));
    EXPECT_TRUE(usb.Matches(&autoRoute));
    EXPECT_FALSE(bt.Matches(&usb));
    EXPECT_FALSE(usb.Matches(&bt));
    EXPECT_TRUE(bt.Matches(&none));
    EXPECT_TRUE(none.Matches(&bt));
    EXPECT_TRUE(empty.Matches(&bt));
    EXPECT_TRUE(bt.Matches(&empty));
    EXPECT_FALSE(bt.Matches(nullptr));
    EXPECT_FALSE(empty.Matches(nullptr));

    // "AUTO" is case-sensitive and whole-word.
    CommonSettings lowerAuto, autos;
    lowerAuto.AddString("ROUTE", "auto");
    autos.AddString("ROUTE", "AUTOS");
    EXPECT_FALSE(lowerAuto.Matches(&usb));
    EXPECT_FALSE(autos.Matches(&usb));

    // Values compare by text form: an int 2 and the string "2" are the same.
    CommonSettings intDev, stringDev, otherDev;
    intDev.AddInt("DEV", 2);
    intDev.AddString("ROUTE", "bt");
    stringDev.AddString("DEV", "2");
    otherDev.AddUint("DEV", 3);
    EXPECT_TRUE(intDev.Matches(&stringDev));
    EXPECT_FALSE(intDev.Matches(&otherDev));
    otherDev.AddString("DEV", "AUTO");
    EXPECT_TRUE(intDev.Matches(&otherDev));
}

TEST(CommonSettings, TypedAccessorsNeedTheExactKind) {
    CommonSettings settings;
    EXPECT_TRUE(settings.AddInt("i", -7));
    EXPECT_TRUE(settings.AddUint("u", 4000000000u));
    EXPECT_TRUE(settings.AddDouble("d", 0.5));
    EXPECT_TRUE(settings.AddString("s", "text"));

    int32_t i = 99;
    uint32_t u = 99;
    double d = 99.0;
    EXPECT_FALSE(settings.GetInt("u", i));
    EXPECT_FALSE(settings.GetUint("i", u));
    EXPECT_FALSE(settings.GetDouble("s", d));
    EXPECT_FALSE(settings.GetInt("absent", i));
    EXPECT_EQ(std::make_tuple(i, u, d), std::make_tuple(99, 99u, 99.0));
    EXPECT_TRUE(settings.GetInt("i", i));
    EXPECT_TRUE(settings.GetUint("u", u));
    EXPECT_TRUE(settings.GetDouble("d", d));
    EXPECT_EQ(std::make_tuple(i, u, d), std::make_tuple(-7, 4000000000u, 0.5));

    char buffer[16];
    EXPECT_EQ(settings.GetString("u", buffer, sizeof(buffer)), 10u);
    EXPECT_STREQ(buffer, "4000000000");
    EXPECT_EQ(settings.GetString("d", buffer, sizeof(buffer)), 8u);
    EXPECT_STREQ(buffer, "0.500000");
    EXPECT_EQ(settings.GetString("i", buffer, sizeof(buffer)), 2u);
    EXPECT_STREQ(buffer, "-7");
    EXPECT_EQ(settings.GetString("absent", buffer, sizeof(buffer)), 0xFFFFFFFFu);

    // A short buffer gets size-1 bytes and a terminator; the result is the smaller length.
    std::memset(buffer, 'x', sizeof(buffer));
    EXPECT_EQ(settings.GetString("u", buffer, 4), 4u);
    EXPECT_STREQ(buffer, "400");
    EXPECT_EQ(buffer[4], 'x');
    EXPECT_EQ(settings.GetString("u", buffer, 0), 0u);
    EXPECT_EQ(buffer[0], '4');

    // A later Add of another kind replaces the value.
    settings.AddString("u", "now text");
    EXPECT_FALSE(settings.GetUint("u", u));
    EXPECT_TRUE(settings.Remove("u"));
    EXPECT_FALSE(settings.Remove("u"));
}

TEST(CommonSettings, KeysTextAndCopies) {
    CommonSettings settings;
    settings.AddString("b", "x");
    settings.AddInt("DEV", 2);
    settings.AddDouble("a", 1.25);
    EXPECT_EQ(settings.ToString(), "DEV=2;a=1.250000;b=x;");

    uint32_t count = 0;
    const char* const* keys = settings.GetKeys(count);
    ASSERT_EQ(count, 3u);
    EXPECT_STREQ(keys[0], "DEV");
    EXPECT_STREQ(keys[1], "a");
    EXPECT_STREQ(keys[2], "b");

    CommonSettings other;
    other.AddString("old", "gone");
    EXPECT_TRUE(settings.CopyTo(&other));
    EXPECT_FALSE(other.Contains("old"));
    EXPECT_EQ(other.ToString(), "DEV=2;a=1.250000;b=x;");
    EXPECT_EQ(other.GetValue("b"), settings.GetValue("b"));  // shared, not copied
    EXPECT_FALSE(settings.CopyTo(nullptr));
    EXPECT_TRUE(settings.CopyTo(&settings));
    EXPECT_EQ(settings.ToString(), "DEV=2;a=1.250000;b=x;");

    EXPECT_TRUE(settings.Clear());
    EXPECT_EQ(settings.ToString(), "");
    settings.GetKeys(count);
    EXPECT_EQ(count, 0u);
}

TEST(CommonSettings, DoubleValueComparesNumericallyOnlyWithDoubles) {
    CommonSettings::DoubleValue third(1.0 / 3.0), nearThird(0.3333334), half(0.5);
    CommonSettings::StringValue text("0.500000");
    EXPECT_TRUE(third.IsEqual(nearThird));  // six decimals in the text form
    EXPECT_FALSE(third.IsEqualValue(nearThird));
    EXPECT_TRUE(half.IsEqualValue(text));  // other kind: by text form
}

TEST(ZorbAudioSettings, OwnsAVersionTwoRecordAndForwards) {
    ZorbAudioSettings settings;
    zorbaudio_settings_t* record = settings.GetSettings();
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->version, 2u);
    ASSERT_NE(record->settings, nullptr);

    EXPECT_TRUE(settings.AddUint("INSTANCE", 7));
    uint32_t instance = 0;
    EXPECT_TRUE(record->settings->GetUint("INSTANCE", instance));
    EXPECT_EQ(instance, 7u);
}

}  // namespace
}  // namespace TesselFX
