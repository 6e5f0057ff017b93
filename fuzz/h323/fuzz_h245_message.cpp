#include "FuzzPer.h"
#include "h323/H245.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    h323::fuzz::decodeEncodeDecode(h323::h245::MultimediaSystemControlMessage, data, size);
    return 0;
}
