// The program vorl: its command line.
#include "command_line/command_line.hpp"
#include "command_line/command_options.hpp"
#include "errors.hpp"
#include "guard.hpp"
#include "memory_limit.hpp"
#include "output_text.hpp"

#include <vorl/reading/network.hpp>
#include <vorl/types/trace.hpp>

#include <fcntl.h>
#include <unistd.h>
#include <csignal>
#include <cstdio>
#include <new>
#include <sstream>
#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace vorl::app {

namespace {

std::vector<std::string> optionNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options())
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    return names;
}

int runProgram(int argc, char** argv) {
    CommandLine line;
    CLI::App& app = line.app;
    std::vector<std::string> names;
    for (const auto& command : line.commands) names.push_back(command.app->get_name());

    const auto complain = [&app](const std::string& message) {
        const auto subs = app.get_subcommands();
        const std::string command = subs.empty() ? "" : subs.front()->get_name() + " ";
        tell(message + "\nRun \"vorl " + command + "--help\" for help.");
    };
    try {
        line.parse(argc, argv);
        if (const CLI::App* cluster = app.get_subcommand("cluster"); *cluster)
            checkOptions(*cluster, line.cluster);
        for (const auto& command : line.commands)
            if (*command.app) command.run();
        return DONE;
    } catch (const CLI::Success& success) {
        std::ostringstream out;
        const int code = line.exit(success, out);
        print(out.str());
        return code;
    } catch (const CLI::ExtrasError& err) {
        std::string message = err.what();
        const auto subs = app.get_subcommands();
        for (const std::string& word : app.remaining(true)) {
            const std::string option = word.substr(0, word.find('='));
            message += suggestion(option, option.starts_with("-") && !subs.empty()
                                              ? optionNames(*subs.front())
                                              : names);
        }
        complain(message);
    } catch (const CLI::RequiredError& err) {
        std::string message = err.what();
        if (const auto subs = app.get_subcommands(); !subs.empty())
            for (const std::string& word : app.remaining(true))
                if (word.starts_with("-"))
                    message +=
                        "; \"" + word + "\" is no option" +
                        suggestion(word.substr(0, word.find('=')), optionNames(*subs.front()));
        // An unknown command is told as a missing one.
        for (int i = 1; i < argc && app.get_subcommands().empty(); ++i)
            message += ": \"" + std::string(argv[i]) + "\"" + suggestion(argv[i], names);
        complain(message);
    } catch (const CLI::ParseError& err) {
        complain(err.what());
    } catch (const UnknownFormat& err) {
        tell(err.what() + std::string(", give it with --format"));
    } catch (const UsageError& err) {
        tell(err.what());
    }
    return WRONG_USAGE;
}

/// Takes the places of standard streams that are closed, lest a file that the program writes gets
/// the number of one, and with it what goes to the stream.
void holdStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(stream, F_GETFD) < 0)
            // Opened the wrong way, so that a use of it fails as before.
            static_cast<void>(open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY));
}

}  // namespace

}  // namespace vorl::app

int main(int argc, char** argv) {
    using namespace vorl::app;
    holdStandardStreams();
    const auto pipeSignal = std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    vorl::ftrace = nullptr;
    guardAssertions();
#ifdef M_MMAP_THRESHOLD
    // Large buffers go back to the system at once. Left alone, the limit rises with their size.
    mallopt(M_MMAP_THRESHOLD, 1 << 20);
#endif
    std::string message;
    try {
        return runProgram(argc, argv);
    } catch (const ClosedPipe& err) {
        // As the shell knows it of programs before `| head`.
        std::signal(SIGPIPE, pipeSignal);
        raise(SIGPIPE);
        message = err.what();
    } catch (const vorl::MemoryLimitError& err) {
        message = std::string(err.what()) + "; --memory-limit SIZE allows more";
    } catch (const std::bad_alloc&) {
        message = lackOfMemory();
    } catch (const std::exception& err) {
        message = err.what();
    }
    while (message.ends_with('\n')) message.pop_back();
    tell(message);
    return INPUT_FAULT;
}
