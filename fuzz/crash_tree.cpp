// The depth guard over any bytes, then the JSON reader and the tree's cleaning: no crash, and
// valid JSON in gives valid JSON out that nests no deeper than the guard allows.
#include "diagnostics/CrashReport.h"
#include "diagnostics/CrashTree.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

int depthOf(const orvan::Json& j) {
    if (!j.is_structured()) return 0;
    int deepest = 0;
    for (const auto& child : j) deepest = std::max(deepest, depthOf(child));
    return deepest + 1;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace orvan;
    std::string_view bytes(reinterpret_cast<const char*>(data), size);
    std::string guarded = CrashTree::shallow(bytes);
    auto tree = json::parse(guarded);
    if (json::parse(bytes)) {
        if (!tree || depthOf(*tree) > CrashTree::maxDepth) std::abort();
    }
    if (!tree) return 0;
    auto value = CrashJSON::decode(*tree);
    if (!value) std::abort(); // whatever the guard lets through must decode
    CrashJSON cleaned = CrashTree::clean(*value);
    auto frames = CrashTree::path(cleaned);
    if (frames.size() > CrashTree::maxPath) std::abort();
    if (!json::dump(cleaned.encode())) std::abort();
    return 0;
}
