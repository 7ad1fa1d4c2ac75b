#pragma once

namespace TesselFX {

/// Told by a super preset of its changes, synchronously inside the changing call.
class IPresetChangeListener {
  public:
    virtual ~IPresetChangeListener() = default;
    virtual void OnAllChanged() = 0;
    virtual void OnParametersChanged() = 0;
    virtual void OnIdentityChanged() = 0;
    virtual void OnChunksChanged() = 0;
    virtual void OnLinkLawsChanged() = 0;
};

}  // namespace TesselFX
