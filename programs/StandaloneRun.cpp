#include "StandaloneRun.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <grp.h>
#include <iostream>
#include <pthread.h>
#include <pwd.h>
#include <thread>
#include <unistd.h>

#include <log4cxx/logger.h>

#include "Sniffer.h"

namespace {
log4cxx::LoggerPtr logger = log4cxx::Logger::getLogger("SnifferClient");

sigset_t stopSignals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    return set;
}

// Capture devices are open by now; nothing later needs root.
bool dropPrivileges(const char* user) {
    if (!user || !*user)
        return true;
    const passwd* pw = getpwnam(user);
    if (!pw) {
        LOG4CXX_ERROR(logger, "Unknown user " << user << ": cannot drop privileges");
        return false;
    }
    if (initgroups(pw->pw_name, pw->pw_gid) != 0 || setgid(pw->pw_gid) != 0 || setuid(pw->pw_uid) != 0) {
        LOG4CXX_ERROR(logger, "Cannot switch to user " << user << ": " << std::strerror(errno));
        return false;
    }
    LOG4CXX_INFO(logger, "Running as user " << user);
    return true;
}

// Waits for a stop signal, or for the end of the replay files, then stops
// the engine from this thread (the consumer is busy in startSniffing).
void awaitStop(Sniffer& sniffer) {
    const sigset_t set = stopSignals();
    const timespec poll{0, 20 * 1000 * 1000};
    const bool filesOnly = sniffer.capturesFilesOnly();
    for (;;) {
        const int sig = sigtimedwait(&set, nullptr, &poll);
        if (sig == SIGINT || sig == SIGTERM)
            break;
        if (filesOnly && sniffer.allFilesRead())
            break;
    }
    sniffer.stopSniffing();
}
}  // namespace

void blockStopSignals() {
    const sigset_t set = stopSignals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

int runStandalone(Sniffer& sniffer, int configured, const char* runAsUser) {
    Sniffer::installWakeSignal();
    const int setup = configured == 0 ? sniffer.setupSniffing() : configured;
    if (setup != 0) {
        std::cerr << "Errors in setup, terminating..." << std::endl;
        return setup;
    }
    if (!dropPrivileges(runAsUser)) {
        // Set-up has started the command reader: stop it before the engine goes.
        sniffer.stopSniffing();
        std::cerr << "Errors in setup, terminating..." << std::endl;
        return 1;
    }
    std::thread stopper(awaitStop, std::ref(sniffer));
    sniffer.startSniffing();
    stopper.join();
    return 0;
}
