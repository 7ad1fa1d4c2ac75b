#pragma once

#include "log/StdLog.h"

namespace TesselFX {

class StdoutLog : public StdLog {
  public:
    StdoutLog() : StdLog("STDOUT_LOG", stdout) {}
};

}  // namespace TesselFX
