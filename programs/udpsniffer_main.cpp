// udpsniffer: the stand-alone capture agent, configured from the command line.
//   udpsniffer [-d device[;device...]] [-f filter] [-h server] [-p port]
// SNIFFER_USER names a user to switch to once the devices are open.
#include <cstdlib>

#include <log4cxx/basicconfigurator.h>

#include "Sniffer.h"
#include "StandaloneRun.h"

int main(int argc, char** argv) {
    blockStopSignals();
    log4cxx::BasicConfigurator::configure();
    Sniffer sniffer;
    const int configured = sniffer.configure(argc, argv);
    const char* user = std::getenv("SNIFFER_USER");
    return runStandalone(sniffer, configured, user ? user : "");
}
