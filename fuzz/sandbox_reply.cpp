// Any bytes as the bridge's sandbox answer, then through every word drawn from it: no crash, no
// exception, a reason line never longer than its bound, and no install without its runtime.
#include "foundation/Json.h"
#include "foundation/Text.h"
#include "sandboxes/SandboxImage.h"
#include "sandboxes/SandboxReason.h"
#include "sandboxes/SandboxReply.h"
#include "sandboxes/SandboxSetup.h"
#include "sandboxes/SandboxWords.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace orvan;
    std::string_view bytes(reinterpret_cast<const char*>(data), size);
    try {
        auto reply = decodeJson<SandboxReply>(bytes);
        if (!reply) return 0;
        auto tree = json::parse(bytes);
        if (!tree || !tree->is_object()) std::abort();
        if (reply->install && !reply->install->runtime) std::abort();
        for (const auto& sandbox : reply->sandboxes) {
            (void)SandboxWords::title(sandbox);
            (void)SandboxWords::detail(sandbox);
            auto line = SandboxReason::line(sandbox.reason, reply->note);
            if (line && Text::characterCount(*line) > SandboxReason::most) std::abort();
        }
        (void)SandboxImage::step(reply->image, reply->progress, "this Mac");
        (void)SandboxImage::help(reply->download, "this Mac");
        (void)SandboxWords::imageLine(reply->runtime, reply->image, reply->progress, reply->note);
        (void)SandboxSetup::line(reply->runtime, reply->service, reply->docker, false, reply->choices);
        for (const auto& choice : reply->choices) (void)SandboxSetup::cardLine(choice, reply->docker);
        if (reply->install) (void)SandboxWords::installLine(*reply->install);
        (void)SandboxWords::desktopLead(true, reply->agents);
    } catch (...) {
        std::abort();
    }
    return 0;
}
