#pragma once
// A bridge for model tests: routes by method and path, scripted answers with delays in virtual
// time, transport failures, and a record of every request as it was sent.

#include "fakes/FakeClock.h"
#include "platform/LocalApi.h"

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orvan::test {

struct Reply {
    int status = 200;
    std::string body;
    std::optional<std::string> transportFailure;
    Duration delay{0};
    bool foreignListener = false;

    static Reply json(int status, std::string body) { return Reply{status, std::move(body), std::nullopt, {}}; }
    static Reply empty(int status = 204) { return Reply{status, {}, std::nullopt, {}}; }
    static Reply failure(std::string description = "Could not connect to the server.") {
        return Reply{0, {}, std::move(description), {}};
    }
    // Another user's program holds the port: a request with the key never reaches it.
    static Reply foreignPort() {
        Reply r = failure("Another user's program is listening on the bridge's port.");
        r.foreignListener = true;
        return r;
    }
    Reply after(Duration d) && {
        delay = d;
        return std::move(*this);
    }
};

class FakeBridge final : public LocalApi {
public:
    using Handler = std::function<Reply(const HttpRequest&)>;

    explicit FakeBridge(FakeClock& clock) : clock_(clock) {}

    // The standing answer for a method and path (path without its query matches any query).
    void on(const std::string& method, const std::string& path, Reply reply);
    void on(const std::string& method, const std::string& path, Handler handler);
    // Answers given once each, in order, before the standing answer.
    void queue(const std::string& method, const std::string& path, Reply reply);
    // Every request fails in transport while down (a bridge that isn't running).
    void setDown(bool down) { down_ = down; }

    Task<HttpAnswer> send(HttpRequest request) override;

    const std::vector<HttpRequest>& requests() const { return requests_; }
    std::vector<HttpRequest> requestsTo(const std::string& path) const;
    std::size_t count(const std::string& path) const { return requestsTo(path).size(); }
    void clearRequests() { requests_.clear(); }

private:
    Reply answer(const HttpRequest& request);

    FakeClock& clock_;
    bool down_ = false;
    std::map<std::pair<std::string, std::string>, Handler> routes_;
    std::map<std::pair<std::string, std::string>, std::deque<Reply>> queued_;
    std::vector<HttpRequest> requests_;
};

// Runs a task and keeps its result where a test can look at it after advancing the clock.
template <class T> struct Started {
    std::shared_ptr<std::optional<T>> result = std::make_shared<std::optional<T>>();
    bool done() const { return result->has_value(); }
    const T& value() const { return **result; }
};

template <class T> Started<T> start(Task<T> task) {
    Started<T> started;
    spawn([](Task<T> t, std::shared_ptr<std::optional<T>> out) -> Task<void> {
        *out = co_await t;
    }(std::move(task), started.result));
    return started;
}

inline Started<bool> start(Task<void> task) {
    Started<bool> started;
    spawn([](Task<void> t, std::shared_ptr<std::optional<bool>> out) -> Task<void> {
        co_await t;
        *out = true;
    }(std::move(task), started.result));
    return started;
}

} // namespace orvan::test
