#pragma once

namespace TesselFX {

/// Root of the generator family. The control handler holds one and obtains each
/// I...BufferGenerator from it by dynamic_cast; an absent interface makes the operation a
/// success without effect.
class IControlBufferGenerator {
  public:
    virtual ~IControlBufferGenerator() = default;
};

}  // namespace TesselFX
