// Q.931 as the signalling decoder meets it: the message, its party numbers,
// and the H.225.0 user information inside it.

#include <sstream>

#include "FuzzPer.h"
#include "h323/H225.h"
#include "h323/Q931.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static h323::Q931 q931, again;
    if (!q931.decode(data, size)) {
        if (q931.status() == h323::DecodeStatus::Ok || q931.stopBit() > size * 8)
            __builtin_trap();  // a reason, inside the input
        return 0;
    }
    q931.callingPartyNumber();
    q931.calledPartyNumber();
    std::ostringstream trace;
    q931.print(trace);
    std::vector<uint8_t> wire = q931.encode();
    if (!again.decode(wire.data(), wire.size()) || again.messageType() != q931.messageType() ||
        again.callReference() != q931.callReference() ||
        again.element(h323::Q931::UserUser) != q931.element(h323::Q931::UserUser))
        __builtin_trap();
    std::string_view uu = q931.element(h323::Q931::UserUser);
    h323::fuzz::decodeEncodeDecode(h323::h225::H323_UserInformation, reinterpret_cast<const uint8_t*>(uu.data()),
                                   uu.size());
    return 0;
}
