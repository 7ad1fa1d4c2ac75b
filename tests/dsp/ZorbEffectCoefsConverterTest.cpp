#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "AndroidLogFake.h"
#include "MockZorbEffectWrapper.h"
#include "dsp/ZorbEffectCoefsConverter.h"

namespace TesselFX {
namespace {

using test::AndroidLogCapture;
using test::MockZorbEffectWrapper;
using ::testing::_;
using ::testing::AnyNumber;
using ::testing::DoAll;
using ::testing::InSequence;
using ::testing::NiceMock;
using ::testing::Return;
using ::testing::SetArgPointee;
using Strings = std::vector<std::string>;

/// A mock whose work-area maxima are 4 ids and 16 bytes.
std::shared_ptr<NiceMock<MockZorbEffectWrapper>> MakeEffect() {
    auto effect = std::make_shared<NiceMock<MockZorbEffectWrapper>>();
    ON_CALL(*effect, Control_Deferred_GetMaxNumCoefIDs(_))
        .WillByDefault(DoAll(SetArgPointee<0>(4u), Return(true)));
    ON_CALL(*effect, Control_Coefficient_GetBufferMaxSize(_))
        .WillByDefault(DoAll(SetArgPointee<0>(16u), Return(true)));
    EXPECT_CALL(*effect, Control_Deferred_GetMaxNumCoefIDs(_)).Times(AnyNumber());
    EXPECT_CALL(*effect, Control_Coefficient_GetBufferMaxSize(_)).Times(AnyNumber());
    return effect;
}

/// Makes Control_Deferred_Update report the given ids.
void ReportIds(MockZorbEffectWrapper& effect, std::vector<int> ids) {
    EXPECT_CALL(effect, Control_Deferred_Update(_, _)).WillOnce([ids](int* out, unsigned* count) {
        std::copy(ids.begin(), ids.end(), out);
        *count = static_cast<unsigned>(ids.size());
        return true;
    });
}

/// Makes Control_Coefficient_Get of id write size bytes of value and check the size it is
/// handed (the one the previous call left).
void Block(MockZorbEffectWrapper& effect, int id, unsigned size, char value, unsigned sizeIn) {
    EXPECT_CALL(effect, Control_Coefficient_Get(id, _, _))
        .WillOnce([=](int, void* data, unsigned* inOut) {
            EXPECT_EQ(*inOut, sizeIn);
            std::memset(data, value, size);
            *inOut = size;
            return true;
        });
}

TEST(ZorbEffectCoefsConverter, InitCheckReportsEachMissingMaximum) {
    AndroidLogCapture log;
    EXPECT_FALSE(ZorbEffectCoefsConverter(nullptr).InitCheck());

    auto effect = MakeEffect();
    EXPECT_CALL(*effect, Control_Deferred_GetMaxNumCoefIDs(_))
        .WillOnce(Return(false))
        .RetiresOnSaturation();
    EXPECT_FALSE(ZorbEffectCoefsConverter(effect).InitCheck());

    EXPECT_CALL(*effect, Control_Coefficient_GetBufferMaxSize(_))
        .WillOnce(Return(false))
        .RetiresOnSaturation();
    EXPECT_FALSE(ZorbEffectCoefsConverter(effect).InitCheck());

    EXPECT_TRUE(ZorbEffectCoefsConverter(effect).InitCheck());
    EXPECT_EQ(log.Texts(),
              (Strings{"ZorbEffectCoefsConverter::InitCheck ZorbEffect is null",
                       "ZorbEffectCoefsConverter::InitCheck failed to read coef ID count",
                       "ZorbEffectCoefsConverter::InitCheck failed to read coef buffer size"}));
    for (const auto& line : log.Lines()) {
        EXPECT_EQ(line.priority, 6);
        EXPECT_EQ(line.tag, "TESSEL_LOG_TAG");
    }
}

/// A converter on MakeEffect's mock.
class ConverterOnMock : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(converter.InitCheck()); }

    std::shared_ptr<NiceMock<MockZorbEffectWrapper>> effect = MakeEffect();
    ZorbEffectCoefsConverter converter{effect};
};

TEST_F(ConverterOnMock, SetsParametersAsFloatsInIdOrderAndReadsReportedBlocks) {
    AndroidLogCapture log;
    {
        InSequence order;
        EXPECT_CALL(*effect, Control_Deferred_Set(3, 0.1f))
            .WillOnce(Return(false))
            .RetiresOnSaturation();
        EXPECT_CALL(*effect, Control_Deferred_Set(17, -2.5f)).WillOnce(Return(true));
        EXPECT_CALL(*effect, Control_Deferred_Set(40, std::numeric_limits<float>::infinity()))
            .WillOnce(Return(true));
        ReportIds(*effect, {9, 2, 5});
        Block(*effect, 9, 12, 'a', 0);
        EXPECT_CALL(*effect, Control_Coefficient_Get(2, _, _))
            .WillOnce(Return(false))
            .RetiresOnSaturation();
        Block(*effect, 5, 3, 'c', 12);
    }
    std::map<uint32_t, std::vector<char>> coefficients = {{77, {'o', 'l', 'd'}}};
    // A failed set is not looked at; a failed block is missing, the conversion succeeds.
    EXPECT_TRUE(converter.Convert({{40, 1e300}, {17, -2.5}, {3, 0.1}}, coefficients));
    EXPECT_EQ(coefficients, (std::map<uint32_t, std::vector<char>>{
                                {5, std::vector<char>(3, 'c')}, {9, std::vector<char>(12, 'a')}}));
    EXPECT_EQ(log.Texts(), Strings{"m_pZorbEffect->Control_Coefficient_Get failed on id 2"});
}

TEST_F(ConverterOnMock, UpdateDecidesWhatComesBack) {
    AndroidLogCapture log;
    std::map<uint32_t, std::vector<char>> coefficients = {{77, {'o'}}};

    // An empty map still updates, and what the update reports is read.
    ReportIds(*effect, {4});
    Block(*effect, 4, 2, 'x', 0);
    EXPECT_TRUE(converter.Convert({}, coefficients));
    EXPECT_EQ(coefficients, (std::map<uint32_t, std::vector<char>>{{4, {'x', 'x'}}}));

    // Ascending ids: blocks before, between and after them go, and so does the block of an id
    // whose read fails.
    coefficients = {{1, {'o'}}, {3, {'o', 'o'}}, {4, {'o'}}, {6, {'o'}}, {9, {'o'}}};
    ReportIds(*effect, {3, 4, 7});
    Block(*effect, 3, 1, 'p', 0);
    EXPECT_CALL(*effect, Control_Coefficient_Get(4, _, _))
        .WillOnce(Return(false))
        .RetiresOnSaturation();
    Block(*effect, 7, 2, 'q', 1);
    EXPECT_TRUE(converter.Convert({{1, 1.0}}, coefficients));
    EXPECT_EQ(coefficients, (std::map<uint32_t, std::vector<char>>{{3, {'p'}}, {7, {'q', 'q'}}}));

    // A count of 0 empties the result.
    ReportIds(*effect, {});
    EXPECT_TRUE(converter.Convert({{1, 1.0}}, coefficients));
    EXPECT_TRUE(coefficients.empty());

    // A failed update leaves the result as it was.
    coefficients = {{77, {'o'}}};
    EXPECT_CALL(*effect, Control_Deferred_Update(_, _))
        .WillOnce(Return(false))
        .RetiresOnSaturation();
    EXPECT_FALSE(converter.Convert({{1, 2.0}}, coefficients));
    EXPECT_EQ(coefficients, (std::map<uint32_t, std::vector<char>>{{77, {'o'}}}));

    EXPECT_EQ(log.Texts(), (Strings{"m_pZorbEffect->Control_Coefficient_Get failed on id 4",
                                    "m_pZorbEffect->Control_Deferred_Update failed"}));

    AndroidLogCapture nullLog;
    ZorbEffectCoefsConverter none(nullptr);
    EXPECT_FALSE(none.Convert({{1, 2.0}}, coefficients));
    EXPECT_EQ(nullLog.Texts(), Strings{"NULL == m_pZorbEffect"});
}

TEST_F(ConverterOnMock, OversizedAnswersOfTheLibraryStayInsideTheWorkAreas) {
    // Six ids against a work area of four, and a size above the 16-byte buffer.
    EXPECT_CALL(*effect, Control_Deferred_Update(_, _)).WillOnce([](int* ids, unsigned* count) {
        for (int i = 0; i < 4; ++i) ids[i] = i + 1;
        *count = 6;
        return true;
    });
    std::vector<unsigned> handed;
    EXPECT_CALL(*effect, Control_Coefficient_Get(_, _, _))
        .Times(4)
        .WillRepeatedly([&handed](int, void*, unsigned* size) {
            handed.push_back(*size);
            *size = 1000u;
            return true;
        });
    std::map<uint32_t, std::vector<char>> coefficients;
    EXPECT_TRUE(converter.Convert({}, coefficients));
    ASSERT_EQ(coefficients.size(), 4u);
    EXPECT_EQ(coefficients.at(1).size(), 16u);
    // Each read is handed the size that the library left, not the part of it that was kept.
    EXPECT_EQ(handed, (std::vector<unsigned>{0, 1000, 1000, 1000}));
}

TEST_F(ConverterOnMock, ConvertToBufferConcatenatesInAscendingId) {
    ReportIds(*effect, {8, 3});
    Block(*effect, 8, 1, 'h', 0);
    Block(*effect, 3, 2, 'l', 1);
    std::vector<char> buffer = {'z'};
    EXPECT_TRUE(converter.ConvertToBuffer({}, buffer));
    EXPECT_EQ(buffer, (std::vector<char>{'l', 'l', 'h'}));

    EXPECT_CALL(*effect, Control_Deferred_Update(_, _))
        .WillOnce(Return(false))
        .RetiresOnSaturation();
    EXPECT_FALSE(converter.ConvertToBuffer({}, buffer));
    EXPECT_EQ(buffer, (std::vector<char>{'l', 'l', 'h'}));
}

}  // namespace
}  // namespace TesselFX
