#include "feedback/FeedbackShrink.h"

#include "feedback/Feedback.h"
#include "foundation/Text.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QPointer>
#include <QThread>
#include <fstream>
#include <memory>
#include <thread>

namespace orvan::FeedbackShrink {

std::optional<std::string> jpeg(const Images& images, std::string_view bytes) {
    const auto size = images.size(bytes);
    if (!size || size->width < 1 || size->height < 1) return std::nullopt;
    for (const auto& step : Feedback::shrinkSteps) {
        std::string out = images.redrawJpeg(bytes, step.longestSide, step.quality);
        if (out.empty()) return std::nullopt;
        if (out.size() <= Feedback::imageBudget) return out;
    }
    return std::nullopt;
}

namespace {

// Where the worker leaves its results for the thread that waits on them.
struct Handoff {
    std::vector<std::optional<std::string>> results;
    Wakeup done;
};

} // namespace

Task<std::vector<std::optional<std::string>>> offMainThread(const Images& images, std::vector<std::string> pictures) {
    auto handoff = std::make_shared<Handoff>();
    // The waiting thread's own object, so the results come back through its event loop.
    QObject* home = QCoreApplication::instance();
    if (!home || QThread::currentThread() != home->thread()) {
        // Without an application there is no loop to come back through: the work runs here.
        for (const auto& picture : pictures) handoff->results.push_back(jpeg(images, picture));
        co_return std::move(handoff->results);
    }
    QPointer<QObject> guard(home);
    std::thread([&images, pictures = std::move(pictures), handoff, guard] {
        std::vector<std::optional<std::string>> results;
        for (const auto& picture : pictures) results.push_back(jpeg(images, picture));
        if (!guard) return;
        QMetaObject::invokeMethod(
            guard.data(),
            [handoff, results = std::move(results)]() mutable {
                handoff->results = std::move(results);
                handoff->done.fire(true);
            },
            Qt::QueuedConnection);
    }).detach();
    co_await handoff->done;
    co_return std::move(handoff->results);
}

std::string model(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) return {};
    // A firmware string is short; anything long is not a model name.
    std::string text(256, '\0');
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(in.gcount()));
    if (auto end = text.find('\n'); end != std::string::npos) text.resize(end);
    return Text::trimmed(Text::toValidUtf8(text));
}

} // namespace orvan::FeedbackShrink
