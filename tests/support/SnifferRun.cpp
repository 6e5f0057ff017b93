#include "SnifferRun.h"

#include <cstdlib>

#include "EngineOptions.h"
#include "Sniffer.h"

OptionInEnvironment::OptionInEnvironment(const std::string& key, const std::string& value)
    : name(EngineOptions::environmentPrefix + key) {
    setenv(name.c_str(), value.c_str(), 1);
}

OptionInEnvironment::~OptionInEnvironment() {
    unsetenv(name.c_str());
}

SnifferRun::SnifferRun(const std::vector<std::string>& options, const char* transport) : words(options) {
    static const bool wakeSignalInstalled = (Sniffer::installWakeSignal(), true);
    (void)wakeSignalInstalled;
    words.insert(words.begin(), "udpsniffer");
    std::vector<char*> argv;
    for (std::string& w : words)
        argv.push_back(w.data());
    argv.push_back(nullptr);

    engine = std::make_unique<Sniffer>();
    if (engine->configure(static_cast<int>(words.size()), argv.data()) != 0)
        return;
    if (transport)
        engine->setServerProtocol(transport);
    else
        engine->setEmbedded(true);
    setup = engine->setupSniffing();
    if (setup == 0)
        consumer = std::thread([this] { engine->startSniffing(); });
}

SnifferRun::~SnifferRun() {
    stop();
}

void SnifferRun::stop() {
    if (!consumer.joinable())
        return;
    engine->stopSniffing();
    consumer.join();
}
