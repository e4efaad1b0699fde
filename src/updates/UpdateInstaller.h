#pragma once
// Replacing the installed bundle: download and verify a copy in a private work folder, then swap it
// in with two small bash scripts, one of which outlives this process.

#include "updates/InstallTarget.h"
#include "updates/UpdateContext.h"
#include "updates/UpdateManifest.h"

#include <filesystem>
#include <optional>
#include <string>
#include <variant>

namespace orvan::UpdateInstaller {

struct Prepared {
    std::filesystem::path staged;
    std::filesystem::path work;
};

inline constexpr const char* notNewer = "The download was not a newer Orvan Companion. Nothing was replaced.";
inline constexpr const char* notDownloaded = "The update was not downloaded. Nothing was replaced.";
inline constexpr const char* notOpened = "The update's disk image could not be opened. Nothing was replaced.";
inline constexpr const char* notInstalled = "The update was not installed.";

// Exactly HOME, USER, PATH and LANG: nothing else of ours reaches a tool.
Environment toolEnvironment(const Environment& ours);

Task<std::variant<Prepared, std::string>> prepare(const UpdateContext& context, UpdateManifest release,
                                                  std::optional<std::string> team);
Task<std::variant<Prepared, std::string>> stage(const UpdateContext& context, std::filesystem::path image,
                                                std::filesystem::path work, UpdateManifest release,
                                                std::optional<std::string> team);

// The scripts' text. Every path is single-quoted, an inner quote written as '\''.
std::string quoted(const std::string& path);
std::string replaceScript(const std::filesystem::path& staged, const std::filesystem::path& destination);
std::string swapScript();

Task<bool> replaceNow(const UpdateContext& context, std::filesystem::path staged, std::filesystem::path destination, bool admin);
Task<bool> authorize(const UpdateContext& context);
// False is the refusal: nothing was started, and the old copy stands.
Task<bool> beginSwap(const UpdateContext& context, std::filesystem::path staged, std::filesystem::path work,
                     std::filesystem::path destination, int pid, bool dry, bool admin);

} // namespace orvan::UpdateInstaller
