#pragma once
// The call-stack tree of a crash, cut down to what may leave this machine: a depth guard that
// runs before any JSON reader, an allow-list rebuild, and the heaviest path through it.

#include "diagnostics/CrashJSON.h"
#include "diagnostics/CrashReport.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace orvan::CrashTree {

inline constexpr std::size_t maxThreads = 4;
inline constexpr int maxFrames = 200;
inline constexpr std::size_t maxPath = 64;
inline constexpr int maxDepth = 480;

inline constexpr std::array<std::string_view, 10> keys{
    "callStacks", "callStackPerThread", "threadAttributed", "callStackRootFrames", "binaryUUID",
    "binaryName", "offsetIntoBinaryTextSegment", "address", "sampleCount", "subFrames"};

// One pass over the bytes: any bracketed value that would nest deeper than `maxDepth` becomes
// null. Brackets inside strings do not count. Allocates only its output.
std::string shallow(std::string_view data);

// Rebuilds the tree from the allow-list; nothing unknown passes, and at most `maxFrames` frames.
CrashJSON clean(const CrashJSON& json);

// The heaviest path through a cleaned tree, at most `maxPath` frames.
std::vector<CrashReport::Frame> path(const CrashJSON& stack);

bool isUUID(std::string_view text);
bool isName(std::string_view text);

} // namespace orvan::CrashTree
