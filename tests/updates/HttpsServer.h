#pragma once
// A local HTTPS server with a throwaway certificate authority made at run time, for the release
// feed and downloads over real TLS.

#include "fakes/TempFolder.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <cstdlib>
#include <memory>
#include <thread>

namespace orvan::test {

class HttpsServer {
public:
    HttpsServer() {
        cert_ = folder_.path() / "cert.pem";
        key_ = folder_.path() / "key.pem";
        std::string command = "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 1 "
                              "-subj /CN=localhost -addext subjectAltName=IP:127.0.0.1 -keyout '" + key_.string() +
                              "' -out '" + cert_.string() + "' >/dev/null 2>&1";
        if (std::system(command.c_str()) != 0) ADD_FAILURE() << "openssl could not make a certificate";
        server_ = std::make_unique<httplib::SSLServer>(cert_.c_str(), key_.c_str());
    }
    ~HttpsServer() { stop(); }
    httplib::SSLServer& routes() { return *server_; }
    // Once; later calls find it listening.
    void start() {
        if (thread_.joinable()) return;
        port_ = server_->bind_to_any_port("127.0.0.1");
        thread_ = std::thread([this] { server_->listen_after_bind(); });
        while (!server_->is_running()) std::this_thread::yield();
    }
    void stop() {
        if (thread_.joinable()) {
            server_->stop();
            thread_.join();
        }
    }
    std::string url(const std::string& path) const { return "https://127.0.0.1:" + std::to_string(port_) + path; }
    int port() const { return port_; }
    // The authority a client must trust for this server.
    const std::filesystem::path& authority() const { return cert_; }

private:
    TempFolder folder_;
    std::filesystem::path cert_, key_;
    std::unique_ptr<httplib::SSLServer> server_;
    std::thread thread_;
    int port_ = 0;
};

} // namespace orvan::test
