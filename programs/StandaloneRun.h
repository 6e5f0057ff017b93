#ifndef PROGRAMS_STANDALONE_RUN_H
#define PROGRAMS_STANDALONE_RUN_H

class Sniffer;

// Runs a configured engine as a stand-alone program: sets it up, drops
// privileges if asked, captures until SIGINT or SIGTERM (or, with replay
// files only, until every file has been read and forwarded) and stops it
// in order. `configured` is the result of the engine's configuration step.
// Returns the process exit status.
int runStandalone(Sniffer& sniffer, int configured, const char* runAsUser);

// Blocks SIGINT and SIGTERM in the calling thread and every thread it
// creates afterwards, so that only the stopping thread receives them.
void blockStopSignals();

#endif
