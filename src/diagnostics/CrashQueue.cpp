#include "diagnostics/CrashQueue.h"

#include <algorithm>

namespace orvan {

CrashQueue::Queue CrashQueue::add(const CrashReport& report, Queue queue) {
    auto same = std::find_if(queue.begin(), queue.end(), [&](const CrashReport& r) { return r.signature == report.signature; });
    if (same != queue.end()) {
        CrashReport merged = report;
        merged.count = std::min(maxCount, std::max<std::int64_t>(0, same->count) + std::max<std::int64_t>(0, report.count));
        merged.at = std::max(same->at, report.at);
        *same = std::move(merged);
        return queue;
    }
    queue.push_back(report);
    while (queue.size() > limit) queue.erase(queue.begin());
    return queue;
}

std::string CrashQueue::encode(const Queue& queue) {
    std::string out = "[";
    for (std::size_t i = 0; i < queue.size(); ++i) {
        auto one = queue[i].encode();
        if (!one) return "[]";
        if (i) out += ',';
        out += *one;
    }
    out += ']';
    return out;
}

CrashQueue::Queue CrashQueue::decode(const std::optional<std::string>& bytes) {
    if (!bytes || bytes->size() > maxFileBytes) return {};
    auto parsed = json::parse(*bytes);
    if (!parsed || !parsed->is_array()) return {};
    Queue queue;
    const std::size_t skip = parsed->size() > limit ? parsed->size() - limit : 0;
    for (std::size_t i = skip; i < parsed->size(); ++i) {
        auto report = CrashReport::decode((*parsed)[i]);
        if (!report) return {};
        queue.push_back(std::move(*report));
    }
    return queue;
}

} // namespace orvan
