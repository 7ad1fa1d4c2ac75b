#pragma once

// The load that the stress test and the soak put on the library. Host threads call every
// exported function on two handles while buffer_sender and notifier re-enter the library: calls
// on their own handle and on the other one, the other handle's re-initialisation, destruction
// and re-creation, and the notifier's own removal. A tuning tool sends commands from a thread
// of its own. Each handle's buffer_sender feeds a DSP end, an effect of the stand-in DSP
// library, so that what the DSP holds can be checked against what a wake-up sends.

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <vector>

#include "../support/TempDir.h"

namespace stress_test {

constexpr uint32_t kInstance = 1;

/// The DSP side of one handle: each set-coefficients frame that reaches it is applied block by
/// block to its own effect of the stand-in DSP library (loaded with dlopen, never unloaded), and
/// the bytes of every applied block are kept by coefficient id. Thread safe.
class DspEnd {
  public:
    DspEnd();
    DspEnd(const DspEnd&) = delete;
    DspEnd& operator=(const DspEnd&) = delete;

    /// Serves one request of buffer_sender (at least 8 bytes) as a DSP does: applies a
    /// set-coefficients frame, answers get-meters and get-version into reply. Returns 0, or -1
    /// for a request it refuses, which is kept as a fault unless only the reply room was short.
    int Serve(const void* data, uint32_t size, void* reply, uint32_t* replySize);
    /// Forgets every block: the DSP of a handle that starts anew.
    void Reset();
    /// Starts collecting the blocks received from now on apart from the held ones.
    void StartCapture();
    /// The blocks received since StartCapture, by id; ends the capture.
    std::map<uint32_t, std::string> TakeCapture();
    std::map<uint32_t, std::string> Blocks() const;
    std::vector<std::string> Faults() const;

  private:
    mutable std::mutex m_mutex;
    std::vector<char> m_effect;  // the stand-in's effect record
    std::map<uint32_t, std::string> m_blocks;
    std::map<uint32_t, std::string> m_captured;
    bool m_capturing = false;
    std::vector<std::string> m_faults;
};

/// Two handles on one preset set and configuration, and what the callbacks count. A handle slot
/// is swapped atomically: whoever takes a handle out destroys it and puts the new one in; a
/// thread that reads an empty or stale slot calls with an invalid handle, which the library
/// refuses. Every handle of a slot starts with a wake-up, which gives its fresh DSP end the
/// whole model. The constructor makes both handles; the destructor destroys them.
struct Host {
    struct Slot {
        Slot(Host* owner, int slotIndex) : host(owner), index(slotIndex) {}
        /// True for a handle that is never destroyed, and initialised again only rarely.
        bool Lasts() const { return host->firstLasts && this == &host->slots[0]; }
        Host* host;
        int index;  // the other slot is slots[1 - index]
        std::atomic<void*> handle{nullptr};
        DspEnd dsp;
    };
    /// One in churnOneIn of the chances to re-create or re-initialise a handle is taken. With
    /// firstHandleLasts, the handle of slot 0 lasts, as a host's handle that lives for days:
    /// it is never re-created, initialised again 16 times more rarely, and gets no transfers
    /// in pieces.
    explicit Host(unsigned churnOneIn = 4, bool firstHandleLasts = false);
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    const unsigned churn;
    const bool firstLasts;
    TesselFX::test::TempDir dir;
    std::string presetPath;
    std::string configPath;
    Slot slots[2] = {{this, 0}, {this, 1}};
    /// The context of handles that one call makes and drops; its DSP end is never checked.
    Slot scratch{this, 0};
    /// Set, callbacks only count and feed the DSP ends: nothing re-enters.
    std::atomic<bool> quiet{false};
    std::atomic<unsigned> sends{0};
    std::atomic<unsigned> reentries{0};
    std::atomic<unsigned> recreations{0};
    std::atomic<unsigned> notifications{0};
    std::atomic<unsigned> sessions{0};  // session ids of the tool's transfers in pieces
};

/// One call of one of the exported functions on handle, chosen by choice; returns its name.
const char* CallOne(Host& host, void* handle, unsigned choice, std::minstd_rand& random);

/// One command of a tuning tool on the handle of slot, chosen by choice: tuning mode,
/// parameters, link laws, chunks, full presets, meters, transfers in pieces both ways. Returns
/// the message name.
const char* TuningCommand(Host& host, Host::Slot& slot, unsigned choice,
                          std::minstd_rand& random);

/// With every thread but the caller's stopped: ends any wait for flush on both handles, then a
/// wake-up of each must send exactly the blocks its DSP end holds, byte for byte. Returns one
/// line per fault (also a frame the DSP refused earlier); none when the state holds.
std::vector<std::string> CheckDspState(Host& host);

}  // namespace stress_test
