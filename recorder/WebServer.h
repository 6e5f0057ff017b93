#pragma once

#include "CallIndex.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace httplib {
class Server;
class Request;
class Response;
}  // namespace httplib

namespace recorder {

// The recorder's read-only web side, on threads of its own: the call list and call pages, the
// JSON API under /api, the calls' WAV and pcap files, and /metrics.
class WebServer {
public:
    // `token`, when not empty, is asked of every request; `metrics` gives the text of /metrics.
    WebServer(CallIndex& index, std::filesystem::path root, std::string token, std::function<std::string()> metrics);
    ~WebServer();
    WebServer(const WebServer&) = delete;
    WebServer& operator=(const WebServer&) = delete;

    // Binds and starts serving; false when the address cannot be had.
    bool start(const std::string& address, uint16_t port);
    void stop();

private:
    bool authorised(const httplib::Request& request) const;
    void listCalls(const httplib::Request& request, httplib::Response& response);
    void showCall(const httplib::Request& request, httplib::Response& response);
    void sendFile(const httplib::Request& request, httplib::Response& response);

    CallIndex& index_;
    std::filesystem::path root_;
    std::string token_;
    std::function<std::string()> metrics_;
    std::unique_ptr<httplib::Server> server_;
    std::thread thread_;
};

}  // namespace recorder
