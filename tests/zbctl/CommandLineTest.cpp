#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <sstream>

#include "ZbctlTestSupport.h"

namespace TesselFX {
namespace zbctl {
namespace {

const std::string kUsageHint = "zbctl --help, or --help after a subcommand, shows the options\n";
const std::string kExampleInput = std::string(ZBCTL_BUILD_EXAMPLES_DIR) + "/example_input.wav";

// Every "{dir}" in text replaced by dir.
std::string Expand(std::string text, const std::string& dir) {
    for (size_t at; (at = text.find("{dir}")) != std::string::npos;) text.replace(at, 5, dir);
    return text;
}

// Standard error with the library's log lines as "TAG LEVEL text": without liblog's date,
// time, process and thread, and without the source position lines ("file:line, ") that open
// each error.
std::string WithoutLogStamps(const std::string& err) {
    std::string text;
    std::istringstream lines(err);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string tag, level, date, time, process, thread, rest;
        words >> tag >> level >> date >> time >> process >> thread;
        std::getline(words >> std::ws, rest);
        const bool logged = level.size() == 1 && date.size() == 5 && date[2] == '-' &&
                            !thread.empty() &&
                            thread.find_first_not_of("0123456789") == std::string::npos;
        if (!logged) {
            text += line + "\n";
        } else if (rest.size() < 2 || rest.compare(rest.size() - 2, 2, ", ") != 0) {
            text += tag + " " + level + " " + rest + "\n";
        }
    }
    return text;
}

// A folder with the inputs that the rows below name.
class CommandLine : public ::testing::Test {
  protected:
    CommandLine() {
        m_dir.Write("p.json", R"({"presets": [{"output_mode": 1, "sound_mode": 1, "name": "P"}]})");
        m_dir.Write("bad.json", R"({"presets": [{"output_mode": 1}]})");
        m_dir.Write("bad.scenario", "set_active 1 1\n# fine so far\nset_volume\n");
        // id 31, source 0, -20 (0xC034000000000000): a notification as a device logs it.
        m_dir.Write("n.txt", "  dsp_instance=0;tessel_data=HwAAAAAAAAAAAAAAAAA0wA==\r\n");
        std::filesystem::create_symlink(m_dir.Path("p.json"), m_dir.Path("link.json"));
        std::filesystem::create_symlink(kExampleInput, m_dir.Path("in.wav"));
        m_dir.Write("cut.zps", "BPBZ");
        m_dir.Write("nothing.zps", std::string("BPBZ\x08\0\0\0", 8));
        // A section that claims 9 bytes where 0 follow.
        m_dir.Write("past.zps", std::string("BPBZ\x0D\0\0\0\x09\0\0\0\x03", 13));
        // An unknown section, skipped by its size counted behind the id byte as the library
        // does, then three bytes; a total size above the real one.
        m_dir.Write("skip.zps", std::string("BPBZ\x12\0\0\0\x02\0\0\0\x09\xAA\xBB\x03\0\0", 18));
        m_dir.Write("long.zps", std::string("BPBZ\x09\0\0\0", 8));
        // Five empty sections of id 0, then one byte: what a file of zeros reads as.
        m_dir.Write("zeros.zps", "BPBZ" + std::string("\x22\0\0\0", 4) + std::string(26, '\0'));
    }

    test::TempDir m_dir;
    const std::string m_root = m_dir.Path("").substr(0, m_dir.Path("").size() - 1);
    // Under a file size limit, a --coverage build's profile data goes here, cut short, rather
    // than into the build's own files.
    const std::string m_profileAside = "export GCOV_PREFIX=" + m_dir.Path("profile") + "; ";
};

TEST_F(CommandLine, ExitStatusAndMessages) {
    struct Row {
        std::string arguments;
        int status;
        std::string err;
        std::string out = "";  // compared when given
    };
    const std::vector<Row> rows = {
        // Usage errors: 2, whatever the subcommand.
        {"", 2,
         "zbctl: a subcommand is needed: run, serve, zps, check-config, tone, msg\n" + kUsageHint},
        {"bogus", 2,
         "zbctl: unknown subcommand \"bogus\"; the subcommands are run, serve, zps, check-config, "
         "tone, msg\n" +
             kUsageHint},
        {"zps", 2, "zbctl: zps needs a subcommand: build, dump\n" + kUsageHint},
        {"-v zps bogus", 2,
         "zbctl: unknown subcommand \"bogus\" of zps; the subcommands are build, dump\n" +
             kUsageHint},
        {"run --bogus", 2,
         "zbctl: The following argument was not expected: --bogus\n" + kUsageHint},
        {"run --output {dir}/o.wav", 2, "zbctl: --output requires --input\n" + kUsageHint},
        {"run --input {dir}/in.wav", 2, "zbctl: --input requires --output\n" + kUsageHint},
        {"run --input " + kExampleInput + " --output {dir}/in.wav", 2,
         "zbctl: the output {dir}/in.wav is the input " + kExampleInput +
             ": writing it would destroy what is read\n"},
        {"run --dspkit ''", 2, "zbctl: no DSP library: give --dspkit\n"},
        {"run --dspkit '/a b.so'", 2,
         "zbctl: the DSP library path must not hold white space: /a b.so\n"},
        {"serve --listen 127.0.0.1", 2, "zbctl: --listen takes ADDR:PORT, not \"127.0.0.1\"\n"},
        {"serve --listen localhost:0", 2, "zbctl: --listen: \"localhost\" is not an IP address\n"},
        {"serve --listen 127.0.0.1:65536", 2,
         "zbctl: \"65536\" is not a whole number from 0 to 65535; usage: --listen ADDR:PORT\n"},
        {"zps build {dir}/p.json {dir}/link.json", 2,
         "zbctl: the output {dir}/link.json is the input {dir}/p.json: writing it would destroy "
         "what is read\n"},
        {"tone {dir}/t.wav --channels 0", 2,
         "zbctl: --channels: Value 0 not in range 1 to 8\n" + kUsageHint},
        {"tone {dir}/t.wav --rate 7999", 2,
         "zbctl: --rate: Value 7999 not in range 8000 to 384000\n" + kUsageHint},
        {"tone {dir}/t.wav --seconds 0", 2,
         "zbctl: --seconds 0 is out of range: from 0.001 to 86400\n"},
        {"tone {dir}/t.wav --seconds nan", 2,
         "zbctl: --seconds nan is out of range: from 0.001 to 86400\n"},
        {"tone {dir}/t.wav --seconds 3600 --rate 384000", 2,
         "zbctl: --seconds 3600 at --rate 384000 on 2 channels makes 11059200000 bytes of "
         "samples; a WAV file holds 4 GiB\n"},
        {"msg encode --envelope x GetParameter 1", 2,
         "zbctl: Could not convert: --envelope = x\n" + kUsageHint},
        {"msg encode SetParameter 131", 2, "zbctl: too few fields; usage: SetParameter ID VALUE\n"},
        // The work failed: 1.
        // Of the library's log only the errors show.
        {"run --system-presets /nonexistent.zps", 1,
         "TESSEL_LOG_FXModule E open file (/nonexistent.zps) failed! 2, No such file or "
         "directory\n"
         "TESSEL_LOG_FXModule E load preset /nonexistent.zps  fail\n"},
        // An address of no interface of this machine: the set-up failed.
        {"serve --listen 192.0.2.1:0", 1,
         "zbctl: cannot listen on 192.0.2.1:0: Cannot assign requested address\n"},
        // A bad scenario line stops the run before the library is loaded: it logs nothing.
        {"run --scenario {dir}/bad.scenario", 1,
         "zbctl: {dir}/bad.scenario:3: set_volume takes 1 argument(s), 0 given; usage: "
         "set_volume LINEAR_VOLUME\n"},
        {"run --library /nonexistent/lib.so", 1,
         "zbctl: cannot load /nonexistent/lib.so: /nonexistent/lib.so: cannot open shared object "
         "file: No such file or directory\n"},
        {"run --library " + std::string(ZBCTL_DSPKIT_LIBRARY), 1,
         "zbctl: " + std::string(ZBCTL_DSPKIT_LIBRARY) +
             " lacks zb_create zb_destroy zb_initialize zb_set_enable zb_set_bypass zb_set_active "
             "zb_set_sound_mode zb_set_output_mode zb_set_volume zb_set_orientation "
             "zb_set_parameter zb_set_parameters_array zb_set_command zb_get_command "
             "zb_set_linklaws_value zb_wait_for_flush zb_flush zb_register_notifier zb_set_data "
             "zb_get_version zb_on_dsp_wakeup zb_is_feature_supported\n"},
        {"zps build /nonexistent.json {dir}/x.zps", 1,
         "zbctl: cannot read /nonexistent.json: No such file or directory\n"},
        {"zps build {dir}/p.json /dev/full", 1,
         "zbctl: cannot write /dev/full: No space left on device\n"},
        {"zps build {dir}/p.json {dir}", 1, "zbctl: cannot write {dir}: Is a directory\n"},
        {"zps build {dir}/p.json /nonexistent/x.zps", 1,
         "zbctl: cannot write /nonexistent/x.zps: No such file or directory\n"},
        {"zps build {dir}/bad.json {dir}/x.zps", 1,
         "zbctl: {dir}/bad.json: presets[0]: \"sound_mode\" is missing\n"},
        {"zps dump {dir}", 1, "zbctl: cannot read {dir}: Is a directory\n"},
        {"zps dump {dir}/bad.json", 1,
         "{dir}/bad.json: the library's reader refuses the file: read bpbz tag 0x1919951483 fail\n"
         "zbctl: {dir}/bad.json: not a preset file: the magic \"BPBZ\" is missing\n"},
        {"zps dump {dir}/cut.zps", 1,
         "zbctl: {dir}/cut.zps: the file ends before its total size: the library reads it as "
         "empty\n"},
        {"zps dump {dir}/nothing.zps", 1,
         "zbctl: {dir}/nothing.zps: the file holds no section: the library reads it as empty\n"},
        {"zps dump {dir}/past.zps", 1,
         "zbctl: {dir}/past.zps: section 3 at offset 8 reaches past the end: the library stops "
         "reading there\n"},
        {"zps dump {dir}/skip.zps", 1,
         "{dir}/skip.zps: warning: unknown section 9 at offset 8 skipped\n"
         "zbctl: {dir}/skip.zps: 3 bytes at offset 15 cannot hold a section header: the file is "
         "cut short there\n"},
        {"zps dump {dir}/long.zps", 1,
         "{dir}/long.zps: the library's reader refuses the file: size in zps 9 does not match the "
         "real size 8\n"
         "zbctl: {dir}/long.zps: size in file 9 is larger than the real size 8\n"},
        {"zps dump --json {dir}/zeros.zps", 1,
         "{dir}/zeros.zps: warning: unknown section 0 at offset 8 skipped\n"
         "{dir}/zeros.zps: warning: unknown section 0 at offset 13 skipped\n"
         "{dir}/zeros.zps: warning: unknown section 0 at offset 18 skipped\n"
         "{dir}/zeros.zps: warning: 2 more warnings of the kind \"unknown section\"\n"
         "zbctl: {dir}/zeros.zps: 1 byte at offset 33 cannot hold a section header: the file is "
         "cut short there\n"},
        {"check-config {dir}", 1, "zbctl: cannot read configuration {dir}: Is a directory\n"},
        {"check-config /nonexistent.ini", 1,
         "zbctl: cannot read configuration /nonexistent.ini: No such file or directory\n"},
        {"check-config " + std::string(ZBCTL_EXAMPLES_DIR) +
             "/example.ini --presets {dir}/bad.json",
         1, "zbctl: {dir}/bad.json: not a preset file: the magic \"BPBZ\" is missing\n"},
        {"msg decode ''", 1, "zbctl: not base64: the text is empty\n"},
        {"msg decode '!!'", 1, "zbctl: not base64: \"!!\"\n"},
        {"msg decode 'AQAAAIMAAAAAAAAAAAAMwA==garbage'", 1,
         "zbctl: not base64: \"garbage\" follows the base64 text at character 25\n"},
        {"msg decode 'LwAAAAEAAAA=;'", 1,
         "zbctl: not base64: \";\" follows the base64 text at character 13\n"},
        {"msg decode AAAAA", 1,
         "zbctl: not base64: 5 characters and 0 \"=\" do not make whole bytes\n"},
        {"msg decode LwAAAAEAAAA===", 1,
         "zbctl: not base64: 11 characters and 3 \"=\" do not make whole bytes\n"},
        {"msg decode 'dsp_instance=x;tessel_data=LwAAAAEAAAA='", 1,
         "zbctl: the envelope's instance \"x\" is not a number from 0 to 4294967295\n"},
        {"msg decode 'dsp_instance=4294967296;tessel_data=LwAAAAEAAAA='", 1,
         "zbctl: the envelope's instance \"4294967296\" is not a number from 0 to "
         "4294967295\n"},
        {"msg decode 'dsp_instance=1;tessel_data=LwAAAAEAAAA=x'", 1,
         "zbctl: not base64: \"x\" follows the base64 text at character 13\n"},
        {"msg decode 'dsp_instance=1;other=AAAA'", 1,
         "zbctl: not base64: \"_instance=1;othe...\" follows the base64 text at character 4\n"},
        // The library's own reasons come first, as it logs them.
        {"msg decode AAAAAA==", 1,
         "TESSEL_LOG_FXModule E invalid id 0\n"
         "zbctl: not a message: fewer than 4 bytes or an invalid id\n"},
        {"run --input /nonexistent.wav --output {dir}/o.wav", 1,
         "zbctl: cannot read audio /nonexistent.wav: System error : No such file or directory.\n"},
        // msg decode takes the text from standard input and from a file, trims it, and escapes
        // what it prints: id 7, 6 bytes of text "a", ESC, "[2Jb".
        {"msg decode - < {dir}/n.txt", 0, "", "instance 0: UpdateLinkLawsSourceParameter 0 -20\n"},
        {"msg decode @{dir}/n.txt", 0, "", "instance 0: UpdateLinkLawsSourceParameter 0 -20\n"},
        {"msg decode ' AQAAAIMAAAAAAAAAAAAMwA==\n'", 0, "", "SetParameter 131 -3.5\n"},
        {"msg decode BwAAAAYAAABhG1sySmI=", 0, "", "GetVersion a\\x1b[2Jb\n"},
        // msg encode writes the bytes of the wire: id 1, parameter 131, -3.5 as a
        // little-endian double (0xC00C000000000000); id 47, 1.
        {"msg encode SetParameter 131 -3.5", 0, "", "AQAAAIMAAAAAAAAAAAAMwA==\n"},
        {"msg encode StartTuningMode 1", 0, "", "LwAAAAEAAAA=\n"},
        {"msg encode --envelope 2 StartTuningMode 1", 0, "",
         "dsp_instance=2;tessel_data=LwAAAAEAAAA=\n"},
        {"msg decode @/nonexistent", 1,
         "zbctl: cannot read /nonexistent: No such file or directory\n"},
    };
    for (const Row& row : rows) {
        const test::CommandResult result = test::RunZbctl(Expand(row.arguments, m_root));
        EXPECT_EQ(result.status, row.status) << row.arguments;
        EXPECT_EQ(WithoutLogStamps(result.err), Expand(row.err, m_root)) << row.arguments;
        if (!row.out.empty()) {
            EXPECT_EQ(result.out, row.out) << row.arguments;
        }
    }
}

TEST_F(CommandLine, TheLibrarysLogIsHeldBackUnlessVerbose) {
    const test::CommandResult quiet = test::RunZbctl("run");
    ASSERT_EQ(quiet.status, 0);
    const std::string kHeldBack =
        " lines of the library's log held back (warnings and below); -v shows them\n";
    ASSERT_GT(quiet.err.size(), 7 + kHeldBack.size());
    const std::string count = quiet.err.substr(7, quiet.err.size() - 7 - kHeldBack.size());
    EXPECT_EQ(quiet.err, "zbctl: " + count + kHeldBack);
    EXPECT_EQ(count.find_first_not_of("0123456789"), std::string::npos) << count;
    // -v shows those lines instead, wherever it stands.
    for (const char* arguments : {"-v run", "run -v", "run --verbose"}) {
        const test::CommandResult verbose = test::RunZbctl(arguments);
        EXPECT_EQ(verbose.status, 0);
        EXPECT_EQ(verbose.out, quiet.out);
        EXPECT_EQ(std::to_string(std::count(verbose.err.begin(), verbose.err.end(), '\n')), count)
            << verbose.err;
        EXPECT_EQ(verbose.err.find("held back"), std::string::npos);
    }
}

TEST_F(CommandLine, OutputsAreWrittenWholeOrNotAtAll) {
    std::string parameters;
    for (int id = 0; id < 4000; ++id)
        parameters += (id ? ", \"" : "\"") + std::to_string(id) + "\": 1";
    m_dir.Write("big.json", R"({"presets": [{"output_mode": 1, "sound_mode": 1, "name": "P",
                                "parameters": {)" +
                                parameters + R"(}},
                               {"output_mode": 2, "sound_mode": 1, "name": "Q",
                                "parameters": {)" +
                                parameters + "}}]}");
    const std::string scenario = m_dir.Write("s.scenario", "set_volume 0.5\n");
    // Each command writes more than the 32 KiB (or 64 KiB) that the file size limit lets
    // through: 64 blocks of the shell.
    for (const std::string& command : std::vector<std::string>{
             "tone {dir}/out/file", "zps build {dir}/big.json {dir}/out/file",
             "run --library " + std::string(ZBCTL_FAKE_HAL) + " --scenario " + scenario +
                 " --input " + kExampleInput + " --output {dir}/out/file"}) {
        std::filesystem::create_directory(m_dir.Path("out"));
        const std::string target = m_dir.Write("out/file", "previous");
        chmod(target.c_str(), 0640);
        const test::CommandResult cut = test::RunZbctl(
            Expand(command, m_root), "ulimit -f 64; trap '' XFSZ; " + m_profileAside);
        EXPECT_EQ(cut.status, 1) << command;
        EXPECT_EQ(cut.err, "zbctl: cannot write " + target + ": File too large\n") << command;
        EXPECT_EQ(test::ReadFile(target), "previous") << command;
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_dir.Path("out")), {}), 1)
            << command << ": the temporary file is left behind";

        EXPECT_EQ(test::RunZbctl(Expand(command, m_root)).status, 0) << command;
        EXPECT_NE(test::ReadFile(target), "previous") << command;
        struct stat status {};
        stat(target.c_str(), &status);
        EXPECT_EQ(status.st_mode & 07777, 0640u) << command;  // the file keeps its permissions
        std::filesystem::remove_all(m_dir.Path("out"));
    }
    // The copy of the configuration that run gives the library is checked as well.
    const test::CommandResult config =
        test::RunZbctl("run --library " + std::string(ZBCTL_FAKE_HAL) + " --scenario " + scenario,
                       "ulimit -f 1; trap '' XFSZ; " + m_profileAside);
    EXPECT_EQ(config.status, 1);
    const std::string name = config.err.substr(0, config.err.find(": File too large\n"));
    EXPECT_EQ(config.err, name + ": File too large\n");
    EXPECT_EQ(name.rfind("zbctl: cannot write /"), 0u);
    EXPECT_NE(name.find("/zbctl-config-"), std::string::npos) << config.err;
}

TEST_F(CommandLine, ToneWritesTheSameBytesEveryTime) {
    // 8 frames at 8000 Hz, mono 32-bit float, faded in and out: the first and last samples are 0.
    const std::string header = std::string("RIFF\x68\0\0\0WAVEfmt \x10\0\0\0\x03\0\x01\0", 24) +
                               std::string("\x40\x1f\0\0\0\x7d\0\0\x04\0\x20\0", 12) +
                               std::string("fact\x04\0\0\0\x08\0\0\0PAD \x10\0\0\0", 20) +
                               std::string(16, '\0') + std::string("data\x20\0\0\0\0\0\0\0", 12);
    const std::string command =
        "tone " + m_dir.Path("t.wav") + " --seconds 0.001 --rate 8000 --channels 1";
    ASSERT_EQ(test::RunZbctl(command).status, 0);
    const std::string first = test::ReadFile(m_dir.Path("t.wav"));
    ASSERT_EQ(first.size(), 112u);
    EXPECT_EQ(first.substr(0, header.size()), header);
    EXPECT_EQ(first.substr(108), std::string(4, '\0'));
    ASSERT_EQ(test::RunZbctl(command).status, 0);
    EXPECT_EQ(test::ReadFile(m_dir.Path("t.wav")), first);
}

}  // namespace
}  // namespace zbctl
}  // namespace TesselFX
