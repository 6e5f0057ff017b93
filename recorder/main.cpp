#include "Log.h"
#include "Options.h"
#include "Recorder.h"

#include <csignal>
#include <iostream>

int main(int argc, char* argv[]) {
    recorder::Options options;
    std::string problem;
    switch (recorder::parseOptions(argc, argv, options, problem)) {
    case recorder::OptionsResult::Help: std::cout << recorder::usage(argv[0]); return 0;
    case recorder::OptionsResult::Invalid:
        std::cerr << argv[0] << ": " << problem << "\n" << recorder::usage(argv[0]);
        return 2;
    case recorder::OptionsResult::Run: break;
    }
    recorder::log::setVerbose(options.verbose);

    // SIGINT and SIGTERM are blocked in every thread, before any starts, and read by the link's
    // thread as its stop request: a stop never lands in the middle of writing a call.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    sigprocmask(SIG_BLOCK, &stopSignals, nullptr);

    recorder::Recorder recorder(options);
    return recorder.run(stopSignals);
}
