#include "EngineStats.h"

void EngineStats::countForwarded(int protocol, int sent) {
    if (sent <= 0)
        return;
    switch (protocol) {
    case 1: add(forwardedSip); break;
    case 2: add(forwardedRtp); break;
    case 3: add(forwardedHeartbeat); break;
    case 4: add(forwardedH323); break;
    default: return;
    }
    add(bytesSent, static_cast<uint64_t>(sent));
}
