// zbctl serve through real TCP connections on the loopback interface.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <thread>

#include "MessageCatalog.h"
#include "ZbctlTestSupport.h"
#include "protocol/Base64.h"
#include "protocol/FullPresetMessages.h"
#include "protocol/MultipleMessageData.h"

namespace TesselFX {
namespace zbctl {
namespace {

constexpr int kWaitSeconds = 60;  // for anything that should take milliseconds
constexpr size_t kMaxLine = 4 * 1024 * 1024;
using Lines = std::vector<std::string>;

// zbctl serve on 127.0.0.1, port 0, with its standard error in Log() and its temporary files
// in a folder of its own.
class ServeProcess {
  public:
    explicit ServeProcess(const std::string& arguments = "") {
        std::filesystem::create_directory(m_dir.Path("tmp"));
        // The shell tells its pid and becomes zbctl, whose first line is the address.
        m_out = popen(("echo $$; TMPDIR=" + m_dir.Path("tmp") + " exec " + ZBCTL_BINARY +
                       " serve --listen 127.0.0.1:0 " + arguments + " 2>" + m_dir.Path("log"))
                          .c_str(),
                      "r");
        m_pid = std::atoi(Line().c_str());
        const std::string address = Line();
        if (address.rfind("127.0.0.1:", 0) == 0) m_port = std::atoi(address.c_str() + 10);
    }
    ~ServeProcess() {
        if (m_pid > 0 && kill(m_pid, SIGKILL) == 0) waitpid(m_pid, nullptr, 0);
        pclose(m_out);
    }

    uint16_t Port() const { return static_cast<uint16_t>(m_port); }
    std::string Log() const { return test::ReadFile(m_dir.Path("log")); }
    bool Logged(const std::string& text) const { return Log().find(text) != std::string::npos; }
    bool TemporaryFilesLeft() const { return !std::filesystem::is_empty(m_dir.Path("tmp")); }

    /// Sends signal; the exit status, or -1 when it did not exit by itself in time.
    int Stop(int signal) {
        if (m_pid > 0) kill(m_pid, signal);
        int status = 0;
        for (int i = 0; i < kWaitSeconds * 100 && m_pid > 0; ++i) {
            if (waitpid(m_pid, &status, WNOHANG) == m_pid) m_pid = -1;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return m_pid < 0 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    std::string Line() {
        std::string line;
        pollfd ready{m_out ? fileno(m_out) : -1, POLLIN, 0};
        for (char c = 0;
             poll(&ready, 1, kWaitSeconds * 1000) == 1 && read(ready.fd, &c, 1) == 1 && c != '\n';)
            line += c;
        return line;
    }

    test::TempDir m_dir;
    FILE* m_out = nullptr;
    pid_t m_pid = -1;
    int m_port = 0;
};

// A blocking TCP client whose reads give up after kWaitSeconds.
class Client {
  public:
    explicit Client(uint16_t port, int receiveBuffer = 0) : m_fd(socket(AF_INET, SOCK_STREAM, 0)) {
        // Before connect, so that the window is small from the start.
        if (receiveBuffer > 0)
            setsockopt(m_fd, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof(receiveBuffer));
        timeval timeout{kWaitSeconds, 0};
        setsockopt(m_fd, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof(timeout));
        setsockopt(m_fd, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof(timeout));
        sockaddr_in address{AF_INET, htons(port), {htonl(INADDR_LOOPBACK)}, {}};
        connect(m_fd, reinterpret_cast<sockaddr*>(&address), sizeof(address));
    }
    ~Client() { close(m_fd); }

    /// Blocking: all of bytes, unless the time runs out.
    bool Send(const std::string& bytes) {
        return send(m_fd, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(bytes.size());
    }
    /// The next line without its end; "<closed>" at the end of the stream or on a timeout.
    std::string Line() {
        size_t end;
        while ((end = m_buffer.find('\n')) == std::string::npos) {
            char chunk[65536];
            const ssize_t n = recv(m_fd, chunk, sizeof(chunk), 0);
            if (n <= 0) return "<closed>";
            m_buffer.append(chunk, static_cast<size_t>(n));
        }
        const std::string line = m_buffer.substr(0, end);
        m_buffer.erase(0, end + 1);
        return line;
    }
    /// Sends request and returns the lines up to and with its answer.
    Lines Ask(const std::string& request) {
        Lines lines;
        if (!Send(request + "\n")) return {"<not sent>"};
        do {
            lines.push_back(Line());
        } while (lines.back().rfind("frame ", 0) == 0 || lines.back().rfind("notify ", 0) == 0);
        return lines;
    }
    void ShutdownSending() { shutdown(m_fd, SHUT_WR); }
    /// Closes with a reset instead of an orderly close.
    void Reset() {
        linger abort{1, 0};
        setsockopt(m_fd, SOL_SOCKET, SO_LINGER, &abort, sizeof(abort));
    }

  private:
    int m_fd;
    std::string m_buffer;
};

std::string Text(const std::string& message, const std::vector<std::string>& fields) {
    return Base64::Encode(MessageCatalog::Encode(message, fields));
}

class Serve : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_NE(m_server.Port(), 0) << m_server.Log(); }
    /// Stops the server with signal: exit status 0, the handle destroyed, no temporary file
    /// left.
    void ExpectCleanStop(int signal) {
        EXPECT_EQ(m_server.Stop(signal), 0);
        EXPECT_TRUE(
            m_server.Logged("serve: signal " + std::to_string(signal) + ", stopping\nzb_destroy\n"))
            << m_server.Log();
        EXPECT_FALSE(m_server.TemporaryFilesLeft());
    }
    ServeProcess m_server;
};

TEST_F(Serve, TuningSession) {
    Client tool(m_server.Port());
    EXPECT_EQ(tool.Ask("frames on"), Lines{"ok"});
    EXPECT_EQ(tool.Ask("subscribe 0"), Lines{"ok"});
    EXPECT_EQ(tool.Ask("set 0 LwAAAAEAAAA="), Lines{"ok"});  // StartTuningMode 1
    // SetParameter 131 -3: the DSP's first frame sets every block. SetParameter 131 -3.5 then
    // changes one block; GetParameter 131 reads it back.
    EXPECT_EQ(tool.Ask("set 0 AQAAAIMAAAAAAAAAAAAIwA=="),
              (Lines{"frame 0 1 276 1 2 3 4 10 4096 4272", "ok"}));
    EXPECT_EQ(tool.Ask("set 0 AQAAAIMAAAAAAAAAAAAMwA=="), (Lines{"frame 0 1 36 4", "ok"}));
    EXPECT_EQ(tool.Ask("get 0 CgAAAIMAAAA="), Lines{"reply AgAAAIMAAAAAAAAAAAAMwA=="});
    EXPECT_EQ(tool.Ask("get 0 CgAAAIMAAAA= 20"), Lines{"fail"});  // no room for the reply

    // 1500 more parameters make the full preset too long for one message: it comes as
    // notifications in pieces, the answer itself is empty.
    for (unsigned first : {1000u, 1750u}) {
        Lines fields;
        for (unsigned id = first; id < first + 750; ++id)
            fields.insert(fields.end(), {std::to_string(id), "0.5"});
        EXPECT_EQ(tool.Ask("set 0 " + Text("SetParameterArray", fields)).back(), "ok");
    }
    const Lines lines = tool.Ask("get 0 " + Text("GetFullPreset", {}));
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[2], "reply ");
    std::vector<std::vector<char>> pieces;
    for (size_t i = 0; i < 2; ++i)
        pieces.push_back(
            Base64::Decode(lines[i].substr(strlen("notify dsp_instance=0;tessel_data="))));
    std::vector<char> merged;
    ASSERT_TRUE(MultipleMessageData::MergeBuffers(pieces, merged));
    ReplyFullPresetMessageData reply;
    ASSERT_TRUE(reply.SetBuffer(merged.data(), static_cast<unsigned>(merged.size())));
    const std::map<unsigned, double> parameters = reply.GetFullPreset().parameters;
    EXPECT_EQ(parameters.size(), 15u + 1500u);  // the music preset's and the new ones
    EXPECT_EQ(parameters.at(131), -3.5);
    EXPECT_EQ(parameters.at(1000), 0.5);
    EXPECT_EQ(parameters.at(2499), 0.5);
    ExpectCleanStop(SIGTERM);
    EXPECT_EQ(tool.Line(), "<closed>");
}

TEST_F(Serve, NotificationsReachTheSubscribersOfTheirInstance) {
    Client first(m_server.Port());
    Client second(m_server.Port());
    Client other(m_server.Port());
    Client host(m_server.Port());
    // The first change of a link law source also sends the preset's parameters.
    EXPECT_EQ(host.Ask("linklaws_value 0 -10 0.5"), Lines{"= 1"});
    EXPECT_EQ(first.Ask("subscribe 0"), Lines{"ok"});
    EXPECT_EQ(second.Ask("subscribe 0"), Lines{"ok"});
    EXPECT_EQ(other.Ask("subscribe 1"), Lines{"ok"});
    EXPECT_EQ(other.Ask("subscribe 7"), Lines{"fail"});  // no control has instance 7
    EXPECT_EQ(host.Ask("linklaws_value 0 -20 0.5"), Lines{"= 1"});
    // UpdateLinkLawsSourceParameter 0 -20: id 31, source 0, the double -20.
    for (Client* client : {&first, &second}) {
        EXPECT_EQ(client->Ask("is_feature_supported HeadTracking"),
                  (Lines{"notify dsp_instance=0;tessel_data=HwAAAAAAAAAAAAAAAAA0wA==", "= 1"}));
    }
    EXPECT_EQ(other.Ask("is_feature_supported HeadTracking"), Lines{"= 1"});
    // Host calls go to the client's instance.
    EXPECT_EQ(host.Ask("frames on"), Lines{"ok"});
    EXPECT_EQ(host.Ask("instance 1"), Lines{"= 1"});
    EXPECT_EQ(host.Ask("set_bypass 1"), (Lines{"frame 1 1 148 1 4 10 4096", "= 1"}));
}

TEST_F(Serve, AnswersBadLinesAndStaysOpen) {
    Client client(m_server.Port());
    const struct {
        std::string line;
        std::string answer;
    } kCases[] = {
        {"  # a comment", "error empty line"},
        {std::string("set_volume 0.5\0", 15), "error the line holds a NUL byte"},
        {"reboot", "error unknown call \"reboot\""},
        {"set 0", "error set takes 2 argument(s), 1 given; usage: set INSTANCE BASE64"},
        {"set -1 LwAAAAEAAAA=",
         "error \"-1\" is not a whole number from 0 to 4294967295; usage: set INSTANCE BASE64"},
        {"get 0", "error get takes 2 or 3 argument(s), 1 given; usage: get INSTANCE BASE64 [ROOM]"},
        {"get 0 CgAAAIMAAAA= 4194305",
         "error \"4194305\" is not a whole number from 0 to 4194304; usage: get INSTANCE BASE64 "
         "[ROOM]"},
        {"set_volume loud", "error \"loud\" is not a number; usage: set_volume LINEAR_VOLUME"},
        // The library's own refusals.
        {"set 0 not-base64!", "fail"},
        {"get 0 CgAAAIMAAAA= 0", "fail"},
        {"set_volume -1", "= 0"},
        {"get_version halcontroller\r", "= 1 \"1.553.0.0\""},
    };
    for (const auto& c : kCases) EXPECT_EQ(client.Ask(c.line), Lines{c.answer}) << c.line;
}

// A line of the greatest length is served; one byte more, an abrupt close or a reset ends
// that client, and only it.
TEST_F(Serve, EndsOnlyTheClientThatFails) {
    Client watcher(m_server.Port());
    EXPECT_EQ(watcher.Ask("frames on"), Lines{"ok"});
    EXPECT_EQ(watcher.Ask("set 0 " + std::string(kMaxLine - 6, 'A')), Lines{"fail"});
    Client(m_server.Port()).Send(std::string(kMaxLine + 1, 'A'));
    // Clients that close in the middle of a line, reset in the middle of one, reset before
    // their answers are read.
    const Lines sent = {"set_bypass 1", "set_bypass 1", std::string(1000, '\n')};
    for (size_t i = 0; i < sent.size(); ++i) {
        Client client(m_server.Port());
        client.Send(sent[i]);
        if (i > 0) client.Reset();
    }
    // One that closes its sending side after whole lines still gets every answer, also those
    // that still wait in its queue: 8000 answers of 1022 bytes, short of the queue's bound
    // even when the kernel holds none of them, and more than it holds.
    Client halfClosed(m_server.Port(), 4096);
    const std::string word(1000, 'x');
    std::string requests;
    for (int i = 0; i < 8000; ++i) requests += word + "\n";
    halfClosed.Send(requests);
    halfClosed.ShutdownSending();
    int answers = 0;
    while (halfClosed.Line() == "error unknown call \"" + word + "\"") ++answers;
    EXPECT_EQ(answers, 8000);
    // No half line was served: no frame reached the DSP.
    EXPECT_EQ(watcher.Ask("is_feature_supported HeadTracking"), Lines{"= 1"});
    for (const char* line :
         {"client 2 dropped: a line longer than 4194304 bytes\n",
          "client 3 disconnected in the middle of a line\n", "client 4 disconnected",
          "client 5 disconnected", "client 6 disconnected\n"})
        EXPECT_TRUE(m_server.Logged(std::string("serve: ") + line)) << line << m_server.Log();
    ExpectCleanStop(SIGINT);
}

// A client that stops reading is dropped once 8 MiB wait for it; the others go on.
TEST(ServeLoad, AClientThatDoesNotReadIsDroppedAndHoldsNothingUp) {
    test::TempDir dir;
    // Two presets of 200 parameters: each switch between them sends every parameter.
    nlohmann::json json;
    for (int sound = 1; sound <= 2; ++sound) {
        nlohmann::json parameters;
        for (int id = 1000; id < 1200; ++id) parameters[std::to_string(id)] = sound;
        json["presets"].push_back(
            {{"output_mode", 1}, {"sound_mode", sound}, {"name", "P"}, {"parameters", parameters}});
    }
    const std::string presets = dir.Path("big.zps");
    ASSERT_EQ(
        test::RunZbctl("zps build " + dir.Write("big.json", json.dump()) + " " + presets).status,
        0);
    ServeProcess server("--system-presets " + presets);
    ASSERT_NE(server.Port(), 0) << server.Log();

    // The first switch also sends the link law chunk.
    Client driver(server.Port());
    EXPECT_EQ(driver.Ask("set_active 1 2"), Lines{"= 1"});
    Client stalled(server.Port(), 4096);
    EXPECT_EQ(stalled.Ask("subscribe 0"), Lines{"ok"});
    EXPECT_EQ(stalled.Ask("frames on"), Lines{"ok"});
    Client reader(server.Port());
    EXPECT_EQ(reader.Ask("subscribe 0"), Lines{"ok"});
    EXPECT_EQ(reader.Ask("frames on"), Lines{"ok"});
    constexpr int kChanges = 10000;
    constexpr int kBatch = 100;
    size_t events = 0;
    size_t answers = 0;
    for (int batch = 0; batch < kChanges / kBatch; ++batch) {
        std::string requests;
        for (int i = 0; i < kBatch; ++i)
            requests += "set_active 1 " + std::to_string(1 + i % 2) + "\n";
        ASSERT_TRUE(driver.Send(requests));
        for (int i = 0; i < kBatch; ++i) answers += driver.Line() == "= 1";
        // The reader's answer comes after everything that the batch sent it.
        const Lines lines = reader.Ask("is_feature_supported HeadTracking");
        ASSERT_EQ(lines.back(), "= 1");
        events += lines.size() - 1;
    }
    EXPECT_EQ(answers, static_cast<size_t>(kChanges));
    EXPECT_EQ(events, 2u * kChanges);  // a frame and a notification each
    EXPECT_TRUE(
        server.Logged("serve: client 2 dropped: more than 8388608 bytes wait to be sent\n"));
    std::string line;
    for (int i = 0; i < 100000 && line != "<closed>"; ++i) line = stalled.Line();
    EXPECT_EQ(line, "<closed>");
    EXPECT_EQ(Client(server.Port()).Ask("get_version halcontroller"), Lines{"= 1 \"1.553.0.0\""});
}

}  // namespace
}  // namespace zbctl
}  // namespace TesselFX
