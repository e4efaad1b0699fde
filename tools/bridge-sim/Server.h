#pragma once
// The HTTP side: loopback only, the key at the door, then the faults asked for, then the answer.

#include "Reply.h"
#include "Sim.h"

#include <condition_variable>
#include <functional>
#include <httplib.h>
#include <mutex>
#include <string>

namespace orvan::sim {

class Server {
public:
    struct Setup {
        std::string key;
        Sim sim;
        bool log = true;
        // Called from a request thread once an exit was asked for and answered.
        std::function<void(int code)> exitRequested;
    };

    explicit Server(Setup setup);

    // Binds 127.0.0.1:port (0: any free port). Answers the bound port, or -1.
    int bind(int port);
    // Serves until stop(); call from one thread.
    bool run();
    // Wakes slow answers and stops serving. Safe from any thread.
    void stop();

private:
    void dispatch(const httplib::Request& request, httplib::Response& response);
    void log(const httplib::Request& request, const std::string& outcome) const;

    httplib::Server http_;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool stopping_ = false;
    int answering_ = 0; // exchanges whose answer is not written yet
    int port_ = -1;
    Setup setup_;
};

} // namespace orvan::sim
