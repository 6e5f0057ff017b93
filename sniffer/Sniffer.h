#ifndef SNIFFER_SNIFFER_H
#define SNIFFER_SNIFFER_H

#include <atomic>
#include <memory>
#include <mutex>
#include <pcap.h>
#include <pthread.h>
#include <string>

#include <log4cxx/logger.h>

#include "EngineOptions.h"
#include "LinkLayer.h"
#include "StatsReporter.h"

class SngDissector;
class SnifferConfig;

// The capture engine: settings, devices and their libpcap handles, one
// capture thread per opened device, and the order in which all of it starts
// and stops. The thread that calls startSniffing() becomes the single
// consumer that classifies and forwards every frame.
//
// A device written "file:PATH" replays a capture file through the same
// filter and pipeline; its capture thread ends at the end of the file.
class Sniffer {
public:
    static constexpr int maxDevices = 10;
    // Device names include replay-file paths, hence more than an interface name.
    static constexpr int maxDeviceNameLength = 255;
    static constexpr int maxFileNameLength = 4095;
    static constexpr int snapLength = 8192;
    // libpcap's largest snapshot: no link carries a longer frame.
    static constexpr bpf_u_int32 maxWireLength = 262144;
    // The classic read time-out; the CaptureTimeout key shortens it.
    static constexpr int readTimeoutMs = 1000;
    static constexpr const char* filePrefix = "file:";

    Sniffer();
    virtual ~Sniffer();
    Sniffer(const Sniffer&) = delete;
    Sniffer& operator=(const Sniffer&) = delete;

    int configure(int argc, char** argv);
    int configureFromFile(int argc, char** argv);
    int setupSniffing();
    void startSniffing();
    void stopSniffing();

    // 0 on success; 1 when the list breaks the limits (nothing is kept then).
    int setDevice(const char* devices);
    pcap_t* getHandle(int i);
    static void gotPacket(u_char* args, const pcap_pkthdr* header, const u_char* packet);
    static void* startLoop(void* idp);
    void displayConfig();
    void setLoggerLevel(const char* logLevel);

    // Installs the do-nothing SIGUSR1 handler that lets stopSniffing()
    // interrupt a capture thread blocked in a read.
    static void installWakeSignal();
    // True when every device is a replay file.
    bool capturesFilesOnly() const;
    // True once every capture has ended and every packet has been processed.
    bool allFilesRead() const;
    // libpcap's counts for device i: frames received, and dropped for want
    // of buffer space. False when the device is not open or cannot tell.
    bool getCaptureStats(int i, pcap_stat& stats) const;

    const char* getDevice(int i) const { return device[i].c_str(); }
    int getDeviceCount() const { return deviceCount; }
    void setHandle(pcap_t* h, int i) { handle[i] = h; }
    const char* getFilter() const { return filter; }
    void setFilter(const char* f) { filter = f; }
    int getPromiscuous() const { return promiscuous; }
    void setPromiscuous(int p) { promiscuous = p; }
    int getCount() const { return count; }
    void setCount(int c) { count = c; }
    bool getEmbedded() const { return embedded; }
    void setEmbedded(bool e) { embedded = e; }
    bool getTraceSignalling() const { return traceSignalling; }
    void setTraceSignalling(bool t) { traceSignalling = t; }
    const char* getServerProtocol() const { return serverProtocol; }
    void setServerProtocol(const char* p) { serverProtocol = p; }
    const char* getServerNameMedia() const { return serverNameMedia; }
    int getServerPortMedia() const { return serverPortMedia; }
    const char* getRunAsUser() const { return runAsUser; }
    static bool getEndMain() { return endMain.load(std::memory_order_acquire); }
    SngDissector* getDissector() const { return dissector; }
    const EngineOptions& getOptions() const { return options; }
    // Reads the opt-in settings (see EngineOptions); false on a bad value.
    bool loadOptions(const EngineOptions::Lookup& lookup) { return options.load(lookup); }

private:
    static bool isReplayFile(const std::string& name);
    // The counters of the run as one line (see README, "Counters").
    std::string describeStats() const;
    bool compileAndInstallFilter(int i);
    // Chooses how device i's frames are read from its link type; false,
    // with an ERROR, for a link type the engine does not read.
    bool useLinkType(int i);
    static void queueAsEthernet(SngDissector& target, const LinkLayer& link, const pcap_pkthdr& header,
                                const u_char* packet);
    void startCaptureThreads();

    int threadId[maxDevices];
    std::string device[maxDevices];
    const char* filter;
    char logLevel[10];
    int promiscuous = 1;
    char errbuf[PCAP_ERRBUF_SIZE];
    bpf_program fp{};
    bool fpCompiled = false;
    bpf_u_int32 netmask = 0;
    std::string cfgFileName;
    int instance = 0;
    SnifferConfig* snifferConfig = nullptr;
    SngDissector* dissector;
    const char* serverNameMedia;
    int serverPortMedia;
    const char* serverNameSig;
    int serverPortSig;
    const char* serverProtocol;
    const char* runAsUser = "";
    bool embedded = false;
    bool traceSignalling = false;
    EngineOptions options;
    std::string Transport;
    std::string ProtocolList;
    std::string PortList;
    // Orders the start of the capture threads against a concurrent stop.
    std::mutex runLock;
    std::unique_ptr<StatsReporter> statsReporter;

    static pcap_t* handle[maxDevices];
    static LinkLayer linkLayer[maxDevices];
    static pthread_t thread[maxDevices];
    static bool threadStarted[maxDevices];
    static bool deviceDown[maxDevices];
    static int deviceCount;
    static int count;
    // Written by the starting and stopping threads, read by every capture
    // thread and by the consumer.
    static std::atomic<bool> endMain;
    static std::atomic<int> capturesRunning;
    static log4cxx::LoggerPtr logger;
};

#endif
