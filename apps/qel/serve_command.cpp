#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <boost/filesystem/path.hpp>

#include "broker_options.hpp"
#include "command.hpp"
#include "error.hpp"
#include "http/assets.hpp"
#include "http/guard.hpp"
#include "http/server.hpp"
#include "interrupt.hpp"
#include "memory.hpp"
#include "models_option.hpp"
#include "plugins_option.hpp"
#include "service.hpp"

namespace qel::app {
namespace {

/// How often the wish to end is looked for.
constexpr std::chrono::milliseconds Pause{50};

struct Options {
    std::string configuration;
    std::string listen = "127.0.0.1:8080";
    std::string tokenFile;
    std::string assets;
    std::vector<std::string> plugins;
    std::optional<std::string> models;
    BrokerArguments broker;
};

void AddOptions(CLI::App& command, Options& options) {
    command
        .add_option(
            "CONFIG", options.configuration,
            "The configuration, JSON: which streams there are and what is set; written when anything is changed, "
            "and made where there is none")
        ->type_name("FILE.json")
        ->required();
    command
        .add_option(
            "-l,--listen", options.listen,
            "Where to listen; port 0 takes a free one. Another address than 127.0.0.1 and ::1 needs --token-file")
        ->type_name("ADDRESS:PORT")
        ->capture_default_str();
    command
        .add_option("--token-file", options.tokenFile,
                    "Whoever asks has to know the token in the first line of this file, which nobody else may read")
        ->type_name("FILE");
    command
        .add_option("--assets", options.assets,
                    "The folder of the page; share/qel/page of the installation unless given")
        ->type_name("FOLDER");
    AddPluginsOption(command, options.plugins);
    AddModelsOption(command, options.models);
    AddBrokerOptions(command, options.broker);
    command.footer(
        "Examples:\n"
        "  qel serve cameras.json\n"
        "  qel serve cameras.json --listen 0.0.0.0:8080 --token-file ~/.qel-token\n"
        "  qel serve cameras.json --mqtt mqtts://me@broker.example/site --mqtt-password-file ~/.qel-broker\n"
        "  curl http://127.0.0.1:8080/api/streams\n\n"
        "It ends on SIGINT (Ctrl-C) and SIGTERM, after 5 seconds also where an algorithm or a source does not return; "
        "at once when the signal comes again. GET /api/openapi.json describes what can be asked and changed.");
}

serve::http::Endpoint GetEndpoint(Options const& options) {
    serve::http::Endpoint const endpoint = serve::http::ParseEndpoint(options.listen);
    if (!endpoint.IsLoopback() && options.tokenFile.empty()) {
        throw host::UsageError("--listen " + options.listen +
                               " lets others in: give --token-file as well, or listen on 127.0.0.1");
    }
    return endpoint;
}

int Run(Options const& options) {
    // Everything that can be wrong with the arguments is, before anything is read.
    serve::http::Endpoint const endpoint = GetEndpoint(options);
    std::string const token = options.tokenFile.empty() ? std::string() : serve::http::ReadToken(options.tokenFile);
    auto const broker = ReadBrokerOptions(options.broker, options.configuration);
    host::PrepareForLongRun();
    LoadPluginsOrWarn(options.plugins);
    host::Interrupt const interrupt;
    host::Runtime runtime = MakeRuntime(options.models);
    serve::Service service(
        runtime,
        {.configuration = options.configuration,
         .endpoint = endpoint,
         .token = token,
         .assets = options.assets.empty() ? serve::http::FindPage() : boost::filesystem::path(options.assets),
         .version = QEL_VERSION,
         .broker = broker},
        [](std::string const& problem) { Say("warning: " + problem); });
    Say("listening on " + service.GetEndpoint().ToUrl());
    while (interrupt.GetSignal() == 0) std::this_thread::sleep_for(Pause);
    int const code = 128 + interrupt.GetSignal();
    std::vector<std::string> const hanging = service.Stop();
    for (std::string const& line : hanging) Say("warning: " + line);
    if (hanging.empty()) return code;
    Say("warning: ends all the same; what was set and what waits for a broker is stored");
    // Threads that nobody can end still use everything that would go now.
    std::_Exit(code);
}

}  // namespace

std::function<int()> AddServeCommand(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("serve", "Runs streams and lets people watch and steer them with a browser, or by HTTP");
    auto const options = std::make_shared<Options>();
    AddOptions(*command, *options);
    return [options] { return Run(*options); };
}

}  // namespace qel::app
