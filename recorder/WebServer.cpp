#include "WebServer.h"

#include "Log.h"
#include "WebPage.h"

#include <httplib.h>

#include <ctime>
#include <fstream>
#include <random>
#include <stdexcept>

namespace recorder {
namespace {

using nlohmann::json;

constexpr int64_t kMaxPerPage = 200;
constexpr int64_t kMaxPage = 1000000;

struct BadRequest : std::runtime_error {
    using std::runtime_error::runtime_error;
};

int64_t integerParameter(const httplib::Request& request, const char* name, int64_t fallback, int64_t low,
                         int64_t high) {
    if (!request.has_param(name))
        return fallback;
    const std::string text = request.get_param_value(name);
    char* end = nullptr;
    const long long value = std::strtoll(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || value < low || value > high)
        throw BadRequest(std::string(name) + ": a whole number from " + std::to_string(low) + " to " +
                         std::to_string(high) + " expected");
    return value;
}

// Milliseconds since the epoch, or a UTC time "2026-05-01T12:00", with seconds and a "Z" or not.
std::optional<int64_t> timeParameter(const httplib::Request& request, const char* name) {
    const std::string text = request.has_param(name) ? request.get_param_value(name) : "";
    if (text.empty())
        return std::nullopt;
    if (text.find_first_not_of("0123456789") == std::string::npos && text.size() < 16)
        return std::stoll(text);
    std::tm utc{};
    for (const char* format : {"%Y-%m-%dT%H:%M:%SZ", "%Y-%m-%dT%H:%M:%S", "%Y-%m-%dT%H:%MZ", "%Y-%m-%dT%H:%M"}) {
        const char* end = strptime(text.c_str(), format, &utc);
        if (end && *end == '\0')
            return int64_t{timegm(&utc)} * 1000;
        utc = {};
    }
    throw BadRequest(std::string(name) + ": milliseconds since 1970 or YYYY-MM-DDTHH:MM[:SS] (UTC) expected");
}

CallQuery callQuery(const httplib::Request& request) {
    CallQuery query;
    query.party = request.get_param_value("q");
    query.callId = request.get_param_value("call_id");
    query.fromMs = timeParameter(request, "from");
    query.toMs = timeParameter(request, "to");
    query.signalling = request.get_param_value("signalling");
    if (!query.signalling.empty() && query.signalling != "sip" && query.signalling != "h323")
        throw BadRequest("signalling: sip or h323 expected");
    const std::string mos = request.get_param_value("mos_below");
    if (!mos.empty()) {
        char* end = nullptr;
        query.mosBelow = std::strtod(mos.c_str(), &end);
        if (*end != '\0' || !(*query.mosBelow >= 0 && *query.mosBelow <= 5))
            throw BadRequest("mos_below: a number from 0 to 5 expected");
    }
    query.page = integerParameter(request, "page", 1, 1, kMaxPage);
    query.perPage = integerParameter(request, "per_page", 50, 1, kMaxPerPage);
    return query;
}

void sendJson(httplib::Response& response, const json& body, int status = 200) {
    response.status = status;
    response.set_content(body.dump(-1, ' ', false, json::error_handler_t::replace), "application/json");
}

// Equal texts take as long to compare whatever their first difference.
bool sameToken(const std::string& given, const std::string& expected) {
    unsigned char difference = given.size() == expected.size() ? 0 : 1;
    for (size_t i = 0; i < given.size(); ++i)
        difference |= static_cast<unsigned char>(given[i] ^ expected[i % expected.size()]);
    return difference == 0;
}

std::string randomNonce() {
    std::random_device random;
    std::string nonce;
    for (int i = 0; i < 4; ++i) {
        char part[9];
        std::snprintf(part, sizeof part, "%08x", random());
        nonce += part;
    }
    return nonce;
}

// The page, with a fresh nonce for its script and style: nothing else may run on it.
void sendPage(httplib::Response& response) {
    const std::string nonce = randomNonce();
    std::string page = webPage();
    for (size_t at = page.find("{{nonce}}"); at != std::string::npos; at = page.find("{{nonce}}", at))
        page.replace(at, 9, nonce);
    response.set_header("Content-Security-Policy", "default-src 'none'; script-src 'nonce-" + nonce +
                                                       "'; style-src 'nonce-" + nonce +
                                                       "'; connect-src 'self'; media-src 'self'; img-src 'self'");
    response.set_content(page, "text/html; charset=utf-8");
}

bool plainName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

}  // namespace

WebServer::WebServer(CallIndex& index, std::filesystem::path root, std::string token,
                     std::function<std::string()> metrics)
    : index_(index),
      root_(std::move(root)),
      token_(std::move(token)),
      metrics_(std::move(metrics)),
      server_(std::make_unique<httplib::Server>()) {
    httplib::Server& server = *server_;
    server.set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
        response.set_header("X-Content-Type-Options", "nosniff");
        response.set_header("Cache-Control", "no-store");
        if (authorised(request))
            return httplib::Server::HandlerResponse::Unhandled;
        response.status = 401;
        response.set_header("WWW-Authenticate", "Bearer");
        response.set_content("A token is needed\n", "text/plain");
        return httplib::Server::HandlerResponse::Handled;
    });
    server.set_exception_handler([](const httplib::Request&, httplib::Response& response, std::exception_ptr error) {
        try {
            std::rethrow_exception(error);
        } catch (const BadRequest& bad) {
            sendJson(response, {{"error", bad.what()}}, 400);
        } catch (const std::exception& other) {
            log::error() << "Web request failed: " << other.what();
            sendJson(response, {{"error", "the call index cannot be read"}}, 503);
        }
    });
    server.Get("/", [](const httplib::Request&, httplib::Response& response) { sendPage(response); });
    server.Get(R"(/calls/\d+)", [](const httplib::Request&, httplib::Response& response) { sendPage(response); });
    server.Get("/api/calls",
               [this](const httplib::Request& request, httplib::Response& response) { listCalls(request, response); });
    server.Get(R"(/api/calls/(\d{1,18}))",
               [this](const httplib::Request& request, httplib::Response& response) { showCall(request, response); });
    server.Get(R"(/files/(\d{1,18})/(call\.wav|call\.pcap))",
               [this](const httplib::Request& request, httplib::Response& response) { sendFile(request, response); });
    server.Get("/metrics", [this](const httplib::Request&, httplib::Response& response) {
        response.set_content(metrics_(), "text/plain; version=0.0.4");
    });
}

WebServer::~WebServer() {
    stop();
}

bool WebServer::start(const std::string& address, uint16_t port) {
    const int bound = port == 0 ? server_->bind_to_any_port(address) : server_->bind_to_port(address, port) ? port : -1;
    if (bound <= 0) {
        log::error() << "Cannot serve the web page on " << address << ":" << port;
        return false;
    }
    thread_ = std::thread([this] { server_->listen_after_bind(); });
    log::info() << "Web page on http://" << address << ":" << bound << "/";
    return true;
}

void WebServer::stop() {
    server_->stop();
    if (thread_.joinable())
        thread_.join();
}

bool WebServer::authorised(const httplib::Request& request) const {
    if (token_.empty())
        return true;
    const std::string header = request.get_header_value("Authorization");
    const std::string bearer = "Bearer ";
    if (header.compare(0, bearer.size(), bearer) == 0)
        return sameToken(header.substr(bearer.size()), token_);
    // Browsers cannot add a header to the page itself, to <audio> or to a download link.
    return request.has_param("token") && sameToken(request.get_param_value("token"), token_);
}

void WebServer::listCalls(const httplib::Request& request, httplib::Response& response) {
    sendJson(response, index_.search(callQuery(request)));
}

void WebServer::showCall(const httplib::Request& request, httplib::Response& response) {
    const auto details = index_.details(std::stoll(request.matches[1]));
    if (details)
        sendJson(response, *details);
    else
        sendJson(response, {{"error", "no such call"}}, 404);
}

// The file is found through the call's id and one of two names: what the request says never
// becomes a path.
void WebServer::sendFile(const httplib::Request& request, httplib::Response& response) {
    const std::string name = request.matches[2];
    const auto folder = index_.folderOf(std::stoll(request.matches[1]));
    const std::filesystem::path path = folder && plainName(*folder) ? root_ / *folder / name : std::filesystem::path();
    std::error_code error;
    if (!path.empty() && std::filesystem::is_regular_file(path.string() + ".enc", error)) {
        sendJson(response, {{"error", "the recording is encrypted: " + name + ".enc opens with recorder-decrypt"}},
                 409);
        return;
    }
    if (path.empty() || !std::filesystem::is_regular_file(path, error)) {
        sendJson(response, {{"error", "no such file"}}, 404);
        return;
    }
    auto file = std::make_shared<std::ifstream>(path, std::ios::binary);
    const auto size = static_cast<size_t>(std::filesystem::file_size(path, error));
    response.set_header("Content-Disposition", "inline; filename=\"" + name + "\"");
    response.set_content_provider(size, name == "call.wav" ? "audio/wav" : "application/vnd.tcpdump.pcap",
                                  [file](size_t offset, size_t length, httplib::DataSink& sink) {
                                      char buffer[65536];
                                      file->clear();
                                      file->seekg(static_cast<std::streamoff>(offset));
                                      const size_t wanted = std::min(length, sizeof buffer);
                                      file->read(buffer, static_cast<std::streamsize>(wanted));
                                      const auto got = static_cast<size_t>(file->gcount());
                                      return got > 0 && sink.write(buffer, got);
                                  });
}

}  // namespace recorder
