// sniffer: the stand-alone capture agent, configured from a properties file.
//   sniffer [-c <cfgFileName>] [-l <logCfgFileName>]
#include "Sniffer.h"
#include "StandaloneRun.h"

int main(int argc, char** argv) {
    blockStopSignals();
    Sniffer sniffer;
    const int configured = sniffer.configureFromFile(argc, argv);
    return runStandalone(sniffer, configured, sniffer.getRunAsUser());
}
