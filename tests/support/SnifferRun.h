#ifndef SNIFFER_TESTS_SNIFFER_RUN_H
#define SNIFFER_TESTS_SNIFFER_RUN_H

#include <memory>
#include <string>
#include <thread>
#include <vector>

class Sniffer;

// SNIFFER_<key>=value for the life of the object.
class OptionInEnvironment {
public:
    OptionInEnvironment(const std::string& key, const std::string& value);
    ~OptionInEnvironment();
    OptionInEnvironment(const OptionInEnvironment&) = delete;
    OptionInEnvironment& operator=(const OptionInEnvironment&) = delete;

private:
    std::string name;
};

// One engine in this process, configured from command-line words
// ("-d", "lo", "-f", "udp", ...) with the given recorder transport (none:
// embedded, forwarding to the in-process link), set up, and consuming on a
// thread of its own until stop() or destruction.
class SnifferRun {
public:
    SnifferRun(const std::vector<std::string>& options, const char* transport);
    ~SnifferRun();
    SnifferRun(const SnifferRun&) = delete;
    SnifferRun& operator=(const SnifferRun&) = delete;

    // Result of setupSniffing(); the consumer runs only when it is 0.
    int setupResult() const { return setup; }
    // stopSniffing() from this thread, then the consumer is joined.
    void stop();

private:
    std::vector<std::string> words;  // configure() keeps pointers into them
    std::unique_ptr<Sniffer> engine;
    int setup = -1;
    std::thread consumer;
};

#endif
