#pragma once

#include "log/TesselLogInterface.h"

namespace TesselFX {

/// Writes through Android's __android_log_print; timestamp, pid and tid are ignored.
/// Thread safety: that of liblog.
class AndroidLog : public TesselLogInterface {
  public:
    AndroidLog() : TesselLogInterface("ANDROID_LOG") {}
    void Print(const std::string& timestamp, uint32_t pid, uint32_t tid, uint32_t level,
               const std::string& tag, const std::string& text) override;
};

}  // namespace TesselFX
