#ifndef SNIFFER_SIP_HELPER_H
#define SNIFFER_SIP_HELPER_H

#include <sys/types.h>

// Recognises a SIP message from the first bytes of a payload, cheaply:
// a request when the second word (the Request-URI) starts with "sip:",
// a response when the payload starts with "SIP/2.0". Case-insensitive.
//
// The payload is not terminated and its length is not passed; callers hand
// in a buffer with at least 17 readable bytes (the dissector pads its frame
// copies), since the start line is never looked at beyond that.
class SipHelper {
public:
    static const char* const sipReq[18];
    static const int sipReqLen = 17;
    static const char* const sipRes;
    static const char* const sipPrefix;

    virtual ~SipHelper() = default;

    bool isRequest(const u_char* payload);
    bool isRequestQuick(const u_char* payload);
    bool isResponse(const u_char* payload);

    static int memcmpNocase(const u_char* a, const u_char* b, int n);
    static int memcmpNocase(const char* a, const char* b, int n) {
        return memcmpNocase(reinterpret_cast<const u_char*>(a), reinterpret_cast<const u_char*>(b), n);
    }
    void getSecondWord(u_char* out, const u_char* in, int limit);
    void removeWhiteOnce(u_char* out, const u_char* in, int limit);

private:
    bool isRequestByMethod(const u_char* payload);
};

#endif
