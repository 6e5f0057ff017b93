#include "Wire.h"

#include <arpa/inet.h>

#include <cstring>

namespace recorder {

CommandBytes encodeCommand(CommandCode code, const Endpoint& rtp) {
    const sniffer_command command{static_cast<uint8_t>(code), htonl(rtp.ip), htons(rtp.port)};
    CommandBytes bytes;
    std::memcpy(bytes.data(), &command, bytes.size());
    return bytes;
}

FrameStatus readFrame(const uint8_t* data, size_t size, Frame& frame, size_t& length, std::string& problem) {
    if (size < 2)
        return FrameStatus::Incomplete;
    length = (size_t{data[0]} << 8) | data[1];
    if (length < sizeof(fwd_header)) {
        problem = "length " + std::to_string(length) + " is under the 15-byte header";
        return FrameStatus::Malformed;
    }
    if (size < 3)
        return FrameStatus::Incomplete;
    const uint8_t protocol = data[2];
    if (protocol < static_cast<uint8_t>(Protocol::Sip) || protocol > static_cast<uint8_t>(Protocol::H323)) {
        problem = "unknown protocol " + std::to_string(protocol);
        return FrameStatus::Malformed;
    }
    if (size < length)
        return FrameStatus::Incomplete;

    fwd_header header;
    std::memcpy(&header, data, sizeof header);
    frame.protocol = static_cast<Protocol>(protocol);
    frame.destination = {ntohl(header.dst_ip), ntohs(header.dst_port)};
    frame.source = {ntohl(header.src_ip), ntohs(header.src_port)};
    frame.payload = {reinterpret_cast<const char*>(data) + sizeof header, length - sizeof header};
    return FrameStatus::Complete;
}

void FrameStream::append(const uint8_t* data, size_t size, TimePoint arrival) {
    buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(start_));
    start_ = 0;
    buffer_.insert(buffer_.end(), data, data + size);
    arrival_ = arrival;
}

FrameStatus FrameStream::next(Frame& frame) {
    size_t length = 0;
    const FrameStatus status = readFrame(buffer_.data() + start_, buffer_.size() - start_, frame, length, problem_);
    if (status == FrameStatus::Complete) {
        frame.arrival = arrival_;
        start_ += length;
    }
    return status;
}

void FrameStream::clear() {
    buffer_.clear();
    start_ = 0;
    problem_.clear();
}

FrameStatus readDatagram(const uint8_t* data, size_t size, Frame& frame, std::string& problem) {
    size_t length = 0;
    const FrameStatus status = readFrame(data, size, frame, length, problem);
    if (status == FrameStatus::Malformed)
        return status;
    if (status == FrameStatus::Incomplete || length != size) {
        problem = "datagram of " + std::to_string(size) + " bytes " +
                  (size < 2 ? std::string("has no length field") : "carries length " + std::to_string(length));
        return FrameStatus::Malformed;
    }
    return status;
}

}  // namespace recorder
