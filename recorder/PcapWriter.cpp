#include "PcapWriter.h"

#include "PcapFormat.h"

#include <arpa/inet.h>

#include <algorithm>

namespace recorder {
namespace {

constexpr size_t kMaxUdpPayload = 65535 - sizeof(ip_header) - sizeof(udp_header);
// About a hundred RTP packets a write; ten thousand calls then hold some 160 MiB at most.
constexpr size_t kFlushSize = 16384;

template <class T>
void appendStruct(std::string& out, const T& value) {
    out.append(reinterpret_cast<const char*>(&value), sizeof value);
}

uint16_t ipChecksum(const ip_header& header) {
    const auto* words = reinterpret_cast<const uint8_t*>(&header);
    uint32_t sum = 0;
    for (size_t i = 0; i < sizeof header; i += 2)
        sum += (words[i] << 8) | words[i + 1];
    while (sum >> 16)
        sum = (sum & 0xffff) + (sum >> 16);
    return htons(static_cast<uint16_t>(~sum));
}

}  // namespace

PcapWriter::PcapWriter(FileCache& files, std::filesystem::path path) : files_(files), id_(files.add(std::move(path))) {
    appendStruct(pending_, pcap_file_header{kPcapMagic, 2, 4, 0, 0, kSnapLength, kLinktypeEthernet});
}

PcapWriter::~PcapWriter() {
    close();
}

void PcapWriter::write(TimePoint arrival, const Endpoint& source, const Endpoint& destination,
                       std::string_view payload) {
    if (!open_)
        return;
    payload = payload.substr(0, kMaxUdpPayload);

    udp_frame frame{};
    // Locally administered addresses: the real ones never reach the recorder.
    frame.ether = {{0x02, 0, 0, 0, 0, 0x02}, {0x02, 0, 0, 0, 0, 0x01}, htons(0x0800)};
    frame.ip.ip_vhl = 0x45;
    frame.ip.ip_len = htons(static_cast<uint16_t>(sizeof(ip_header) + sizeof(udp_header) + payload.size()));
    frame.ip.ip_id = htons(ipId_++);
    frame.ip.ip_ttl = 64;
    frame.ip.ip_p = IPPROTO_UDP;
    frame.ip.ip_src = htonl(source.ip);
    frame.ip.ip_dst = htonl(destination.ip);
    frame.ip.ip_sum = ipChecksum(frame.ip);
    frame.udp = {htons(source.port), htons(destination.port),
                 htons(static_cast<uint16_t>(sizeof(udp_header) + payload.size())), 0};  // 0: no checksum

    const auto since = arrival.time_since_epoch();
    const auto micros = std::chrono::duration_cast<std::chrono::microseconds>(since).count();
    const auto length = static_cast<uint32_t>(sizeof frame + payload.size());
    const pcap_record_header record{static_cast<uint32_t>(micros / 1000000), static_cast<uint32_t>(micros % 1000000),
                                    length, length};
    appendStruct(pending_, record);
    appendStruct(pending_, frame);
    pending_.append(payload);
    if (pending_.size() >= kFlushSize)
        flush();
}

void PcapWriter::flush() {
    files_.writeAt(id_, offset_, pending_.data(), pending_.size());
    offset_ += pending_.size();
    pending_.clear();
}

void PcapWriter::close() {
    if (!open_)
        return;
    flush();
    files_.remove(id_);
    open_ = false;
    pending_.shrink_to_fit();
}

}  // namespace recorder
