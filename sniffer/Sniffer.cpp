#include "Sniffer.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <unistd.h>

#include <log4cxx/propertyconfigurator.h>

#include "Config.h"
#include "Decapsulator.h"
#include "SngDissector.h"
#include "SnifferConfig.h"
#include "StringTokenizer.h"

pcap_t* Sniffer::handle[maxDevices] = {};
LinkLayer Sniffer::linkLayer[maxDevices];
pthread_t Sniffer::thread[maxDevices];
bool Sniffer::threadStarted[maxDevices] = {};
bool Sniffer::deviceDown[maxDevices] = {true};
int Sniffer::deviceCount = 0;
int Sniffer::count = -1;
std::atomic<bool> Sniffer::endMain{false};
std::atomic<int> Sniffer::capturesRunning{0};
log4cxx::LoggerPtr Sniffer::logger = log4cxx::Logger::getLogger("SnifferClient");

namespace {
const char* const usageText =
    "Usage: UdpSniffer [-d device] [-f filter] [-h server] [-p port] [-i serverSig]\t\t\t\t\t[-q portSig] "
    "[-c count] [-e]\nwhere:\n"
    "\t-d The device name to sniff, defaults pcap choses device; e.g. eth0\n"
    "\t-f The sniff filter, defaults to udp; e.g. udp\n"
    "\t-h The server host name, defaults to 127.0.0.1; e.g. 192.168.3.22\n"
    "\t-p The server port name, defaults to 6000; e.g. 6000\n"
    "\t-i The signalling server hostname, defaults to server host; e.g. 192.168.3.22\n"
    "\t-q The signalling server port, defaults to server port; e.g. 6001\n"
    "\t-c The number of packets to sniff, defaults to -1, -1 endless loop; e.g -1\n";

// SIGUSR1 only has to interrupt a capture read blocked in the kernel.
void signalHandler(int) {}

// In file mode a key the file leaves empty may come from the environment.
std::string fileThenEnvironment(const std::string& key) {
    const std::string value = Config::dft()->getProperty(key);
    return value.empty() ? EngineOptions::fromEnvironment(key) : value;
}
}  // namespace

Sniffer::Sniffer()
    : filter("udp"),
      serverNameMedia("127.0.0.1"),
      serverPortMedia(6000),
      serverNameSig(nullptr),
      serverPortSig(0),
      serverProtocol("TCP") {
    std::strcpy(logLevel, "INFO");
    errbuf[0] = 0;
    count = -1;
    dissector = new SngDissector();
    for (int i = 0; i < maxDevices; ++i)
        threadId[i] = i;
}

Sniffer::~Sniffer() {
    statsReporter.reset();  // it reads the dissector
    delete snifferConfig;
    // A dissector made later in the process replaces (and destroys) this one.
    if (dissector == SngDissector::dft())
        delete dissector;
    for (int i = 0; i < deviceCount; ++i) {
        if (handle[i])
            pcap_close(handle[i]);
        handle[i] = nullptr;
    }
    if (fpCompiled)
        pcap_freecode(&fp);
}

void Sniffer::installWakeSignal() {
    // No SA_RESTART: the signal must interrupt a blocked read, not resume it.
    struct sigaction action {};
    action.sa_handler = signalHandler;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0;
    sigaction(SIGUSR1, &action, nullptr);
}

// ---------------------------------------------------------------- configuration

int Sniffer::setDevice(const char* devices) {
    StringTokenizer tokens(devices, ';');
    std::string names[maxDevices];
    int n = 0;
    while (tokens.hasMoreTokens()) {
        std::string name = tokens.nextToken();
        if (n == maxDevices) {
            LOG4CXX_ERROR(logger, "Too many devices in " << devices << ": at most " << maxDevices << " are supported");
            return 1;
        }
        if (name.size() > static_cast<std::size_t>(maxDeviceNameLength)) {
            LOG4CXX_ERROR(logger, "Device name longer than " << maxDeviceNameLength << " characters: " << name);
            return 1;
        }
        names[n++] = std::move(name);
    }
    for (int i = 0; i < n; ++i)
        device[i] = std::move(names[i]);
    deviceCount = n;
    return 0;
}

int Sniffer::configure(int argc, char** argv) {
    const char* deviceList = nullptr;
    const char* chosenFilter = "udp";
    optind = 0;  // a full rescan: configure may run more than once in a process
    int c;
    while ((c = getopt(argc, argv, "d:f:h:p:")) != -1) {
        switch (c) {
        case 'd': deviceList = optarg; break;
        case 'f': chosenFilter = optarg; break;
        case 'h': serverNameMedia = optarg; break;
        case 'p': serverPortMedia = std::atoi(optarg); break;
        default:
            LOG4CXX_ERROR(logger, "Invalid argument " << c);
            LOG4CXX_ERROR(logger, usageText);
            break;
        }
    }
    if (!deviceList) {
        pcap_if_t* all = nullptr;
        // The first device libpcap would capture on, as its lookup has always chosen.
        if (pcap_findalldevs(&all, errbuf) == 0 && all)
            device[0] = all->name;
        const bool found = all != nullptr;
        pcap_freealldevs(all);
        if (!found) {
            LOG4CXX_ERROR(logger, "Couldn't find default device=" << errbuf);
            return 1;
        }
        deviceList = device[0].c_str();
    }
    const std::string devices = deviceList;
    if (setDevice(devices.c_str()) != 0 || !loadOptions(EngineOptions::fromEnvironment))
        return 1;
    promiscuous = 1;
    count = -1;
    serverNameSig = serverNameMedia;
    serverPortSig = serverPortMedia;
    filter = chosenFilter;
    displayConfig();
    return 0;
}

int Sniffer::configureFromFile(int argc, char** argv) {
    std::string logCfgFileName = "./log4cxx.properties";
    instance = 0;
    cfgFileName = "sniffer.properties";
    optind = 0;
    int c;
    while ((c = getopt(argc, argv, "c:l:")) != -1) {
        switch (c) {
        case 'c': cfgFileName = optarg; break;
        case 'l': logCfgFileName = optarg; break;
        default: LOG4CXX_ERROR(logger, "Usage: sniffer [-c <cfgFileName>] [-l <logCfgFileName>]"); return 1;
        }
    }
    for (const std::string* name : {&cfgFileName, &logCfgFileName}) {
        if (name->size() > static_cast<std::size_t>(maxFileNameLength)) {
            LOG4CXX_ERROR(logger, "File name longer than " << maxFileNameLength << " characters: " << *name);
            return 1;
        }
    }
    log4cxx::PropertyConfigurator::configure(logCfgFileName);
    snifferConfig = new SnifferConfig(cfgFileName);

    if (setDevice(snifferConfig->getDevice()) != 0 || !loadOptions(fileThenEnvironment))
        return 1;
    serverNameMedia = snifferConfig->getServerName();
    serverPortMedia = snifferConfig->getServerPort();
    serverNameSig = serverNameMedia;
    serverPortSig = serverPortMedia;
    serverProtocol = snifferConfig->getServerProtocol();
    filter = snifferConfig->getFilter();
    traceSignalling = snifferConfig->getTraceSignalling();
    runAsUser = snifferConfig->getRunAsUser();
    count = -1;
    std::strcpy(logLevel, snifferConfig->getLogLevel());  // a validated level name: at most 5 characters
    setLoggerLevel(logLevel);
    promiscuous = 1;
    return 0;
}

void Sniffer::setLoggerLevel(const char* name) {
    static const std::pair<const char*, log4cxx::LevelPtr (*)()> levels[] = {
        {SnifferConfig::Debug, &log4cxx::Level::getDebug}, {SnifferConfig::Info, &log4cxx::Level::getInfo},
        {SnifferConfig::Warn, &log4cxx::Level::getWarn},   {SnifferConfig::Error, &log4cxx::Level::getError},
        {SnifferConfig::Fatal, &log4cxx::Level::getFatal},
    };
    for (const auto& level : levels) {
        if (std::strcmp(name, level.first) == 0) {
            logger->setLevel(level.second());
            return;
        }
    }
}

void Sniffer::displayConfig() {
    std::ostringstream text;
    for (int i = 0; i < deviceCount; ++i)
        text << "device[" << i << "]=" << device[i] << "\n";
    text << "Filter=" << filter << "\n"
         << "ServerNameMedia=" << serverNameMedia << "\n"
         << "ServerPortMedia=" << serverPortMedia << "\n"
         << "ServerProtocol=" << serverProtocol << "\n"
         << "DeviceCount=" << deviceCount << "\n"
         << "LogLevel=" << logLevel << "\n"
         << "TraceSignalling=" << (traceSignalling ? 1 : 0);
    LOG4CXX_INFO(logger, text.str());
}

// ---------------------------------------------------------------- set-up

bool Sniffer::isReplayFile(const std::string& name) {
    return name.compare(0, std::strlen(filePrefix), filePrefix) == 0;
}

pcap_t* Sniffer::getHandle(int i) {
    const std::string& name = device[i];
    if (isReplayFile(name))
        handle[i] = pcap_open_offline(name.c_str() + std::strlen(filePrefix), errbuf);
    else
        handle[i] = pcap_open_live(name.c_str(), snapLength, promiscuous, options.captureTimeoutMs, errbuf);
    if (handle[i])
        LOG4CXX_INFO(logger, "Device: " << name << " opened");
    else
        LOG4CXX_ERROR(logger, "Couldn't open device " << name << ":" << errbuf);
    return handle[i];
}

bool Sniffer::compileAndInstallFilter(int i) {
    pcap_t* h = handle[i];
    if (fpCompiled) {
        pcap_freecode(&fp);
        fpCompiled = false;
    }
    if (pcap_compile(h, &fp, filter, 0, netmask) == -1) {
        LOG4CXX_ERROR(logger, "Couldn't parse filter " << filter << ":" << pcap_geterr(h));
        return false;
    }
    fpCompiled = true;
    LOG4CXX_INFO(logger, "Filter compilation ok: " << filter);
    return true;
}

bool Sniffer::useLinkType(int i) {
    const int linkType = pcap_datalink(handle[i]);
    if (!LinkLayer::reads(linkType)) {
        const char* name = pcap_datalink_val_to_name(linkType);
        LOG4CXX_ERROR(logger, "Couldn't use device " << device[i] << ": link type "
                                                     << (name ? name : std::to_string(linkType))
                                                     << " is not supported");
        pcap_close(handle[i]);
        handle[i] = nullptr;
        return false;
    }
    linkLayer[i] = LinkLayer(linkType, options.decapsulate ? Decapsulator::readsEtherType : LinkLayer::onlyIpv4);
    return true;
}

int Sniffer::setupSniffing() {
    displayConfig();
    const std::string changed = options.describeChanges();
    if (!changed.empty())
        LOG4CXX_INFO(logger, "Opt-in settings: " << changed);
    endMain = false;
    for (int i = 0; i < deviceCount; ++i) {
        if (!getHandle(i) || !useLinkType(i)) {
            deviceDown[i] = true;
            continue;
        }
        deviceDown[i] = false;
        if (!compileAndInstallFilter(i))
            return 3;
        if (pcap_setfilter(handle[i], &fp) != 0) {
            LOG4CXX_ERROR(logger, "Couldn't install filter " << filter << ": " << pcap_geterr(handle[i]));
            return 4;
        }
        LOG4CXX_INFO(logger, "Filter instalation ok: " << filter);
    }
    // Counted from here, not from thread start, so that a watcher started
    // before the threads does not see the captures as already finished.
    capturesRunning = 0;
    for (int i = 0; i < deviceCount; ++i)
        capturesRunning += deviceDown[i] ? 0 : 1;
    dissector->setSniffer(this);
    dissector->useOptions(options);
    dissector->setServerNameMedia(serverNameMedia);
    dissector->setServerPortMedia(serverPortMedia);
    dissector->setServerNameSig(serverNameSig);
    dissector->setServerPortSig(serverPortSig);
    dissector->makeConnection(embedded);
    if (!embedded)
        dissector->startCmdReaderThread();
    dissector->setTraceSignalling(traceSignalling);
    return 0;
}

// ---------------------------------------------------------------- running

void Sniffer::startCaptureThreads() {
    std::lock_guard<std::mutex> guard(runLock);
    if (endMain)
        return;  // stopped before it started: no thread would ever be joined
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_JOINABLE);
    for (int i = 0; i < deviceCount; ++i) {
        if (deviceDown[i])
            continue;
        const int rc = pthread_create(&thread[i], &attr, startLoop, &threadId[i]);
        if (rc != 0) {
            LOG4CXX_ERROR(logger, "Error - return code from pthread_create() is " << rc);
            std::exit(-1);
        }
        threadStarted[i] = true;
        LOG4CXX_INFO(logger, "PCAP thread created " << threadId[i]);
    }
    pthread_attr_destroy(&attr);
}

void Sniffer::startSniffing() {
    LOG4CXX_INFO(logger, "Sniffing started.");
    {
        std::lock_guard<std::mutex> guard(runLock);
        if (!endMain && options.anyKeyGiven()) {
            statsReporter = std::make_unique<StatsReporter>([this] { return describeStats(); }, options.statsIntervalS);
            statsReporter->start();
        }
    }
    startCaptureThreads();
    while (!getEndMain())
        dissector->consumePacket();
    LOG4CXX_INFO(logger, "Sniffing ended.");
}

void* Sniffer::startLoop(void* idp) {
    const int i = *static_cast<int*>(idp);
    const long rc = pcap_loop(handle[i], count, gotPacket, reinterpret_cast<u_char*>(&linkLayer[i]));
    if (rc == PCAP_ERROR)
        LOG4CXX_ERROR(logger, "Capture on device " << i << " ended: " << pcap_geterr(handle[i]));
    --capturesRunning;
    return reinterpret_cast<void*>(rc);
}

// `args` is the device's LinkLayer; none (a caller of its own) means Ethernet.
void Sniffer::gotPacket(u_char* args, const pcap_pkthdr* header, const u_char* packet) {
    SngDissector* target = SngDissector::dft();
    if (getEndMain() || !target)
        return;
    // Only a damaged capture file claims a longer frame; its copy would be
    // as large as the claim.
    if (header->len > maxWireLength)
        return;
    const auto* link = reinterpret_cast<const LinkLayer*>(args);
    if (link && !link->isEthernet()) {
        queueAsEthernet(*target, *link, *header, packet);
        return;
    }
    // The queue copies the frame as long as it was on the wire; beyond the
    // captured bytes (only past the snap length) it reads as zeros.
    target->producePacket(*header, packet);
}

void Sniffer::queueAsEthernet(SngDissector& target, const LinkLayer& link, const pcap_pkthdr& header,
                              const u_char* packet) {
    LinkLayer::AsEthernet frame;
    if (link.asEthernet(header, packet, frame))
        target.producePacket(frame.header, frame.ethernet, LinkLayer::ethernetHeaderLength, frame.rest);
}

void Sniffer::stopSniffing() {
    LOG4CXX_INFO(logger, "Ending Sniffing ...");
    {
        std::lock_guard<std::mutex> guard(runLock);
        for (int i = 0; i < deviceCount; ++i) {
            if (deviceDown[i] || !threadStarted[i])
                continue;
            pcap_breakloop(handle[i]);
            pthread_kill(thread[i], SIGUSR1);
            const int status = pthread_join(thread[i], nullptr);
            threadStarted[i] = false;
            LOG4CXX_INFO(logger, "Completed join with PCAP thread " << i << " status=" << status);
        }
        endMain = true;
    }
    pthread_t* cmdThread = embedded ? nullptr : dissector->getCmdReaderThread();
    dissector->signalEnd();
    if (cmdThread) {
        const int status = pthread_join(*cmdThread, nullptr);
        LOG4CXX_INFO(logger, "Completed join with Command reader thread, status=" << status);
    }
    std::lock_guard<std::mutex> guard(runLock);
    if (statsReporter)
        statsReporter->stop();
}

std::string Sniffer::describeStats() const {
    std::ostringstream line;
    for (int i = 0; i < deviceCount; ++i) {
        pcap_stat counts{};
        if (getCaptureStats(i, counts))
            line << "device " << device[i] << " captured=" << counts.ps_recv << " dropped=" << counts.ps_drop << "; ";
    }
    EngineStats& s = dissector->getStats();
    auto n = [](const EngineStats::Counter& counter) { return EngineStats::read(counter); };
    line << "queued=" << dissector->getQueuedCount() << " queueDropped=" << dissector->getQueueDropCount()
         << "; preRoll held=" << n(s.preRollHeld) << " forwarded=" << n(s.preRollForwarded)
         << " dropped=" << n(s.preRollDropped) << "; forwarded sip=" << n(s.forwardedSip)
         << " rtp=" << n(s.forwardedRtp) << " h323=" << n(s.forwardedH323) << " heartbeat=" << n(s.forwardedHeartbeat)
         << " bytes=" << n(s.bytesSent) << "; link losses=" << n(s.linkLosses) << " reconnects=" << n(s.reconnects)
         << " droppedLinkDown=" << n(s.droppedLinkDown);
    if (options.exportsHep())
        line << "; hep sent=" << n(s.hepSent) << " dropped=" << n(s.hepDropped);
    if (options.restrictsCommands())
        line << "; commands ignored=" << n(s.commandsIgnored);
    if (options.reassembleIp)
        line << "; reassembly held=" << n(s.reassemblyHeld) << " reassembled=" << n(s.reassembled)
             << " timedOut=" << n(s.reassemblyTimedOut) << " dropped=" << n(s.reassemblyDropped)
             << " oversized=" << n(s.reassemblyOversized) << " heldBytes=" << n(s.reassemblyBytes);
    if (options.reassemblesTcp())
        line << "; tcp streams=" << n(s.tcpStreams) << " sip=" << n(s.sipOverTcp) << " tpkt=" << n(s.tpktMessages)
             << " holesSkipped=" << n(s.tcpHolesSkipped) << " dropped=" << n(s.tcpStreamsDropped)
             << " heldBytes=" << n(s.tcpStreamBytes);
    return line.str();
}

bool Sniffer::capturesFilesOnly() const {
    for (int i = 0; i < deviceCount; ++i)
        if (!isReplayFile(device[i]))
            return false;
    return deviceCount > 0;
}

bool Sniffer::allFilesRead() const {
    return capturesRunning == 0 && dissector->isDrained();
}

bool Sniffer::getCaptureStats(int i, pcap_stat& stats) const {
    if (i < 0 || i >= deviceCount || deviceDown[i] || !handle[i])
        return false;
    return pcap_stats(handle[i], &stats) == 0;
}
