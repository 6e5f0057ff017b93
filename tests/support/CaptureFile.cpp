#include "CaptureFile.h"

#include <pcap.h>
#include <stdexcept>

void writeCapture(const std::string& path, int linkType, const std::vector<Bytes>& frames) {
    pcap_t* dead = pcap_open_dead(linkType, 65535);
    pcap_dumper_t* file = pcap_dump_open(dead, path.c_str());
    if (!file) {
        pcap_close(dead);
        throw std::runtime_error("cannot write " + path);
    }
    pcap_pkthdr header{};
    for (const Bytes& frame : frames) {
        ++header.ts.tv_sec;
        header.caplen = header.len = static_cast<bpf_u_int32>(frame.size());
        pcap_dump(reinterpret_cast<u_char*>(file), &header, frame.data());
    }
    pcap_dump_close(file);
    pcap_close(dead);
}
