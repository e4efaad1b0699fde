#pragma once
#include "platform/Web.h"

#include <QNetworkRequest>
#include <filesystem>
#include <memory>
#include <optional>

namespace orvan {

// The release server through Qt's network access manager, on the main thread. Each request has a
// manager of its own, let go after its answer, so nothing (connections, caches, cookies) carries
// from one request to the next; redirects are only followed when the caller agrees.
class QtWeb final : public Web {
public:
    // With `trusted` (a PEM file of certificates), only those authorities are trusted; without it
    // the system's. Tests hand it a throwaway authority.
    explicit QtWeb(std::optional<std::filesystem::path> trusted = std::nullopt);
    ~QtWeb() override;

    Task<WebAnswer> get(WebRequest request) override;
    Task<WebDownloadResult> download(WebDownload request) override;

private:
    QNetworkRequest prepare(const std::string& url) const;
    std::optional<std::filesystem::path> trusted_;
};

} // namespace orvan
