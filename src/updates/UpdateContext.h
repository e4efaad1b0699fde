#pragma once
// What the update models need from outside: the ports, the running copy's own facts, and where
// work folders go. The program fills one; tests fill one with fakes and temporary folders.

#include "foundation/Carryover.h"
#include "platform/Tools.h"
#include "platform/Web.h"
#include "updates/UpdateSignature.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace orvan {

struct UpdateContext {
    Web* web = nullptr;
    Tools* tools = nullptr;
    UpdateSignature signature;
    // The downloads base fixed at build time ("" when the build has none).
    std::string downloadsBase;
    std::string currentVersion;
    std::string bundleId = ORVAN_BUNDLE_ID;
    // The running bundle folder, and the installed copies an update may replace instead.
    std::filesystem::path running;
    std::vector<std::filesystem::path> candidates;
    // Where work folders are made.
    std::filesystem::path temporary = "/tmp";
    std::string system;
    int pid = 0;
    std::filesystem::path dpkgInfo = "/var/lib/dpkg/info";
    // Opens the replaced copy once this process has ended (the not-in-place case).
    std::function<bool(const std::filesystem::path& bundle)> reopen;
    // The environment the session's variables for the reopened copy come from.
    Environment environment;
};

} // namespace orvan
