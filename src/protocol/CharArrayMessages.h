#pragma once

#include "protocol/CharArrayTypeMessageData.h"

namespace TesselFX {

/// Id 7: asks for the version of a type ("dsp", "halcontroller", "dspkit"), the name in its
/// bytes (GetText).
class GetVersionMessageData : public CharArrayTypeMessageData {
  public:
    static constexpr uint32_t kId = 7;
    using CharArrayTypeMessageData::CharArrayTypeMessageData;
    uint32_t GetId() const override { return kId; }
};

/// Id 38: a version text, answering id 7.
class UpdateVersionMessageData : public CharArrayTypeMessageData {
  public:
    static constexpr uint32_t kId = 38;
    using CharArrayTypeMessageData::CharArrayTypeMessageData;
    uint32_t GetId() const override { return kId; }
    virtual std::string GetVersion() const { return GetText(); }
};

}  // namespace TesselFX
