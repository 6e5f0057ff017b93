#include "FuzzPer.h"
#include "h323/H225.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    h323::fuzz::decodeEncodeDecode(h323::h225::H323_UserInformation, data, size);
    return 0;
}
