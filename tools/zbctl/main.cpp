// zbctl: try libzbhalcontroller on a desk machine. See `zbctl --help`.
#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>
#include <sstream>

#include "ConfigChecker.h"
#include "MessageCatalog.h"
#include "ScenarioRunner.h"
#include "WavFile.h"
#include "ZbctlError.h"
#include "ZpsBinary.h"
#include "ZpsJson.h"
#include "ZpsText.h"
#include "log/TesselLog.h"
#include "protocol/Base64.h"
#include "protocol/ZbAocTuningProtocol.h"

namespace {

using namespace TesselFX::zbctl;

std::vector<char> ReadBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw ZbctlError("cannot read " + path);
    return std::vector<char>(std::istreambuf_iterator<char>(file),
                             std::istreambuf_iterator<char>());
}

void WriteBytes(const std::string& path, const std::vector<char>& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file) throw ZbctlError("cannot write " + path);
}

int ZpsBuild(const std::string& source, const std::string& target) {
    const std::vector<char> text = ReadBytes(source);
    nlohmann::json json;
    try {
        json = nlohmann::json::parse(text.begin(), text.end());
    } catch (const nlohmann::json::parse_error& e) {
        throw ZbctlError(source + ": " + e.what());
    }
    std::vector<char> bytes;
    try {
        bytes = EncodeZps(ZpsFromJson(json));
    } catch (const ZbctlError& e) {
        throw ZbctlError(source + ": " + e.what());
    }
    WriteBytes(target, bytes);
    return 0;
}

int ZpsDump(const std::string& path, bool json) {
    const std::vector<char> bytes = ReadBytes(path);
    for (const std::string& text : LibraryRefusal(bytes)) {
        std::cerr << path << ": the library's reader refuses the file: " << text << "\n";
    }
    std::vector<std::string> warnings;
    ZpsDocument document;
    try {
        document = DecodeZps(bytes, warnings);
    } catch (const ZbctlError& e) {
        throw ZbctlError(path + ": " + e.what());
    }
    for (const std::string& warning : warnings)
        std::cerr << path << ": warning: " << warning << "\n";
    if (json) {
        std::cout << ZpsToJson(document).dump(2) << "\n";
    } else {
        PrintZps(std::cout, document);
    }
    return 0;
}

int CheckConfig(const std::string& path, const std::string& presets) {
    ConfigChecker checker(path);
    checker.Check();
    if (!presets.empty()) {
        std::vector<std::string> warnings;
        ZpsDocument document;
        try {
            document = DecodeZps(ReadBytes(presets), warnings);
        } catch (const ZbctlError& e) {
            throw ZbctlError(presets + ": " + e.what());
        }
        checker.CheckPresets(document, presets);
    }
    checker.Print(std::cout);
    return checker.HasErrors() ? 1 : 0;
}

int MsgEncode(const std::vector<std::string>& words, bool wrap, uint32_t instance) {
    if (words.empty()) throw ZbctlError("msg encode needs a message name");
    const std::vector<char> frame =
        MessageCatalog::Encode(words[0], std::vector<std::string>(words.begin() + 1, words.end()));
    if (!wrap) {
        std::cout << TesselFX::Base64::Encode(frame) << "\n";
    } else {
        const std::vector<char> text = TesselFX::ZbAocTuningProtocol::WrapBase64(instance, frame);
        std::cout << std::string(text.begin(), text.end()) << "\n";
    }
    return 0;
}

int MsgDecode(const std::string& text) {
    std::string instance;
    const std::vector<char> frame = MessageCatalog::FrameOfText(text, instance);
    if (!instance.empty()) std::cout << "instance " << instance << ": ";
    std::cout << MessageCatalog::Describe(frame, MessageDirection::kAny) << "\n";
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"zbctl: try libzbhalcontroller on a desk machine"};
    app.require_subcommand(1);
    bool verbose = false;
    app.add_flag("-v,--verbose", verbose,
                 "Show the log of the library code that zbctl itself links");

    RunOptions run;
    run.halLibrary = ZBCTL_HAL_LIBRARY;
    run.config = ZBCTL_EXAMPLES_DIR "/example.ini";
    run.systemPresets = ZBCTL_BUILD_EXAMPLES_DIR "/example_system.zps";
    run.dspKit = ZBCTL_DSPKIT_LIBRARY;
    run.scenario = ZBCTL_EXAMPLES_DIR "/default.scenario";
    CLI::App* runCommand = app.add_subcommand(
        "run",
        "Load libzbhalcontroller.so with dlopen and play a scenario against it, with a "
        "simulated DSP behind buffer_sender; prints a trace of calls, frames and notifications");
    runCommand->add_option("--config", run.config, "Configuration INI")->capture_default_str();
    runCommand->add_option("--system-presets", run.systemPresets, "System preset file (.zps)")
        ->capture_default_str();
    runCommand->add_option("--user-presets", run.userPresets, "User preset file (.zps)");
    runCommand
        ->add_option("--dspkit", run.dspKit,
                     "DSP algorithm library, for the library and the DSP side")
        ->capture_default_str();
    runCommand->add_option("--scenario", run.scenario, "Scenario, one call per line")
        ->capture_default_str();
    runCommand->add_option("--library", run.halLibrary, "The control library")
        ->capture_default_str();
    runCommand->add_flag("--json", run.json, "Print the trace as JSON");
    runCommand->add_option("--input", run.input, "WAV to render through the DSP after each step");
    runCommand->add_option("--output", run.output,
                           "WAV of the rendered steps, one input length each");
    runCommand
        ->add_option("--render-instance", run.renderInstance,
                     "Instance whose DSP renders the audio")
        ->capture_default_str();

    CLI::App* zps = app.add_subcommand("zps", "Build and show preset files");
    zps->require_subcommand(1);
    std::string zpsSource;
    std::string zpsTarget;
    CLI::App* zpsBuild =
        zps->add_subcommand("build", "Compile a JSON description of presets into a preset file");
    zpsBuild->add_option("SRC", zpsSource, "JSON description")->required();
    zpsBuild->add_option("OUT", zpsTarget, "Preset file to write")->required();
    std::string zpsFile;
    bool zpsJson = false;
    CLI::App* zpsDump = zps->add_subcommand("dump", "Show a preset file");
    zpsDump->add_option("FILE", zpsFile, "Preset file")->required();
    zpsDump->add_flag("--json", zpsJson, "Show it as the JSON that zps build takes");

    std::string configPath;
    std::string configPresets;
    CLI::App* check = app.add_subcommand(
        "check-config",
        "Parse a configuration with the library's parsers; exits 1 when a line is refused");
    check->add_option("INI", configPath, "Configuration")->required();
    check->add_option("--presets", configPresets,
                      "System preset file whose presets the controls must find");

    std::string tonePath;
    double toneSeconds = 0.5;
    uint32_t toneRate = 48000;
    uint32_t toneChannels = 2;
    CLI::App* tone =
        app.add_subcommand("tone", "Write a test signal WAV (tones at 110 Hz, 1 kHz and 6 kHz)");
    tone->add_option("OUT", tonePath, "WAV file to write")->required();
    tone->add_option("--seconds", toneSeconds, "Length")->capture_default_str();
    tone->add_option("--rate", toneRate, "Sample rate")->capture_default_str();
    tone->add_option("--channels", toneChannels, "Channels")
        ->capture_default_str()
        ->check(CLI::Range(1, 8));

    CLI::App* msg = app.add_subcommand(
        "msg", "Write and read the base64 text of tuning messages; the messages and fields:\n" +
                   MessageCatalog::UsageList());
    msg->require_subcommand(1);
    std::vector<std::string> msgWords;
    uint32_t msgInstance = 0;
    CLI::App* msgEncode = msg->add_subcommand(
        "encode", "Print the base64 text of a message given by name and fields");
    msgEncode->add_option("MESSAGE", msgWords, "Message name, then its fields")->required();
    CLI::Option* msgEnvelope =
        msgEncode->add_option("--envelope", msgInstance,
                              "Wrap the text in the envelope of notifications, for this instance");
    std::string msgText;
    CLI::App* msgDecode = msg->add_subcommand(
        "decode", "Print a command, reply or notification text (with or without its envelope)");
    msgDecode->add_option("TEXT", msgText, "base64 text, or the whole notification text")
        ->required();

    CLI11_PARSE(app, argc, argv);

    if (!verbose) {
        TesselFX::TesselLog::Get().WaitForInit();
        TesselFX::TesselLog::Get().SetLogOutput("ANDROID_LOG", false);
    }
    try {
        if (*runCommand) return ScenarioRunner(run, std::cout).Run();
        if (*zpsBuild) return ZpsBuild(zpsSource, zpsTarget);
        if (*zpsDump) return ZpsDump(zpsFile, zpsJson);
        if (*msgEncode) return MsgEncode(msgWords, msgEnvelope->count() > 0, msgInstance);
        if (*msgDecode) return MsgDecode(msgText);
        if (*check) return CheckConfig(configPath, configPresets);
        if (*tone) {
            WriteWav(tonePath, MakeTestSignal(toneRate, toneChannels, toneSeconds));
            return 0;
        }
    } catch (const ZbctlError& e) {
        std::cerr << "zbctl: " << e.what() << "\n";
        return 2;
    } catch (const std::exception& e) {
        std::cerr << "zbctl: unexpected failure: " << e.what() << "\n";
        return 2;
    }
    return 0;
}
