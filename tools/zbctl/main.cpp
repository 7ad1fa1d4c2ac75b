// zbctl: try libzbhalcontroller on a desk machine. See `zbctl --help`.
//
// Every command exits with kExitSuccess, kExitFailure or kExitUsage (ZbctlError.h), shows
// only the error lines of the library's log unless -v is given (anywhere on the line), and
// writes its output files whole or not at all. A new command adds itself in an Add...Command
// function; one that sets the library up as `run` does takes AddSetupOptions.
#include <CLI/CLI.hpp>
#include <functional>
#include <iostream>
#include <memory>
#include <sstream>

#include "ConfigChecker.h"
#include "FileAccess.h"
#include "LibraryLog.h"
#include "MessageCatalog.h"
#include "Printable.h"
#include "ScenarioRunner.h"
#include "Server.h"
#include "WavFile.h"
#include "ZbctlError.h"
#include "ZpsBinary.h"
#include "ZpsJson.h"
#include "ZpsText.h"
#include "protocol/Base64.h"
#include "protocol/ZbAocTuningProtocol.h"

namespace {

using namespace TesselFX::zbctl;

/// A subcommand that does work, and the work; the work returns the exit status or throws.
struct Command {
    CLI::App* app;
    std::function<int()> run;
};

// The result of work; a ZbctlError that it throws is thrown again naming file first:
// "FILE: reason".
template <typename Work>
auto NamingFile(const std::string& file, Work work) -> decltype(work()) {
    try {
        return work();
    } catch (const ZbctlError& e) {
        throw ZbctlError(file + ": " + e.what());
    }
}

void PrintWarnings(const std::string& name, const WarningList& warnings) {
    for (const std::string& line : warnings.Lines())
        std::cerr << Printable(name + ": warning: " + line) << "\n";
}

int ZpsBuild(const std::string& source, const std::string& target) {
    RefuseOutputOverInputs(target, {source});
    const std::vector<char> text = ReadFileBytes(source, "");
    WarningList warnings;
    const std::vector<char> bytes = NamingFile(source, [&] {
        return EncodeZps(ZpsFromJson(ParseZpsJson(text, warnings), warnings), warnings);
    });
    PrintWarnings(source, warnings);
    WriteFileWhole(target, bytes);
    return kExitSuccess;
}

int ZpsDump(const std::string& path, bool json) {
    const std::vector<char> bytes = ReadFileBytes(path, "");
    bool refused = false;
    for (const std::string& text : LibraryRefusal(bytes)) {
        std::cerr << Printable(path + ": the library's reader refuses the file: " + text) << "\n";
        refused = true;
    }
    // The presets are counted here and decoded again one at a time as they are printed, so
    // that memory stays that of the file whatever it holds.
    size_t counts[2] = {0, 0};
    ZpsDecodeNotes notes;
    const ZpsDocument document = NamingFile(path, [&] {
        return DecodeZps(bytes, notes, [&counts](ZpsPreset&&, bool user) { ++counts[user]; });
    });
    PrintWarnings(path, notes.warnings);
    const ZpsPresetStream presets = PresetStreamOf(bytes, counts[0], counts[1]);
    if (json) {
        PrintZpsJson(std::cout, document, presets);
    } else {
        PrintZps(std::cout, document, presets);
    }
    if (!notes.incomplete.empty()) throw ZbctlError(path + ": " + notes.incomplete);
    return refused ? kExitFailure : kExitSuccess;
}

int CheckConfig(const std::string& path, const std::string& presets) {
    ConfigChecker checker(path);
    checker.Check();
    if (!presets.empty()) {
        const std::vector<char> bytes = ReadFileBytes(presets, "presets");
        ZpsDecodeNotes notes;
        checker.CheckPresets(NamingFile(presets, [&] { return DecodeZps(bytes, notes); }), presets);
    }
    checker.Print(std::cout);
    return checker.HasErrors() ? kExitFailure : kExitSuccess;
}

int MsgEncode(const std::vector<std::string>& words, bool wrap, uint32_t instance) {
    std::vector<char> frame;
    try {
        frame = MessageCatalog::Encode(words[0],
                                       std::vector<std::string>(words.begin() + 1, words.end()));
    } catch (const ZbctlError& e) {
        throw UsageError(e.what());  // the fields are words of the command line
    }
    if (!wrap) {
        std::cout << TesselFX::Base64::Encode(frame) << "\n";
    } else {
        const std::vector<char> text = TesselFX::ZbAocTuningProtocol::WrapBase64(instance, frame);
        std::cout << std::string(text.begin(), text.end()) << "\n";
    }
    return kExitSuccess;
}

// The text that a TEXT argument names: itself, standard input for "-", a file for "@FILE".
std::string TextOfArgument(const std::string& argument) {
    if (argument == "-") {
        std::ostringstream text;
        text << std::cin.rdbuf();
        return text.str();
    }
    if (argument.compare(0, 1, "@") == 0) return ReadText(argument.substr(1), "");
    return argument;
}

int MsgDecode(const std::string& argument) {
    std::string instance;
    const std::vector<char> frame = MessageCatalog::FrameOfText(TextOfArgument(argument), instance);
    std::cout << Printable((instance.empty() ? "" : "instance " + instance + ": ") +
                           MessageCatalog::Describe(frame, MessageDirection::kAny))
              << "\n";
    return kExitSuccess;
}

struct ToneOptions {
    std::string path;
    double seconds = 0.5;
    uint32_t rate = 48000;
    uint32_t channels = 2;
};

int Tone(const ToneOptions& tone) {
    std::ostringstream seconds;
    seconds << "--seconds " << tone.seconds;
    if (!(tone.seconds >= 0.001 && tone.seconds <= 86400)) {
        throw UsageError(seconds.str() + " is out of range: from 0.001 to 86400");
    }
    const auto frames = static_cast<uint64_t>(tone.seconds * tone.rate);
    const uint64_t bytes = frames * tone.channels * sizeof(float);
    if (bytes > kMaxWavDataBytes) {
        throw UsageError(seconds.str() + " at --rate " + std::to_string(tone.rate) + " on " +
                         std::to_string(tone.channels) + " channels makes " +
                         std::to_string(bytes) + " bytes of samples; a WAV file holds 4 GiB");
    }
    WriteTestSignal(tone.path, tone.rate, tone.channels, frames);
    return kExitSuccess;
}

// Sets the library up as run does, plays the scenario if one is given, serves until SIGINT or
// SIGTERM, destroys the handle. The trace and the server's log go to standard error, so that
// standard output holds the address alone.
int Serve(const RunOptions& options, const std::string& listen) {
    ScenarioRunner runner(options, std::cerr);
    Server server(runner.Host(), listen, std::cerr);
    const int status = runner.Play();
    if (status != kExitSuccess) return status;
    server.Run(std::cout);
    return runner.Finish();
}

/// The options that set the library up: the library, its configuration, presets and DSP
/// library, and the scenario to play (scenarioHelp; its default is scenario); the other
/// defaults are the bundled example.
void AddSetupOptions(CLI::App& command, RunOptions& options, const std::string& scenario,
                     const std::string& scenarioHelp) {
    options.halLibrary = ZBCTL_HAL_LIBRARY;
    options.config = ZBCTL_EXAMPLES_DIR "/example.ini";
    options.systemPresets = ZBCTL_BUILD_EXAMPLES_DIR "/example_system.zps";
    options.dspKit = ZBCTL_DSPKIT_LIBRARY;
    options.scenario = scenario;
    command.add_option("--config", options.config, "Configuration INI")->capture_default_str();
    command.add_option("--system-presets", options.systemPresets, "System preset file (.zps)")
        ->capture_default_str();
    command.add_option("--user-presets", options.userPresets, "User preset file (.zps)");
    command
        .add_option("--dspkit", options.dspKit,
                    "DSP algorithm library, for the library and the DSP side")
        ->capture_default_str();
    command.add_option("--scenario", options.scenario, scenarioHelp)->capture_default_str();
    command.add_option("--library", options.halLibrary, "The control library")
        ->capture_default_str();
}

void AddRunCommand(CLI::App& app, std::vector<Command>& commands) {
    auto options = std::make_shared<RunOptions>();
    CLI::App* run = app.add_subcommand(
        "run",
        "Load libzbhalcontroller.so with dlopen and play a scenario against it, with a "
        "simulated DSP behind buffer_sender; prints a trace of calls, frames and notifications");
    AddSetupOptions(*run, *options, ZBCTL_EXAMPLES_DIR "/default.scenario",
                    "Scenario, one call per line");
    run->add_flag("--json", options->json, "Print the trace as JSON");
    CLI::Option* input =
        run->add_option("--input", options->input, "WAV to render through the DSP after each step");
    CLI::Option* output = run->add_option("--output", options->output,
                                          "WAV of the rendered steps, one input length each");
    input->needs(output);
    output->needs(input);
    run->add_option("--render-instance", options->renderInstance,
                    "Instance whose DSP renders the audio")
        ->capture_default_str();
    commands.push_back({run, [options] { return ScenarioRunner(*options, std::cout).Run(); }});
}

void AddServeCommand(CLI::App& app, std::vector<Command>& commands) {
    auto options = std::make_shared<RunOptions>();
    auto listen = std::make_shared<std::string>("127.0.0.1:7373");
    CLI::App* serve = app.add_subcommand(
        "serve",
        "Serve the library, set up as run does, on a TCP port as a live target for tuning tools");
    AddSetupOptions(*serve, *options, "", "Scenario to play before serving");
    serve->add_option("--listen", *listen, "ADDR:PORT to listen on; port 0 picks a free one")
        ->capture_default_str();
    commands.push_back({serve, [options, listen] { return Serve(*options, *listen); }});
}

void AddZpsCommands(CLI::App& app, std::vector<Command>& commands) {
    CLI::App* zps = app.add_subcommand("zps", "Build and show preset files");
    zps->require_subcommand(1);

    auto build = std::make_shared<std::pair<std::string, std::string>>();
    CLI::App* buildCommand =
        zps->add_subcommand("build", "Compile a JSON description of presets into a preset file");
    buildCommand->add_option("SRC", build->first, "JSON description")->required();
    buildCommand->add_option("OUT", build->second, "Preset file to write")->required();
    commands.push_back({buildCommand, [build] { return ZpsBuild(build->first, build->second); }});

    auto dump = std::make_shared<std::pair<std::string, bool>>("", false);
    CLI::App* dumpCommand = zps->add_subcommand("dump", "Show a preset file");
    dumpCommand->add_option("FILE", dump->first, "Preset file")->required();
    dumpCommand->add_flag("--json", dump->second, "Show it as the JSON that zps build takes");
    commands.push_back({dumpCommand, [dump] { return ZpsDump(dump->first, dump->second); }});
}

void AddCheckConfigCommand(CLI::App& app, std::vector<Command>& commands) {
    auto paths = std::make_shared<std::pair<std::string, std::string>>();
    CLI::App* check = app.add_subcommand(
        "check-config",
        "Parse a configuration with the library's parsers; exits 1 when a line is refused or the "
        "configuration cannot work");
    check->add_option("INI", paths->first, "Configuration")->required();
    check->add_option("--presets", paths->second,
                      "System preset file whose presets the controls must find");
    commands.push_back({check, [paths] { return CheckConfig(paths->first, paths->second); }});
}

void AddToneCommand(CLI::App& app, std::vector<Command>& commands) {
    auto options = std::make_shared<ToneOptions>();
    CLI::App* tone =
        app.add_subcommand("tone", "Write a test signal WAV (tones at 110 Hz, 1 kHz and 6 kHz)");
    tone->add_option("OUT", options->path, "WAV file to write")->required();
    tone->add_option("--seconds", options->seconds, "Length, from 0.001 to 86400")
        ->capture_default_str();
    tone->add_option("--rate", options->rate, "Sample rate")
        ->capture_default_str()
        ->check(CLI::Range(8000, 384000));
    tone->add_option("--channels", options->channels, "Channels")
        ->capture_default_str()
        ->check(CLI::Range(1, 8));
    commands.push_back({tone, [options] { return Tone(*options); }});
}

void AddMsgCommands(CLI::App& app, std::vector<Command>& commands) {
    CLI::App* msg = app.add_subcommand(
        "msg", "Write and read the base64 text of tuning messages; the messages and fields:\n" +
                   MessageCatalog::UsageList());
    msg->require_subcommand(1);

    struct EncodeOptions {
        std::vector<std::string> words;
        uint32_t instance = 0;
        CLI::Option* envelope = nullptr;
    };
    auto encode = std::make_shared<EncodeOptions>();
    CLI::App* encodeCommand = msg->add_subcommand(
        "encode", "Print the base64 text of a message given by name and fields");
    encodeCommand->add_option("MESSAGE", encode->words, "Message name, then its fields")
        ->required();
    encode->envelope = encodeCommand->add_option(
        "--envelope", encode->instance,
        "Wrap the text in the envelope of notifications, for this instance");
    commands.push_back({encodeCommand, [encode] {
                            return MsgEncode(encode->words, encode->envelope->count() > 0,
                                             encode->instance);
                        }});

    auto text = std::make_shared<std::string>();
    CLI::App* decodeCommand = msg->add_subcommand(
        "decode", "Print a command, reply or notification text (with or without its envelope)");
    decodeCommand
        ->add_option("TEXT", *text,
                     "base64 text, or the whole notification text; - reads it from standard "
                     "input, @FILE from a file")
        ->required();
    commands.push_back({decodeCommand, [text] { return MsgDecode(*text); }});
}

// The names of the subcommands of a command, for messages.
std::string SubcommandNames(const CLI::App& command) {
    std::string names;
    for (const CLI::App* sub : command.get_subcommands([](const CLI::App*) { return true; }))
        names += (names.empty() ? "" : ", ") + sub->get_name();
    return names;
}

// The fault of a command line that lacks a subcommand or names an unknown one where one is due
// ("unknown subcommand "x" of zps; its subcommands: build, dump"); empty when the subcommands
// are right.
std::string SubcommandFault(const CLI::App& app, int argc, char** argv) {
    const CLI::App* level = &app;
    std::string name;
    for (int i = 1; i < argc && !SubcommandNames(*level).empty(); ++i) {
        const std::string word = argv[i];
        if (word.compare(0, 1, "-") == 0) continue;
        const CLI::App* next = nullptr;
        for (const CLI::App* sub : level->get_subcommands([](const CLI::App*) { return true; })) {
            if (sub->check_name(word)) next = sub;
        }
        if (next == nullptr) {
            return "unknown subcommand \"" + word + "\"" + (name.empty() ? "" : " of " + name) +
                   "; the subcommands are " + SubcommandNames(*level);
        }
        level = next;
        name += (name.empty() ? "" : " ") + word;
    }
    if (SubcommandNames(*level).empty()) return "";
    return (name.empty() ? "a subcommand is needed" : name + " needs a subcommand") + ": " +
           SubcommandNames(*level);
}

int Execute(const std::vector<Command>& commands) {
    try {
        for (const Command& command : commands) {
            if (command.app->parsed()) return command.run();
        }
    } catch (const UsageError& e) {
        std::cerr << "zbctl: " << Printable(e.what()) << "\n";
        return kExitUsage;
    } catch (const ZbctlError& e) {
        std::cerr << "zbctl: " << Printable(e.what()) << "\n";
        return kExitFailure;
    } catch (const std::exception& e) {
        std::cerr << "zbctl: unexpected failure: " << Printable(e.what()) << "\n";
        return kExitFailure;
    }
    return kExitUsage;  // not reached: the parser requires a subcommand
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"zbctl: try libzbhalcontroller on a desk machine"};
    app.require_subcommand(1);
    // Options of zbctl itself are taken after a subcommand too: zbctl run -v.
    app.fallthrough();
    bool verbose = false;
    app.add_flag("-v,--verbose", verbose,
                 "Show all of the library's log; by default only its errors are shown, and the "
                 "number of the other lines");
    std::vector<Command> commands;
    AddRunCommand(app, commands);
    AddServeCommand(app, commands);
    AddZpsCommands(app, commands);
    AddCheckConfigCommand(app, commands);
    AddToneCommand(app, commands);
    AddMsgCommands(app, commands);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        if (e.get_exit_code() == 0) return app.exit(e);  // --help
        const std::string fault = SubcommandFault(app, argc, argv);
        std::cerr << "zbctl: " << Printable(fault.empty() ? e.what() : fault)
                  << "\nzbctl --help, or --help after a subcommand, shows the options\n";
        return kExitUsage;
    }
    RouteLibraryLog(verbose);
    const int status = Execute(commands);
    PrintHeldBackLog(std::cerr);
    return status;
}
