#include "Log.h"
#include "Options.h"
#include "Recorder.h"

#include <csignal>
#include <iostream>

namespace {

volatile std::sig_atomic_t stopRequested = 0;

void requestStop(int)
{
    stopRequested = 1;
}

}  // namespace

int main(int argc, char* argv[])
{
    recorder::Options options;
    std::string problem;
    switch (recorder::parseOptions(argc, argv, options, problem)) {
    case recorder::OptionsResult::Help:
        std::cout << recorder::usage(argv[0]);
        return 0;
    case recorder::OptionsResult::Invalid:
        std::cerr << argv[0] << ": " << problem << "\n" << recorder::usage(argv[0]);
        return 2;
    case recorder::OptionsResult::Run:
        break;
    }
    recorder::log::setVerbose(options.verbose);

    // SIGINT and SIGTERM stay blocked except while the recorder waits for traffic, so a stop
    // request always wakes it and never lands in the middle of writing a call.
    struct sigaction action {};
    action.sa_handler = requestStop;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    sigset_t blocked, waiting;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGINT);
    sigaddset(&blocked, SIGTERM);
    sigprocmask(SIG_BLOCK, &blocked, &waiting);
    sigdelset(&waiting, SIGINT);
    sigdelset(&waiting, SIGTERM);

    recorder::Recorder recorder(options);
    return recorder.run(stopRequested, waiting);
}
