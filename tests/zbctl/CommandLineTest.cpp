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
        std::filesystem::create_symlink(m_dir.Path("p.json"), m_dir.Path("link.json"));
        std::filesystem::create_symlink(kExampleInput, m_dir.Path("in.wav"));
        m_dir.Write("cut.zps", "BPBZ");
        m_dir.Write("nothing.zps", std::string("BPBZ\x08\0\0\0", 8));
        // A section that claims 9 bytes where 0 follow.
        m_dir.Write("past.zps", std::string("BPBZ\x0D\0\0\0\x09\0\0\0\x03", 13));
        // Five empty sections of id 0, then one byte: what a file of zeros reads as.
        m_dir.Write("zeros.zps", "BPBZ" + std::string("\x22\0\0\0", 4) + std::string(26, '\0'));
    }

    test::TempDir m_dir;
    const std::string m_root = m_dir.Path("").substr(0, m_dir.Path("").size() - 1);
};

TEST_F(CommandLine, EveryFaultHasItsExitStatusAndMessage) {
    struct Row {
        std::string arguments;
        int status;
        std::string err;
    };
    const std::vector<Row> rows = {
        // Usage errors: 2, whatever the subcommand.
        {"", 2, "zbctl: a subcommand is needed: run, zps, check-config, tone, msg\n" + kUsageHint},
        {"bogus", 2,
         "zbctl: unknown subcommand \"bogus\"; the subcommands are run, zps, check-config, tone, "
         "msg\n" +
             kUsageHint},
        {"zps", 2, "zbctl: zps needs a subcommand: build, dump\n" + kUsageHint},
        {"-v zps bogus", 2,
         "zbctl: unknown subcommand \"bogus\" of zps; the subcommands are build, dump\n" +
             kUsageHint},
        {"run --bogus", 2,
         "zbctl: The following argument was not expected: --bogus\n" + kUsageHint},
        {"run --output {dir}/o.wav", 2, "zbctl: --output requires --input\n" + kUsageHint},
        {"run --input {dir}/in.wav", 2, "zbctl: --input requires --output\n" + kUsageHint},
        {"run --dspkit ''", 2, "zbctl: no DSP library: give --dspkit\n"},
        {"run --dspkit '/a b.so'", 2,
         "zbctl: the DSP library path must not hold white space: /a b.so\n"},
        {"tone {dir}/t.wav --channels 0", 2,
         "zbctl: --channels: Value 0 not in range 1 to 8\n" + kUsageHint},
        {"msg encode --envelope x GetParameter 1", 2,
         "zbctl: Could not convert: --envelope = x\n" + kUsageHint},
        {"msg encode SetParameter 131", 2, "zbctl: too few fields; usage: SetParameter ID VALUE\n"},
        // The work failed: 1.
        // Of the library's log only the errors show.
        {"run --system-presets /nonexistent.zps", 1,
         "TESSEL_LOG_FXModule E open file (/nonexistent.zps) failed! 2, No such file or "
         "directory\n"
         "TESSEL_LOG_FXModule E load preset /nonexistent.zps  fail\n"},
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
        {"zps build {dir}/bad.json {dir}/x.zps", 1,
         "zbctl: {dir}/bad.json: presets[0]: \"sound_mode\" is missing\n"},
        // The library's own reasons come first, as it logs them.
        {"msg decode AAAAAA==", 1,
         "TESSEL_LOG_FXModule E invalid id 0\n"
         "zbctl: not a message: fewer than 4 bytes or an invalid id\n"},
        {"run --input /nonexistent.wav --output {dir}/o.wav", 1,
         "zbctl: cannot read audio /nonexistent.wav: System error : No such file or directory.\n"},
    };
    for (const Row& row : rows) {
        const test::CommandResult result = test::RunZbctl(Expand(row.arguments, m_root));
        EXPECT_EQ(result.status, row.status) << row.arguments;
        EXPECT_EQ(WithoutLogStamps(result.err), Expand(row.err, m_root)) << row.arguments;
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

}  // namespace
}  // namespace zbctl
}  // namespace TesselFX
