#ifndef SNIFFER_TESTS_CAPTURE_FILE_H
#define SNIFFER_TESTS_CAPTURE_FILE_H

#include <string>
#include <vector>

#include "Network.h"

// Writes `frames` as a capture file of the given link type (a DLT_ value),
// whole and one second apart.
void writeCapture(const std::string& path, int linkType, const std::vector<Bytes>& frames);

#endif
