#pragma once

#include "log/StdLog.h"

namespace TesselFX {

class StderrLog : public StdLog {
  public:
    StderrLog() : StdLog("STDERR_LOG", stderr) {}
};

}  // namespace TesselFX
