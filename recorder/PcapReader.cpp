#include "PcapReader.h"

#include "PcapFormat.h"

#include <arpa/inet.h>

#include <cstring>

namespace recorder {

bool PcapReader::open(const std::filesystem::path& path) {
    file_.reset(std::fopen(path.c_str(), "rb"));
    pcap_file_header header{};
    return file_ && std::fread(&header, sizeof header, 1, file_.get()) == 1 && header.magic == kPcapMagic;
}

bool PcapReader::next(Datagram& datagram) {
    pcap_record_header record{};
    if (!file_ || std::fread(&record, sizeof record, 1, file_.get()) != 1 || record.incl_len > kSnapLength)
        return false;
    frame_.resize(record.incl_len);
    if (std::fread(frame_.data(), 1, frame_.size(), file_.get()) != frame_.size() || frame_.size() < sizeof(udp_frame))
        return false;
    udp_frame headers;
    std::memcpy(&headers, frame_.data(), sizeof headers);
    if (headers.ip.ip_vhl != 0x45 || headers.ip.ip_p != IPPROTO_UDP)
        return false;  // not what the writer writes
    datagram.arrival = TimePoint(std::chrono::duration_cast<Clock::duration>(
        std::chrono::seconds(record.ts_sec) + std::chrono::microseconds(record.ts_usec)));
    datagram.source = {ntohl(headers.ip.ip_src), ntohs(headers.udp.uh_sport)};
    datagram.destination = {ntohl(headers.ip.ip_dst), ntohs(headers.udp.uh_dport)};
    datagram.payload.assign(frame_, sizeof headers, std::string::npos);
    return true;
}

}  // namespace recorder
