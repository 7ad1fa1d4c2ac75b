#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ControlMocks.h"
#include "LogCapture.h"
#include "control/Hifi3zControlHandler.h"
#include "dsp/ISetParameterArrayBufferGeneratorV2.h"

namespace TesselFX {
namespace {

using ::testing::_;
using ::testing::NiceMock;
using ::testing::Return;
using ::testing::ReturnPointee;
using Parameters = std::map<unsigned int, double>;

/// A differential generator that records each call and answers with preset frames.
class FakeGeneratorV2 : public IControlBufferGenerator, public ISetParameterArrayBufferGeneratorV2 {
  public:
    struct Call {
        Parameters parameters;
        bool onlyChanged;
    };
    status_t MakeSetParameterArrayBufferV2(std::vector<std::vector<char>>& out,
                                           const Parameters& parameters,
                                           bool onlyChanged) override {
        calls.push_back({parameters, onlyChanged});
        if (status != kStatusOk) return status;
        out.insert(out.end(), frames.begin(), frames.end());
        return kStatusOk;
    }
    std::vector<Call> calls;
    std::vector<std::vector<char>> frames{{'a'}, {'b'}, {'c'}};
    status_t status = kStatusOk;
};

/// Records what was sent; fails the send whose number (from 0) is failAt.
class RecordingSender : public IDspBufferSender {
  public:
    bool Send(const std::shared_ptr<CommonSettings>&, const std::vector<char>& buffer) override {
        if (static_cast<int>(attempts++) == failAt) return false;
        sent.push_back(buffer);
        return true;
    }
    bool SendAndReceive(const std::shared_ptr<CommonSettings>&, const std::vector<char>&,
                        std::vector<char>&) override {
        return false;
    }
    void DumpBufferToDsp(const std::vector<char>&) override {}
    std::vector<std::vector<char>> sent;
    unsigned attempts = 0;
    int failAt = -1;
};

struct Hifi3zHandlerTest : ::testing::Test {
    Hifi3zHandlerTest() {
        auto preset = std::make_shared<PresetDescription>("Music", 1, 2, 0, "", "");
        description = test::MakeDescription({preset});
        description->GetSettings()->AddString("ROUTE", "spk");
        ON_CALL(*presetSet, RequestPresetHandle(1, 2)).WillByDefault(Return(presetHandle));
        ON_CALL(*presetHandle, GetAllParameters()).WillByDefault(ReturnPointee(&presetValues));
        ON_CALL(*volumePolicy, GetDefaultVolume()).WillByDefault(Return(1.0f));
    }

    std::shared_ptr<Hifi3zControlHandler> Make(std::shared_ptr<IControlBufferGenerator> gen) {
        return std::make_shared<Hifi3zControlHandler>(sender, description, presetSet, volumePolicy,
                                                      volumeTableHelper, orientationPolicy, gen,
                                                      nullptr, nullptr);
    }
    std::shared_ptr<Hifi3zControlHandler> Make() { return Make(generator); }

    Parameters presetValues{{1, 0.0}, {7, 3.5}};
    std::shared_ptr<ControlDescription> description;
    std::shared_ptr<NiceMock<test::MockPresetSet>> presetSet =
        std::make_shared<NiceMock<test::MockPresetSet>>();
    std::shared_ptr<NiceMock<test::MockPresetHandle>> presetHandle =
        std::make_shared<NiceMock<test::MockPresetHandle>>();
    std::shared_ptr<NiceMock<test::MockVolumePolicy>> volumePolicy =
        std::make_shared<NiceMock<test::MockVolumePolicy>>();
    std::shared_ptr<NiceMock<test::MockVolumeTableHelper>> volumeTableHelper =
        std::make_shared<NiceMock<test::MockVolumeTableHelper>>();
    std::shared_ptr<OrientationPolicy> orientationPolicy = std::make_shared<OrientationPolicy>(
        std::map<std::string, std::map<OrientationAngle, SubTypeMask>>{},
        std::map<std::string, OrientationAngle>{});
    std::shared_ptr<FakeGeneratorV2> generator = std::make_shared<FakeGeneratorV2>();
    std::shared_ptr<RecordingSender> sender = std::make_shared<RecordingSender>();
};

// Parameter 1 at 0 and at 0.5 on the wire is shown end to end in tests/e2e/BringupTest.cpp.
TEST_F(Hifi3zHandlerTest, OnlyAPresetValueOfExactlyZeroTakesTheHandlersState) {
    auto handler = Make();
    ASSERT_TRUE(handler->SetEnable(false));
    Parameters one{{1, 1.0}};
    handler->MergeEnableBypassParameter(one);
    EXPECT_EQ(one, (Parameters{{1, 1.0}}));
    Parameters zero{{1, 0.0}, {2, 0.0}};
    handler->MergeEnableBypassParameter(zero);
    EXPECT_EQ(zero, (Parameters{{1, 1.0}, {2, 0.0}}));
    Parameters negativeZero{{1, -0.0}};
    handler->MergeEnableBypassParameter(negativeZero);
    EXPECT_EQ(negativeZero, (Parameters{{1, 1.0}}));
    ASSERT_TRUE(handler->SetEnable(true));
    Parameters enabled{{1, 1.0}, {7, 0.0}};
    handler->MergeEnableBypassParameter(enabled);
    EXPECT_EQ(enabled, (Parameters{{1, 1.0}, {7, 0.0}}));
}

TEST_F(Hifi3zHandlerTest, AFailedSendStopsTheRestAndKeepsTheNextSendFull) {
    auto handler = Make();
    sender->failAt = 1;
    {
        test::LogCapture capture;
        EXPECT_FALSE(handler->SetCurrentPreset());
        EXPECT_TRUE(capture.Has(4, "SendBufferToDsp fail"));
    }
    EXPECT_EQ(sender->sent, (std::vector<std::vector<char>>{{'a'}}));
    EXPECT_EQ(sender->attempts, 2u);

    // The flush of a wake-up reports success whatever the send did.
    sender->failAt = 2;
    EXPECT_TRUE(handler->OnDspWakeUp());
    EXPECT_FALSE(generator->calls.back().onlyChanged);
    ASSERT_TRUE(handler->SetCurrentPreset());
    EXPECT_FALSE(generator->calls.back().onlyChanged);
    ASSERT_TRUE(handler->SetCurrentPreset());
    EXPECT_TRUE(generator->calls.back().onlyChanged);
}

TEST_F(Hifi3zHandlerTest, GeneratorFailureSendsNothingAndNoFramesStillCountAsSent) {
    auto handler = Make();
    generator->status = kStatusBadValue;
    EXPECT_FALSE(handler->SetCurrentPreset());
    EXPECT_TRUE(sender->sent.empty());

    generator->status = kStatusOk;
    generator->frames.clear();
    ASSERT_TRUE(handler->SetCurrentPreset());
    EXPECT_FALSE(generator->calls.back().onlyChanged);
    ASSERT_TRUE(handler->SetCurrentPreset());
    EXPECT_TRUE(generator->calls.back().onlyChanged);
    EXPECT_TRUE(sender->sent.empty());
}

TEST_F(Hifi3zHandlerTest, WithoutTheDifferentialGeneratorNothingIsSent) {
    test::LogCapture capture;
    auto handler = Make(std::make_shared<test::BareGenerator>());
    EXPECT_EQ(capture.Count("m_pSetParameterArrayBufferGeneratorV2 should not be null"), 1u);
    EXPECT_FALSE(handler->SetCurrentPreset());
    EXPECT_FALSE(handler->SetEnable(false));
    EXPECT_EQ(capture.Count("m_pSetParameterArrayBufferGeneratorV2 should not be null"), 3u);
    EXPECT_TRUE(sender->sent.empty());
}

TEST_F(Hifi3zHandlerTest, LogLinesNameTheHifi3zHandler) {
    auto handler = Make();
    EXPECT_EQ(handler->GetDescriptionString(), "Hifi3zControlHandler[sm=2;om=1;ROUTE=spk;] :");
    test::LogCapture capture;
    ASSERT_TRUE(handler->SetCurrentPreset());
    EXPECT_TRUE(
        capture.Has(1,
                    "Hifi3zControlHandler[sm=2;om=1;ROUTE=spk;] : SetParametersArrayCommandImpl "
                    "num_parameters = 2"));
}

}  // namespace
}  // namespace TesselFX
