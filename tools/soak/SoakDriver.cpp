// Soak: the sniffer program forwards loopback traffic for SECONDS at RATE
// packets a second. A tenth of the packets are SIP; the rest RTP, half of it
// to destinations listed for the whole run, half to destinations that the
// recorder adds and removes every few milliseconds. SIP and the steadily
// listed RTP must all arrive; what does not is reported as lost, with the
// sniffer's resident size at start and end.
//   soak_driver SECONDS RATE
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <random>

#include "FaultSupport.h"

namespace {
constexpr uint16_t steadyFirst = 40000;
constexpr int steadyCount = 20;
constexpr uint16_t churnFirst = 41000;
constexpr int churnCount = 1000;
const char* const filter = "udp and (dst port 5060 or dst portrange 40000-41999)";

struct Counts {
    std::atomic<uint64_t> sip{0}, steady{0}, churn{0};
};

// Frames by class; the recorder keeps none of them.
void countInto(TcpRecorder& recorder, Counts& received) {
    recorder.tapInstead([&received](const ForwardedFrame& frame) {
        const int port = frame.bytes[7] << 8 | frame.bytes[8];
        if (frame.protocol() == 1)
            ++received.sip;
        else if (frame.protocol() == 2 && port < steadyFirst + steadyCount)
            ++received.steady;
        else if (frame.protocol() == 2)
            ++received.churn;
    });
}

void report(const char* when, double seconds, const SnifferProgram& sniffer, const Counts& sent,
            const Counts& received) {
    std::printf("%-5s %6.0f s  rss %7ld kB  sip %llu/%llu  steady rtp %llu/%llu  churn rtp %llu forwarded of %llu\n",
                when, seconds, sniffer.residentKb(), (unsigned long long)received.sip.load(),
                (unsigned long long)sent.sip.load(), (unsigned long long)received.steady.load(),
                (unsigned long long)sent.steady.load(), (unsigned long long)received.churn.load(),
                (unsigned long long)sent.churn.load());
    std::fflush(stdout);
}
}  // namespace

int main(int argc, char** argv) {
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 600;
    const int rate = argc > 2 ? std::atoi(argv[2]) : 50000;
    if (!enterPrivateNetwork()) {
        std::fprintf(stderr, "soak: needs root, for a network namespace of its own\n");
        return 2;
    }
    Counts received;  // outlives the recorder that counts into it
    TcpRecorder recorder;
    countInto(recorder, received);
    SnifferProgram sniffer({"Device=lo", std::string("Filter=") + filter, "ServerName=127.0.0.1",
                            "ServerPort=" + std::to_string(recorder.port()), "ServerProtocol=TCP"});
    UdpSocket phone;
    if (!waitUntil(
            [&] {
                phone.sendTo(5060, sipInvite("warm-up"));
                return received.sip > 0;
            },
            10s)) {
        std::fprintf(stderr, "soak: the sniffer forwards nothing\n%s", sniffer.output().c_str());
        return 1;
    }
    std::vector<Bytes> steady;
    for (int i = 0; i < steadyCount; ++i)
        steady.push_back(command(1, "127.0.0.1", uint16_t(steadyFirst + i)));
    if (!recorder.apply(steady, 10s))
        return 1;
    std::this_thread::sleep_for(1500ms);  // libpcap may hold the last warm-up packets for a second
    received.sip = 0;

    Counts sent;
    const Bytes invite = sipInvite("soak");
    const Bytes voice = rtpPacket();
    const int perTick = std::max(1, rate / 1000);
    uint64_t packet = 0;
    std::mt19937 random(42);
    uint64_t churnCommands = 0;
    int connectionsSeen = recorder.connections();
    {
        Traffic traffic(
            [&] {
                for (int i = 0; i < perTick; ++i, ++packet) {
                    if (packet % 10 == 0) {
                        phone.sendTo(5060, invite);
                        ++sent.sip;
                    } else if (packet % 2) {
                        phone.sendTo(uint16_t(steadyFirst + packet % steadyCount), voice);
                        ++sent.steady;
                    } else {
                        phone.sendTo(uint16_t(churnFirst + packet % churnCount), voice);
                        ++sent.churn;
                    }
                }
            },
            1ms);
        Traffic churn(
            [&] {
                // A recorder re-adds what it wants after the sniffer reconnects.
                if (recorder.connections() != connectionsSeen) {
                    connectionsSeen = recorder.connections();
                    for (const Bytes& add : steady)
                        recorder.send(add);
                }
                recorder.send(command(1, "127.0.0.1", uint16_t(churnFirst + random() % churnCount)));
                recorder.send(command(2, "127.0.0.1", uint16_t(churnFirst + random() % churnCount)));
                churnCommands += 2;
            },
            5ms);
        const auto start = std::chrono::steady_clock::now();
        auto elapsed = [&] { return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(); };
        std::this_thread::sleep_for(5s);
        report("start", elapsed(), sniffer, sent, received);
        while (elapsed() < seconds) {
            std::this_thread::sleep_for(std::min(60.0, seconds - elapsed()) * 1s);
            report("", elapsed(), sniffer, sent, received);
        }
    }
    std::this_thread::sleep_for(2s);
    report("end", seconds, sniffer, sent, received);
    const uint64_t lost = (sent.sip - received.sip) + (sent.steady - received.steady);
    std::printf(
        "sent %llu packets (%.0f a second); frames lost: %llu of %llu that had to arrive; "
        "%llu add/remove commands; %d reconnections (%d full send buffers)\n",
        (unsigned long long)packet, double(packet) / seconds, (unsigned long long)lost,
        (unsigned long long)(sent.sip + sent.steady), (unsigned long long)churnCommands, recorder.connections() - 1,
        sniffer.countLines("WARN Can not send. Connection to recorder lost."));
    const std::optional<int> status = sniffer.stop();
    std::printf("sniffer exit status %d\n", status.value_or(-1));
    return status == 0 ? 0 : 1;
}
