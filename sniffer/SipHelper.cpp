#include "SipHelper.h"

#include <array>
#include <cstring>

const char* const SipHelper::sipReq[18] = {
    "<Invalid method>", "INVITE", "ACK",   "BYE",   "CANCEL",   "DO",     "INFO",      "MESSAGE", "NOTIFY",
    "OPTIONS",          "PRACK",  "QAUTH", "REFER", "REGISTER", "SPRACK", "SUBSCRIBE", "UPDATE",  "PUBLISH"};
const char* const SipHelper::sipRes = "SIP/2.0";
const char* const SipHelper::sipPrefix = "sip:";

namespace {
// The start line is read within this many bytes of the payload.
constexpr int startLineLimit = 17;
// The method table is kept for a stricter test; the quick Request-URI test
// is the one in use, since it also accepts methods defined after the table.
constexpr bool quickRequestTest = true;

// The start line is ASCII whatever locale the host process runs in, so the
// byte classes are fixed tables (the C locale's white space and upper case)
// rather than <cctype>, whose calls also cost a locale lookup per byte on
// the path every captured UDP payload takes.
constexpr std::array<bool, 256> whiteTable() {
    std::array<bool, 256> table{};
    for (u_char c : {' ', '\t', '\n', '\v', '\f', '\r'})
        table[c] = true;
    return table;
}

constexpr std::array<u_char, 256> upperTable() {
    std::array<u_char, 256> table{};
    for (int c = 0; c < 256; ++c)
        table[c] = static_cast<u_char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
    return table;
}

constexpr std::array<bool, 256> white = whiteTable();
constexpr std::array<u_char, 256> upper = upperTable();

bool isWhite(u_char c) {
    return white[c];
}
}  // namespace

int SipHelper::memcmpNocase(const u_char* a, const u_char* b, int n) {
    for (int i = 0; i < n; ++i) {
        const int ca = upper[a[i]];
        const int cb = upper[b[i]];
        if (ca != cb)
            return ca > cb ? 1 : -1;
    }
    return 0;
}

void SipHelper::getSecondWord(u_char* out, const u_char* in, int limit) {
    int budget = limit - 1;
    while (budget >= 1 && isWhite(*in)) {
        ++in;
        --budget;
    }
    while (budget >= 1 && !isWhite(*in)) {
        ++in;
        --budget;
    }
    while (budget >= 1 && isWhite(*in)) {
        ++in;
        --budget;
    }
    std::memcpy(out, in, 4);
    out[4] = 0;
}

void SipHelper::removeWhiteOnce(u_char* out, const u_char* in, int limit) {
    int budget = limit - 1;
    while (budget >= 1 && isWhite(*in)) {
        ++in;
        --budget;
    }
    while (budget >= 1 && !isWhite(*in)) {
        *out++ = *in++;
        --budget;
    }
    *out++ = ' ';
    while (budget >= 1 && isWhite(*in)) {
        ++in;
        --budget;
    }
    while (budget >= 1 && !isWhite(*in) && *in != '\n') {
        *out++ = *in++;
        --budget;
    }
    *out = 0;
}

bool SipHelper::isRequestQuick(const u_char* payload) {
    u_char word[5];
    getSecondWord(word, payload, startLineLimit);
    return memcmpNocase(reinterpret_cast<const u_char*>(sipPrefix), word, 4) == 0;
}

bool SipHelper::isRequestByMethod(const u_char* payload) {
    u_char line[startLineLimit + 2] = {};
    removeWhiteOnce(line, payload, startLineLimit);
    for (int i = 1; i <= sipReqLen; ++i) {
        char pattern[32];
        const int len = static_cast<int>(std::strlen(sipReq[i])) + 5;
        std::strcpy(pattern, sipReq[i]);
        std::strcat(pattern, " sip:");
        if (memcmpNocase(reinterpret_cast<const u_char*>(pattern), line, len) == 0)
            return true;
    }
    return false;
}

bool SipHelper::isRequest(const u_char* payload) {
    return quickRequestTest ? isRequestQuick(payload) : isRequestByMethod(payload);
}

bool SipHelper::isResponse(const u_char* payload) {
    return memcmpNocase(reinterpret_cast<const u_char*>(sipRes), payload, 7) == 0;
}
