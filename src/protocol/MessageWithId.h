#pragma once

#include <cstdint>

namespace TesselFX {

/// A message of the catalogue: a value-type base and the id it travels under. It adds nothing
/// else; its constructors are the base's.
template <typename Base, uint32_t Id>
class MessageWithId : public Base {
  public:
    static constexpr uint32_t kId = Id;
    using Base::Base;
    uint32_t GetId() const override { return Id; }
};

}  // namespace TesselFX
