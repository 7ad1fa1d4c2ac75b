// libFuzzer's initialisation for the targets that need nothing else: the library's log is
// formatted and thrown away (FuzzLogSink).
#include "FuzzLogSink.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    TesselFX::fuzz::FuzzLogSink::Install();
    return 0;
}
