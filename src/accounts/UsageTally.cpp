#include "accounts/UsageTally.h"

#include "accounts/LooseRead.h"

namespace orvan {

std::optional<UsageTally> UsageTally::decode(const Json& j) {
    if (!j.is_object()) return std::nullopt;
    auto span = LooseRead::text(j, "span");
    if (!span) return std::nullopt;
    UsageTally t;
    t.span = *span;
    t.model = LooseRead::text(j, "model");
    t.name = LooseRead::text(j, "name").value_or(t.model.value_or("All models"));
    t.inputTokens = LooseRead::count<std::int64_t>(j, "inputTokens");
    t.outputTokens = LooseRead::count<std::int64_t>(j, "outputTokens");
    t.invocations = LooseRead::count<std::int64_t>(j, "invocations");
    return t;
}

} // namespace orvan
