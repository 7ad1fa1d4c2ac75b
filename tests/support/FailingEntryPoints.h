#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

namespace TesselFX {
namespace test {

/// Makes the named entry points of the stand-in DSP library at DSPKIT_SIM_PATH (a
/// comma-separated list) fail with -77 for its lifetime. It holds the library loaded meanwhile,
/// so that whoever loads it by that path gets the same copy.
class FailingEntryPoints {
  public:
    explicit FailingEntryPoints(const char* names)
        : m_library(dlopen(DSPKIT_SIM_PATH, RTLD_NOW | RTLD_LOCAL)) {
        Set(names);
    }
    ~FailingEntryPoints() {
        Set(nullptr);
        if (m_library != nullptr) dlclose(m_library);
    }
    FailingEntryPoints(const FailingEntryPoints&) = delete;
    FailingEntryPoints& operator=(const FailingEntryPoints&) = delete;

  private:
    void Set(const char* names) {
        using SetFailures = void (*)(const char*);
        void* set = m_library != nullptr ? dlsym(m_library, "DspKitSim_SetFailures") : nullptr;
        if (set == nullptr) {
            ADD_FAILURE() << "no DspKitSim_SetFailures in " << DSPKIT_SIM_PATH;
            return;
        }
        reinterpret_cast<SetFailures>(set)(names);
    }

    void* m_library;
};

}  // namespace test
}  // namespace TesselFX
