#pragma once

namespace TesselFX {

/// Told by a preset handle, synchronously inside the changing call, that its view changed.
/// The handle holds it as a plain pointer and does not own it.
class IPresetHandleListener {
  public:
    virtual ~IPresetHandleListener() = default;
    virtual void OnPresetHandleChanged(unsigned int om, unsigned int sm) = 0;
};

}  // namespace TesselFX
