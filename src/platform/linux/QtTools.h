#pragma once
#include "platform/Tools.h"

namespace orvan {

// Tools as QProcess children on the main thread's loop; output is kept up to `outputCap` bytes.
class QtTools final : public Tools {
public:
    Task<CommandResult> run(ToolCall call) override;
    static constexpr std::size_t outputCap = 1024 * 1024;
};

} // namespace orvan
