#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "command.hpp"
#include "error.hpp"
#include "qel/logging/configure.hpp"

namespace qel::app {
namespace {

void ConfigureLogging() {
    char const* const rules = std::getenv("QEL_LOG");
    if (rules == nullptr) return;
    try {
        logging::Configure(rules);
    } catch (std::exception const& error) {
        throw host::UsageError(std::string("the environment variable QEL_LOG is wrong: ") + error.what());
    }
}

/// Takes the places of standard streams that the caller has closed, so that no other file gets them and is written to
/// by mistake: results for a closed standard output fail instead.
void OccupyStandardStreams() {
    for (int const stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // The lowest free number is taken: those below are in use by now.
        if (fcntl(stream, F_GETFD) < 0) (void)open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

int ReportUsage(CLI::App const& program, CLI::ParseError const& error) {
    if (error.get_exit_code() == 0) return program.exit(error);  // --help, --version
    Say(std::string(error.what()) + " (see qel --help)");
    return exit_code::Usage;
}

struct Command {
    char const* name;
    std::function<int()> run;
};

int Main(int argc, char** argv) {
    CLI::App program("Finds and measures what moves in videos.", "qel");
    program.set_version_flag("--version", "qel " QEL_VERSION);
    program.require_subcommand(0, 1);
    program.footer(
        "Examples:\n"
        "  qel run street.avi --output street.jsonl --annotate street.mp4\n"
        "  qel calibrate --references marks.json --output camera.json\n"
        "  qel measure --calibration camera.json --size 768x576 --from 120,400 --to 380,410\n"
        "  qel serve cameras.json\n"
        "  qel algorithms\n"
        "  qel info --watch\n"
        "  qel plugins\n"
        "  qel new-plugin find_faces\n\n"
        "Exit codes: 0 done, 1 failed, 2 wrong use, 130 interrupted. QEL_LOG sets what is logged, such as "
        "QEL_LOG=debug.");
    std::vector<Command> const commands{{"run", AddRunCommand(program)},
                                        {"calibrate", AddCalibrateCommand(program)},
                                        {"measure", AddMeasureCommand(program)},
                                        {"serve", AddServeCommand(program)},
                                        {"algorithms", AddAlgorithmsCommand(program)},
                                        {"info", AddInfoCommand(program)},
                                        {"plugins", AddPluginsCommand(program)},
                                        {"new-plugin", AddNewPluginCommand(program)}};
    try {
        program.parse(argc, argv);
    } catch (CLI::ParseError const& error) {
        return ReportUsage(program, error);
    }
    ConfigureLogging();
    for (Command const& command : commands) {
        if (program.got_subcommand(command.name)) return command.run();
    }
    throw host::UsageError(
        "a command is missing: run, calibrate, measure, serve, algorithms, info, plugins or new-plugin (see qel "
        "--help)");
}

}  // namespace

void Say(std::string const& line) { std::fprintf(stderr, "qel: %s\n", line.c_str()); }

}  // namespace qel::app

int main(int argc, char** argv) {
    using namespace qel;
    app::OccupyStandardStreams();
    // A reader that goes away is told of as a failed write, like a full disk.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return app::Main(argc, argv);
    } catch (host::UsageError const& error) {
        app::Say(error.what());
        return app::exit_code::Usage;
    } catch (std::exception const& error) {
        app::Say(error.what());
        return app::exit_code::Failure;
    }
}
