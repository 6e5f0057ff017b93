#ifndef FUZZ_SNIFFER_FUZZ_CLOCK_H
#define FUZZ_SNIFFER_FUZZ_CLOCK_H

#include <sys/time.h>

// Moves a capture time on by `tenths` tenths of a second: the inputs give
// the time between two packets in one byte.
inline void advanceTenths(timeval& time, int tenths) {
    time.tv_sec += tenths / 10;
    time.tv_usec += tenths % 10 * 100000;
    if (time.tv_usec >= 1000000) {
        time.tv_usec -= 1000000;
        ++time.tv_sec;
    }
}

#endif
