#include "Server.h"

#include <charconv>
#include <csignal>

#include "Printable.h"
#include "Scenario.h"
#include "ZbctlError.h"
#include "protocol/ZbAocTuningProtocol.h"

namespace TesselFX {
namespace zbctl {

namespace {

// A decimal number from 0 to most, or ZbctlError.
uint32_t Number(const std::string& word, uint32_t most, const std::string& usage) {
    uint32_t value = 0;
    const char* end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, value);
    if (error != std::errc() || stop != end || value > most) {
        throw ZbctlError("\"" + word + "\" is not a whole number from 0 to " +
                         std::to_string(most) + "; usage: " + usage);
    }
    return value;
}

// Checks that a request has from least to most words after its first.
void Arity(const std::vector<std::string>& words, size_t least, size_t most,
           const std::string& usage) {
    const size_t given = words.size() - 1;
    if (given >= least && given <= most) return;
    const std::string wanted =
        std::to_string(least) + (most == least ? "" : " or " + std::to_string(most));
    throw ZbctlError(words[0] + " takes " + wanted + " argument(s), " + std::to_string(given) +
                     " given; usage: " + usage);
}

// The instance that a notification text names first ("dsp_instance=N;..."), if it does.
bool NamedInstance(const std::string& text, uint32_t& instance) {
    static const std::string kKey = std::string(ZbAocTuningProtocol::kDspInstanceKey) + "=";
    if (text.compare(0, kKey.size(), kKey) != 0) return false;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + kKey.size(), end, instance);
    return error == std::errc() && stop != end && *stop == ';';
}

}  // namespace

Server::Server(HalHost& host, const std::string& listen, std::ostream& log)
    : m_host(host), m_log(log), m_acceptor(m_io), m_signals(m_io, SIGINT, SIGTERM), m_retry(m_io) {
    // A log line to a closed pipe fails instead of ending the server.
    std::signal(SIGPIPE, SIG_IGN);
    const size_t colon = listen.rfind(':');
    if (colon == std::string::npos) {
        throw UsageError("--listen takes ADDR:PORT, not \"" + listen + "\"");
    }
    std::string address = listen.substr(0, colon);
    if (address.size() > 2 && address.front() == '[' && address.back() == ']') {
        address = address.substr(1, address.size() - 2);
    }
    asio::error_code error;
    const asio::ip::address ip = asio::ip::make_address(address, error);
    if (error) throw UsageError("--listen: \"" + address + "\" is not an IP address");
    uint16_t port = 0;
    try {
        port = static_cast<uint16_t>(Number(listen.substr(colon + 1), 65535, "--listen ADDR:PORT"));
    } catch (const ZbctlError& e) {
        throw UsageError(e.what());
    }
    const asio::ip::tcp::endpoint endpoint(ip, port);
    m_acceptor.open(endpoint.protocol(), error);
    if (!error) m_acceptor.set_option(asio::socket_base::reuse_address(true), error);
    if (!error) m_acceptor.bind(endpoint, error);
    if (!error) m_acceptor.listen(asio::socket_base::max_listen_connections, error);
    if (error) throw ZbctlError("cannot listen on " + listen + ": " + error.message());
}

Server::~Server() { m_host.SetListener(nullptr); }

void Server::Run(std::ostream& out) {
    m_host.SetListener(this);
    m_signals.async_wait([this](const asio::error_code& error, int signal) {
        if (error) return;
        m_log << "serve: signal " << signal << ", stopping" << std::endl;
        m_io.stop();
    });
    Accept();
    out << m_acceptor.local_endpoint() << std::endl;
    m_io.run();
    for (const std::shared_ptr<ServeClient>& client : m_clients) client->End("");
    m_clients.clear();
    m_host.SetListener(nullptr);
}

void Server::Accept() {
    m_acceptor.async_accept([this](const asio::error_code& error, asio::ip::tcp::socket socket) {
        if (error == asio::error::operation_aborted) return;
        if (error) {
            // Out of descriptors, say: the clients that are there go on, and a new one is
            // taken a little later.
            m_log << "serve: accept failed (" << error.message() << ")" << std::endl;
            m_retry.expires_after(std::chrono::milliseconds(100));
            m_retry.async_wait([this](const asio::error_code& stopped) {
                if (!stopped) Accept();
            });
            return;
        }
        // Answers leave at once; what a client has not read waits in its own queue, where it
        // counts, more than in the kernel.
        asio::error_code ignored;
        socket.set_option(asio::ip::tcp::no_delay(true), ignored);
        socket.set_option(asio::socket_base::send_buffer_size(kSendBuffer), ignored);
        IOwner& owner = *this;
        auto client = std::make_shared<ServeClient>(std::move(socket), m_nextId++, owner, m_log);
        m_clients.insert(client);
        client->Start();
        Accept();
    });
}

void Server::Ended(ServeClient& client) { m_clients.erase(client.shared_from_this()); }

std::string Server::Serve(ServeClient& client, const std::string& line) {
    try {
        if (line.find('\0') != std::string::npos) throw ZbctlError("the line holds a NUL byte");
        const std::vector<std::string> words = ScenarioWords(line);
        if (words.empty()) throw ZbctlError("empty line");
        return Answer(client.Protocol(), words);
    } catch (const std::exception& e) {  // ZbctlError for a bad request; anything else too
        return std::string("error ") + e.what();
    }
}

std::string Server::Answer(ServeClient::State& state, const std::vector<std::string>& words) {
    const std::string& request = words[0];
    if (request == "set") {
        const std::string usage = "set INSTANCE BASE64";
        Arity(words, 2, 2, usage);
        return m_host.SetCommand(Number(words[1], UINT32_MAX, usage), words[2]) ? "ok" : "fail";
    }
    if (request == "get") {
        const std::string usage = "get INSTANCE BASE64 [ROOM]";
        Arity(words, 2, 3, usage);
        const uint32_t instance = Number(words[1], UINT32_MAX, usage);
        const uint32_t room =
            words.size() == 4 ? Number(words[3], ServeClient::kMaxLine, usage) : kDefaultReplyRoom;
        std::string reply;
        if (!m_host.GetCommand(instance, words[2], room, reply)) return "fail";
        return "reply " + Printable(reply);
    }
    if (request == "frames") {
        Arity(words, 1, 1, "frames on|off");
        if (words[1] != "on" && words[1] != "off") {
            throw ZbctlError("\"" + words[1] + "\" is not on or off; usage: frames on|off");
        }
        state.frames = words[1] == "on";
        return "ok";
    }
    if (request == "subscribe") {
        const std::string usage = "subscribe INSTANCE";
        Arity(words, 1, 1, usage);
        const uint32_t instance = Number(words[1], UINT32_MAX, usage);
        if (m_notified.count(instance) == 0) {
            if (!m_host.RegisterNotifier(instance)) return "fail";
            m_notified.insert(instance);
        }
        state.subscribed.insert(instance);
        return "ok";
    }
    ScenarioStep step = ParseScenarioWords(words);
    if (step.call == ScenarioCall::kInstance) {
        state.instance = static_cast<uint32_t>(step.numbers[0]);
        return "= 1";
    }
    step.instance = state.instance;
    std::string version;
    const int result = m_host.Call(step, version);
    return "= " + std::to_string(result) +
           (version.empty() ? "" : " \"" + Printable(version) + "\"");
}

void Server::OnFrame(uint32_t instance, uint32_t size, const DspExchange& exchange, int) {
    std::string line = "frame " + std::to_string(instance) + " " + std::to_string(exchange.opcode) +
                       " " + std::to_string(size);
    for (uint32_t id : exchange.blockIds) line += " " + std::to_string(id);
    for (const std::shared_ptr<ServeClient>& client : m_clients) {
        if (client->Protocol().frames) client->Send(line);
    }
}

void Server::OnNotification(const std::string& text) {
    uint32_t instance = 0;
    const bool named = NamedInstance(text, instance);
    const std::string line = "notify " + text;
    for (const std::shared_ptr<ServeClient>& client : m_clients) {
        const std::set<uint32_t>& subscribed = client->Protocol().subscribed;
        if (named ? subscribed.count(instance) != 0 : !subscribed.empty()) client->Send(line);
    }
}

}  // namespace zbctl
}  // namespace TesselFX
