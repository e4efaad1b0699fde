#include "updates/UpdateFeed.h"

#include "updates/CompanionVersion.h"

#include <gnu/libc-version.h>

namespace orvan::UpdateFeed {

std::optional<std::string> manifestURL(const std::string& downloadsBase) {
    if (downloadsBase.empty()) return std::nullopt;
    return UpdateManifest::address(downloadsBase);
}

std::string system() {
    auto parts = CompanionVersion::parse(gnu_get_libc_version()).value_or(std::vector<std::int64_t>{});
    while (parts.size() < 3) parts.push_back(0);
    return std::to_string(parts[0]) + "." + std::to_string(parts[1]) + "." + std::to_string(parts[2]);
}

Task<std::variant<UpdateManifest, UpdateNotice>> latest(Web& web, std::optional<std::string> from) {
    if (!from) co_return UpdateNotice{unreachable};
    WebRequest request;
    request.url = *from;
    request.headers = {{"Accept", "application/json"}};
    request.timeout = std::chrono::seconds(30);
    request.cap = 1024 * 1024; // a description is a few hundred bytes
    WebAnswer answer = co_await web.get(std::move(request));
    if (!answer.isHttp() || (answer.status != 200 && answer.status != 404)) co_return UpdateNotice{unreachable};
    if (answer.status == 404) co_return UpdateNotice{UpdateManifest::unreadable};
    co_return UpdateManifest::parse(answer.body);
}

} // namespace orvan::UpdateFeed
