#pragma once
// The release server, over HTTPS: one small read, and one download streamed to a file. Whether a
// download goes on block by block, and whether a redirect is followed, are the caller's decisions,
// asked through the callbacks; the adapter only carries them out.

#include "foundation/Async.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvan {

struct WebRequest {
    std::string url;
    std::vector<std::pair<std::string, std::string>> headers;
    Duration timeout = std::chrono::seconds(30); // fails when nothing has arrived for this long
    // An answer longer than this fails as a transport failure; none of it is kept.
    std::size_t cap = 1024 * 1024;
};

struct WebAnswer {
    // Set when nothing usable came back (refused, timed out, too long); `status` is then 0.
    std::optional<std::string> failure;
    int status = 0;
    std::string body;
    bool isHttp() const { return !failure && status > 0; }
};

// What is known after each block written to the file.
struct WebProgress {
    int status = 0;              // the HTTP status; 0 when the answer isn't HTTP
    std::int64_t written = 0;    // bytes in the file so far
    std::int64_t expected = -1;  // the Content-Length, or -1 when the server gave none
};

struct WebDownload {
    std::string url;
    std::filesystem::path destination; // made 0600; replaced only when the whole body arrived
    Duration idleTimeout = std::chrono::seconds(60);
    Duration wholeTimeout = std::chrono::seconds(1800);
    // Asked after every block; false cancels at once, before anything more is written.
    std::function<bool(const WebProgress&)> keepGoing;
    // Asked for each redirect with the new address; false ends the download there.
    std::function<bool(const std::string& url)> followRedirect;
};

struct WebDownloadResult {
    int status = 0;           // the last HTTP status seen; 0 when none came
    bool cancelled = false;   // `keepGoing` or `followRedirect` said no
    bool complete = false;    // the whole body is at `destination`
    std::optional<std::string> failure;
};

class Web {
public:
    virtual ~Web() = default;
    // GET, from the network only: no cache is read or written.
    virtual Task<WebAnswer> get(WebRequest request) = 0;
    virtual Task<WebDownloadResult> download(WebDownload request) = 0;
};

} // namespace orvan
