#include "fakes/FakeBridge.h"

namespace orvan::test {

namespace {
std::string withoutQuery(const std::string& path) { return path.substr(0, path.find('?')); }
} // namespace

void FakeBridge::on(const std::string& method, const std::string& path, Reply reply) {
    routes_[{method, path}] = [reply](const HttpRequest&) { return reply; };
}

void FakeBridge::on(const std::string& method, const std::string& path, Handler handler) {
    routes_[{method, path}] = std::move(handler);
}

void FakeBridge::queue(const std::string& method, const std::string& path, Reply reply) {
    queued_[{method, path}].push_back(std::move(reply));
}

std::vector<HttpRequest> FakeBridge::requestsTo(const std::string& path) const {
    std::vector<HttpRequest> out;
    for (const auto& r : requests_)
        if (r.path == path || withoutQuery(r.path) == path) out.push_back(r);
    return out;
}

Reply FakeBridge::answer(const HttpRequest& request) {
    if (down_) return Reply::failure("Could not connect to the server.");
    for (const auto& key : {std::pair{request.method, request.path}, std::pair{request.method, withoutQuery(request.path)}}) {
        if (auto q = queued_.find(key); q != queued_.end() && !q->second.empty()) {
            Reply r = std::move(q->second.front());
            q->second.pop_front();
            return r;
        }
        if (auto route = routes_.find(key); route != routes_.end()) return route->second(request);
    }
    return Reply::json(404, R"({"message":"not found"})");
}

Task<HttpAnswer> FakeBridge::send(HttpRequest request) {
    requests_.push_back(request);
    Reply reply = answer(request);
    if (reply.delay > Duration::zero()) {
        // Nothing arrives before the answer, so a delay past the time-out is a time-out.
        if (reply.delay > request.timeout) {
            co_await clock_.sleep(request.timeout);
            co_return HttpAnswer::transportFailure("The request timed out.");
        }
        co_await clock_.sleep(reply.delay);
    }
    if (reply.foreignListener) co_return HttpAnswer::foreignPort(*reply.transportFailure);
    if (reply.transportFailure) co_return HttpAnswer::transportFailure(*reply.transportFailure);
    co_return HttpAnswer::http(reply.status, reply.body);
}

} // namespace orvan::test
