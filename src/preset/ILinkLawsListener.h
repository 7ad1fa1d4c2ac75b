#pragma once

namespace TesselFX {

/// Told by LinkLaws after each change of its entries or sources. Not owned by LinkLaws.
class ILinkLawsListener {
  public:
    virtual ~ILinkLawsListener() = default;
    virtual void OnChanged() = 0;
};

}  // namespace TesselFX
