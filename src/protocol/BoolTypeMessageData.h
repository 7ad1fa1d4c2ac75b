#pragma once

#include "protocol/UintTypeMessageData.h"

namespace TesselFX {

/// A flag carried as a u32: written as 1 or 0, read as true only for exactly 1.
class BoolTypeMessageData : public UintTypeMessageData {
  public:
    BoolTypeMessageData() = default;
    explicit BoolTypeMessageData(bool value) : UintTypeMessageData(value ? 1 : 0) {}

    virtual bool GetValue() const { return GetUintValue() == 1; }
};

}  // namespace TesselFX
