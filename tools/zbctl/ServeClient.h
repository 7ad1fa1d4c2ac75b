#pragma once

#include <asio.hpp>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <ostream>
#include <set>
#include <string>

namespace TesselFX {
namespace zbctl {

/// One connection of zbctl serve: reads request lines and passes each to the owner, whose
/// answer it queues; the owner may queue further lines (frames, notifications) at any time.
/// Lines leave in the order they were queued. The queue is bounded: a line that would take it
/// past kMaxQueued bytes drops the client instead, so that a client that does not read never
/// holds anything up. A line longer than kMaxLine bytes, a read or write error or the peer's
/// close ends the client (once the answers to its whole lines are sent); so does End. Each end
/// is logged once; the owner's Ended follows from the event loop, never from inside Send or End.
///
/// Held by shared_ptr (its pending operations hold it too); lives on the thread that runs the
/// io_context and is not thread safe.
class ServeClient : public std::enable_shared_from_this<ServeClient> {
  public:
    static constexpr size_t kMaxLine = 4 * 1024 * 1024;    ///< bytes of a request, without \n
    static constexpr size_t kMaxQueued = 8 * 1024 * 1024;  ///< bytes waiting to be sent

    class IOwner {
      public:
        virtual ~IOwner() = default;
        /// Serves one request (without its line end) and returns the answer line, without
        /// line end.
        virtual std::string Serve(ServeClient& client, const std::string& line) = 0;
        /// The client has ended; it sends and reads nothing more.
        virtual void Ended(ServeClient& client) = 0;
    };

    /// What the protocol keeps of a client.
    struct State {
        uint32_t instance = 0;  ///< of host calls
        bool frames = false;
        std::set<uint32_t> subscribed;
    };

    ServeClient(asio::ip::tcp::socket socket, unsigned id, IOwner& owner, std::ostream& log);

    /// Logs the connection and starts reading.
    void Start();
    /// Queues text and a line end; nothing once the client has ended.
    void Send(const std::string& text);
    /// Ends the client with the log line "client ID WHY"; an empty why logs nothing.
    void End(const std::string& why);

    unsigned Id() const { return m_id; }
    State& Protocol() { return m_state; }

  private:
    void Read();
    void OnRead(const asio::error_code& error);
    void Write();

    asio::ip::tcp::socket m_socket;
    unsigned m_id;
    IOwner& m_owner;
    std::ostream& m_log;
    asio::streambuf m_input{kMaxLine + 1};
    std::string m_queued;     // lines not yet handed to the socket
    std::string m_writing;    // lines being written
    bool m_draining = false;  // the peer has closed after whole lines: end once all is sent
    bool m_ended = false;
    State m_state;
};

}  // namespace zbctl
}  // namespace TesselFX
