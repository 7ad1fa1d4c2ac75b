#include "ServeClient.h"

#include <istream>

namespace TesselFX {
namespace zbctl {

ServeClient::ServeClient(asio::ip::tcp::socket socket, unsigned id, IOwner& owner,
                         std::ostream& log)
    : m_socket(std::move(socket)), m_id(id), m_owner(owner), m_log(log) {}

void ServeClient::Start() {
    asio::error_code error;
    m_log << "serve: client " << m_id << " connected from " << m_socket.remote_endpoint(error)
          << std::endl;
    Read();
}

void ServeClient::Read() {
    asio::async_read_until(m_socket, m_input, '\n',
                           [self = shared_from_this()](const asio::error_code& error, size_t) {
                               self->OnRead(error);
                           });
}

void ServeClient::OnRead(const asio::error_code& error) {
    if (m_ended) return;
    if (error == asio::error::not_found) {
        End("dropped: a line longer than " + std::to_string(kMaxLine) + " bytes");
        return;
    }
    if (error) {
        // A peer that closes after whole lines still gets the answers to them.
        if (error == asio::error::eof && m_input.size() == 0) {
            m_draining = true;
            if (m_writing.empty()) End("disconnected");
            return;
        }
        std::string why =
            m_input.size() == 0 ? "disconnected" : "disconnected in the middle of a line";
        if (error != asio::error::eof) why += " (" + error.message() + ")";
        End(why);
        return;
    }
    // read_until stopped at the first line end of the buffer: getline takes the line to it.
    std::string line;
    std::istream input(&m_input);
    std::getline(input, line);
    Send(m_owner.Serve(*this, line));
    if (!m_ended) Read();
}

void ServeClient::Send(const std::string& text) {
    if (m_ended) return;
    if (m_queued.size() + m_writing.size() + text.size() + 1 > kMaxQueued) {
        End("dropped: more than " + std::to_string(kMaxQueued) + " bytes wait to be sent");
        return;
    }
    m_queued += text;
    m_queued += '\n';
    if (m_writing.empty()) Write();
}

void ServeClient::Write() {
    m_writing.swap(m_queued);
    asio::async_write(m_socket, asio::buffer(m_writing),
                      [self = shared_from_this()](const asio::error_code& error, size_t) {
                          if (self->m_ended) return;
                          if (error) {
                              self->End("disconnected (" + error.message() + ")");
                              return;
                          }
                          self->m_writing.clear();
                          if (!self->m_queued.empty()) {
                              self->Write();
                          } else if (self->m_draining) {
                              self->End("disconnected");
                          }
                      });
}

void ServeClient::End(const std::string& why) {
    if (m_ended) return;
    m_ended = true;
    if (!why.empty()) m_log << "serve: client " << m_id << " " << why << std::endl;
    asio::error_code ignored;
    m_socket.close(ignored);
    m_queued.clear();
    asio::post(m_socket.get_executor(),
               [self = shared_from_this()] { self->m_owner.Ended(*self); });
}

}  // namespace zbctl
}  // namespace TesselFX
