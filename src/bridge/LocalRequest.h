#pragma once
// How every model reaches the bridge. Requests are built in one place, so the method, the key
// header, Content-Type and the time-out are the same for all of them.

#include "foundation/Carryover.h"
#include "foundation/Json.h"
#include "platform/LocalApi.h"

#include <optional>
#include <string>
#include <string_view>

namespace orvan::LocalRequest {

inline constexpr Duration defaultTimeout = std::chrono::seconds(8);
inline constexpr const char* keyHeader = "X-Tulm-Local";

// GET without a body, POST with one (even `{}`), key header always (empty key included).
HttpRequest make(std::string path, std::optional<Json> body, Duration timeout, const Environment& environment);
HttpRequest make(std::string path, std::optional<Json> body = std::nullopt, Duration timeout = defaultTimeout);

// True only for an HTTP answer from 200 to 299.
bool ok(const HttpAnswer& answer);
bool ok(const std::optional<HttpAnswer>& answer);

// The bridge's own sentence from a failure body: a JSON object's non-empty text `message`.
std::optional<std::string> message(std::string_view body);

// The one way a request goes out. The request is built before the first wait, so `environment`
// need only live for the call.
Task<HttpAnswer> send(LocalApi& api, std::string path, std::optional<Json> body, Duration timeout,
                      const Environment& environment);

// The only request without the key: is a bridge answering?
HttpRequest health();

} // namespace orvan::LocalRequest
