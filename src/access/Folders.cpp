#include "access/Folders.h"

#include "access/ThreadFolders.h"
#include "bridge/LocalRequest.h"

namespace orvan {

Folders::Folders(LocalApi& api, Environment environment) : api_(api), environment_(std::move(environment)) {}

Folders::~Folders() { alive_.cancel(); }

Task<void> Folders::refresh() {
    Cancel alive = alive_;
    const HttpAnswer answer =
        co_await LocalRequest::send(api_, ThreadFolders::path, std::nullopt, LocalRequest::defaultTimeout, environment_);
    if (alive.cancelled() || !answer.isHttp()) co_return;
    if (answer.status == 200) {
        if (auto folders = ThreadFolders::list(answer.body)) assign(list, std::move(*folders));
        assign(loaded, true);
    } else if (answer.status == 503) {
        assign(note, LocalRequest::message(answer.body).value_or(ThreadFolders::noThreads));
    }
}

Task<void> Folders::add(std::string path) {
    co_await send(ThreadFolders::path, ThreadFolders::add(path), ThreadFolders::notAdded);
}

Task<void> Folders::remove(std::string id) {
    co_await send(ThreadFolders::removePath, ThreadFolders::remove(id), ThreadFolders::notRemoved);
}

Task<void> Folders::send(std::string path, Json body, std::string failed) {
    if (busy) co_return;
    Cancel alive = alive_;
    assign(busy, true);
    assign(note, "");
    const HttpAnswer answer =
        co_await LocalRequest::send(api_, std::move(path), std::move(body), LocalRequest::defaultTimeout, environment_);
    if (alive.cancelled()) co_return;
    if (!answer.isHttp()) assign(note, failed);
    else if (!LocalRequest::ok(answer)) assign(note, LocalRequest::message(answer.body).value_or(failed));
    co_await refresh();
    if (alive.cancelled()) co_return;
    assign(busy, false);
}

} // namespace orvan
