#pragma once
// The release server for model tests: answers by address, a delay in virtual time, and a record of
// every request as it was asked.

#include "fakes/FakeClock.h"
#include "platform/Tools.h"
#include "platform/Web.h"

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace orvan::test {

class FakeWeb final : public Web {
public:
    explicit FakeWeb(FakeClock& clock) : clock_(clock) {}

    // The standing answer for an address; an address with none fails in transport.
    std::map<std::string, WebAnswer> answers;
    Duration delay{0};
    std::vector<WebRequest> asked;

    static WebAnswer http(int status, std::string body = {}) {
        WebAnswer a;
        a.status = status;
        a.body = std::move(body);
        return a;
    }

    Task<WebAnswer> get(WebRequest request) override {
        asked.push_back(request);
        if (delay > Duration::zero()) co_await clock_.sleep(delay);
        auto it = answers.find(request.url);
        if (it == answers.end()) {
            WebAnswer failed;
            failed.failure = "Could not connect to the server.";
            co_return failed;
        }
        WebAnswer answer = it->second; // a copy: co_return may move from what it is given
        co_return answer;
    }
    Task<WebDownloadResult> download(WebDownload) override {
        WebDownloadResult r;
        r.failure = "no downloads here";
        co_return r;
    }

private:
    FakeClock& clock_;
};

// Tools for model tests: each call recorded, answered by a function of the call (code 0 otherwise).
class FakeTools final : public Tools {
public:
    std::vector<ToolCall> calls;
    std::function<CommandResult(const ToolCall&)> answer;
    Task<CommandResult> run(ToolCall call) override {
        calls.push_back(call);
        co_return answer ? answer(call) : CommandResult{0, {}};
    }
};

} // namespace orvan::test
