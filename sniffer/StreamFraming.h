#ifndef SNIFFER_STREAM_FRAMING_H
#define SNIFFER_STREAM_FRAMING_H

#include <cstddef>
#include <sys/types.h>

// Where the next message of a reassembled TCP stream ends. Reads only the
// `length` bytes given.
struct Framing {
    enum class Kind {
        NeedMore,  // the message is not whole yet
        Message,   // the first `length` bytes are one whole message
        Skip,      // the first `length` bytes are no message: let them go
    };
    Kind kind;
    std::size_t length;
};

// A SIP message: its headers up to the empty line, then Content-Length
// (or "l") bytes of body, none without the header. Empty lines between
// messages (keep-alives) are skipped, as is every line before a start line
// ("SIP/2.0 ..." or "... SIP/2.0"), so that a stream picked up in the middle
// finds the next message. Headers whose body would take the message past
// `maxLength`, or that reach it without ending, are skipped.
Framing frameSip(const u_char* data, std::size_t length, std::size_t maxLength);

// A TPKT message (RFC 1006): version 3, a reserved byte, the whole
// message's length in two bytes. Bytes that cannot start one are skipped.
Framing frameTpkt(const u_char* data, std::size_t length);

#endif
