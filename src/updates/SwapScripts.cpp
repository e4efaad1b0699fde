// The swap: "replace.sh" puts the staged copy in place by one rename beside the old one, moving the
// old one back when that rename fails; "swap.sh" detaches itself, waits for this process and its
// helpers to end, runs the replacement (through pkexec when the folder needs an administrator), and
// reopens the program.
#include "updates/UpdateInstaller.h"

#include "access/Relaunch.h"
#include "foundation/Files.h"

#include <sys/stat.h>
#include <unistd.h>

namespace orvan::UpdateInstaller {

namespace {

constexpr const char* swapText = R"(#!/bin/bash
set -euo pipefail
if [ -z "${ORVAN_UPDATE_DETACHED:-}" ]; then
  export ORVAN_UPDATE_DETACHED=1
  /usr/bin/nohup /bin/bash "$0" </dev/null >/dev/null 2>&1 &
  disown || true
  exit 0
fi
: "${ORVAN_UPDATE_PID:?}" "${ORVAN_UPDATE_STAGED:?}" "${ORVAN_UPDATE_DEST:?}" "${ORVAN_UPDATE_WORK:?}"
patience=120
started=$SECONDS
while kill -0 "$ORVAN_UPDATE_PID" 2>/dev/null; do
  if (( SECONDS - started > patience )); then exit 0; fi
  sleep 0.2
done
sleep 0.6
pattern=$(printf '%s/' "$ORVAN_UPDATE_DEST" | sed 's/[][\.*^$+?(){}|]/\\&/g')
started=$SECONDS
while /usr/bin/pgrep -f -- "$pattern" >/dev/null 2>&1; do
  if (( SECONDS - started > 15 )); then break; fi
  sleep 0.2
done
if [ -n "${ORVAN_UPDATE_ADMIN:-}" ]; then
  /usr/bin/pkexec /bin/bash "$ORVAN_UPDATE_ROOT"
else
  /bin/bash "$ORVAN_UPDATE_ROOT"
fi
if [ -z "${ORVAN_UPDATE_DRY:-}" ]; then
  /usr/bin/nohup "$ORVAN_UPDATE_DEST/bin/orvan-companion" </dev/null >/dev/null 2>&1 &
fi
rm -rf -- "$ORVAN_UPDATE_WORK"
)";

bool writeScript(const std::filesystem::path& path, const std::string& text) {
    return Files::write(path, text) && ::chmod(path.c_str(), 0700) == 0;
}

bool writable(const std::filesystem::path& folder) { return ::access(folder.c_str(), W_OK) == 0; }

} // namespace

std::string quoted(const std::string& path) {
    std::string out = "'";
    for (char c : path) {
        if (c == '\'') out += "'\\''";
        else out += c;
    }
    return out + "'";
}

std::string replaceScript(const std::filesystem::path& staged, const std::filesystem::path& destination) {
    return "#!/bin/bash\n"
           "set -euo pipefail\n"
           "staged=" + quoted(staged.string()) + "\n"
           "dest=" + quoted(destination.string()) + "\n"
           "next=\"$dest.next\"\n"
           "prev=\"$dest.prev\"\n"
           "mv=/bin/mv\n"
           "rm -rf -- \"$next\" \"$prev\"\n"
           "/bin/cp -a -- \"$staged\" \"$next\"\n"
           "if [ -e \"$dest\" ]; then \"$mv\" -- \"$dest\" \"$prev\"; fi\n"
           "if ! \"$mv\" -- \"$next\" \"$dest\"; then\n"
           "  if [ -e \"$prev\" ]; then \"$mv\" -- \"$prev\" \"$dest\" || true; fi\n"
           "  exit 1\n"
           "fi\n"
           "rm -rf -- \"$prev\"\n";
}

std::string swapScript() { return swapText; }

Task<bool> replaceNow(const UpdateContext& context, std::filesystem::path staged, std::filesystem::path destination, bool admin) {
    if (destination.filename() != InstallTarget::bundleName) co_return false;
    std::filesystem::path script = staged.parent_path() / "replace.sh";
    if (!writeScript(script, replaceScript(staged, destination))) co_return false;
    ToolCall call{admin ? "/usr/bin/pkexec" : "/bin/bash", {}, toolEnvironment(context.environment), std::chrono::seconds(180), false, false, std::nullopt};
    if (admin) call.arguments = {"/bin/bash", script.string()};
    else call.arguments = {script.string()};
    co_return (co_await context.tools->run(std::move(call))).code == 0;
}

Task<bool> authorize(const UpdateContext& context) {
    // The password is asked before anything is stopped, so a cancelled prompt costs nothing.
    ToolCall call{"/usr/bin/pkexec", {"/bin/true"}, toolEnvironment(context.environment), std::chrono::seconds(180), false, false, std::nullopt};
    co_return (co_await context.tools->run(std::move(call))).code == 0;
}

Task<bool> beginSwap(const UpdateContext& context, std::filesystem::path staged, std::filesystem::path work,
                     std::filesystem::path destination, int pid, bool dry, bool admin) {
    if (destination.filename() != InstallTarget::bundleName) co_return false;
    if (!admin && !writable(destination.parent_path())) co_return false;
    std::filesystem::path replace = work / "replace.sh", swap = work / "swap.sh";
    if (!writeScript(replace, replaceScript(staged, destination)) || !writeScript(swap, swapScript())) co_return false;
    ToolCall call{"/bin/bash", {swap.string()}, toolEnvironment(context.environment), std::chrono::seconds(30), false, false, std::nullopt};
    call.environment.erase("LANG");
    call.environment["PATH"] = "/usr/bin:/bin:/usr/sbin:/sbin";
    call.environment["ORVAN_UPDATE_PID"] = std::to_string(pid);
    call.environment["ORVAN_UPDATE_STAGED"] = staged.string();
    call.environment["ORVAN_UPDATE_DEST"] = destination.string();
    call.environment["ORVAN_UPDATE_WORK"] = work.string();
    call.environment["ORVAN_UPDATE_DRY"] = dry ? "1" : "";
    call.environment["ORVAN_UPDATE_ADMIN"] = admin ? "1" : "";
    call.environment["ORVAN_UPDATE_ROOT"] = replace.string();
    // The session's own variables too, so the reopened copy finds its display and bus again.
    for (const auto& name : Relaunch::session())
        if (auto it = context.environment.find(name); it != context.environment.end() && !it->second.empty())
            call.environment[name] = it->second;
    // The first stage only starts the second and exits.
    co_return (co_await context.tools->run(std::move(call))).code == 0;
}

} // namespace orvan::UpdateInstaller
