#pragma once

#include <asio.hpp>
#include <cstdint>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "HalHost.h"
#include "ServeClient.h"

namespace TesselFX {
namespace zbctl {

/// zbctl serve: the library of a HalHost as a live tuning target on a TCP port. Each client
/// sends one request per line and gets one answer line per request, in order; between answers
/// it may get the frames that reach the simulated DSPs ("frames on") and the notifications of
/// the instances it subscribed to, each line whole.
///
/// One thread runs everything: the event loop, and in it every library call, one request at a
/// time in the order the requests arrive, so the library's callbacks run inside those calls on
/// that thread too. Nothing the server does waits for a client: lines go to each client's
/// bounded queue (ServeClient).
class Server : private ServeClient::IOwner, private HalHost::IListener {
  public:
    static constexpr uint32_t kDefaultReplyRoom = 64 * 1024;
    static constexpr int kSendBuffer = 256 * 1024;  ///< the kernel's buffer of each client

    /// Listens on listen, "ADDR:PORT" (port 0 picks a free one), and catches SIGINT and
    /// SIGTERM from now on. Throws UsageError when listen is not such an address, ZbctlError
    /// when it cannot be had (in use, not of this machine).
    Server(HalHost& host, const std::string& listen, std::ostream& log);
    ~Server() override;
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Writes the address it listens on to out, as "ADDR:PORT" on one line, then serves until
    /// SIGINT or SIGTERM, and returns with every client closed. The host's listener is this
    /// server meanwhile.
    void Run(std::ostream& out);

  private:
    std::string Serve(ServeClient& client, const std::string& line) override;
    void Ended(ServeClient& client) override;
    void OnFrame(uint32_t instance, uint32_t size, const DspExchange& exchange,
                 int status) override;
    void OnNotification(const std::string& text) override;

    /// The answer to a request; throws ZbctlError with the reason of an error answer.
    std::string Answer(ServeClient::State& state, const std::vector<std::string>& words);
    void Accept();

    HalHost& m_host;
    std::ostream& m_log;
    asio::io_context m_io;
    asio::ip::tcp::acceptor m_acceptor;
    asio::signal_set m_signals;
    asio::steady_timer m_retry;  // of an accept that failed
    std::set<std::shared_ptr<ServeClient>> m_clients;
    std::set<uint32_t> m_notified;  // instances with the server's notifier
    unsigned m_nextId = 1;
};

}  // namespace zbctl
}  // namespace TesselFX
