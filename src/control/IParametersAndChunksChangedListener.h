#pragma once

#include <map>
#include <vector>

#include "preset/ParameterMaps.h"

namespace TesselFX {

/// Told by a control handler when the parameter set or the chunks that it sends differ from
/// what it announced last. Called synchronously inside the changing call.
class IParametersAndChunksChangedListener {
  public:
    virtual ~IParametersAndChunksChangedListener() = default;
    virtual void OnParametersChanged(const std::map<unsigned int, double>& parameters) = 0;
    virtual void OnChunksChanged(const std::map<unsigned int, std::vector<char>>& chunks) = 0;
    /// OnParametersChanged with the parameters in flat storage, which a control handler keeps:
    /// a listener that only walks them in id order takes them without a map.
    virtual void OnParameterListChanged(const ParameterList& parameters) {
        OnParametersChanged(ToParameterMap(parameters));
    }
};

}  // namespace TesselFX
