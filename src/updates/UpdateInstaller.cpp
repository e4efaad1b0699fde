#include "updates/UpdateInstaller.h"

#include "foundation/Files.h"
#include "updates/CompanionVersion.h"
#include "updates/UpdateArchive.h"
#include "updates/UpdateCheck.h"
#include "updates/UpdateDownload.h"

#include <QUuid>

#include <sys/stat.h>
#include <unistd.h>

namespace orvan::UpdateInstaller {

namespace {
void removeAll(const std::filesystem::path& p) {
    std::error_code ec;
    std::filesystem::remove_all(p, ec);
}
} // namespace

Environment toolEnvironment(const Environment& ours) {
    auto value = [&](const char* name) {
        auto it = ours.find(name);
        return it == ours.end() ? std::string() : it->second;
    };
    return {{"HOME", value("HOME")}, {"USER", value("USER")}, {"PATH", "/usr/local/bin:/usr/bin:/bin"}, {"LANG", "en_US.UTF-8"}};
}

Task<std::variant<Prepared, std::string>> prepare(const UpdateContext& context, UpdateManifest release,
                                                  std::optional<std::string> team) {
    if (!CompanionVersion::isNewer(release.version, context.currentVersion)) co_return std::string(notNewer);
    if (!UpdateCheck::validTeam(team)) co_return std::string(UpdateCheck::unsignedCopy);
    std::filesystem::path work = context.temporary /
        ("orvan-companion-update-" + QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString());
    if (!Files::makeFolder(work)) co_return std::string(notDownloaded);
    std::filesystem::path image = work / "orvan-companion.tgz";
    auto outcome = co_await UpdateDownload::fetch(*context.web, release.url, release.size, image);
    if (outcome == UpdateDownload::Outcome::failed) {
        removeAll(work);
        co_return std::string(notDownloaded);
    }
    if (outcome == UpdateDownload::Outcome::tooBig) {
        removeAll(work);
        co_return std::string(UpdateCheck::mismatch);
    }
    auto digest = co_await UpdateDownload::sha256Apart(image);
    if (auto refused = UpdateCheck::download(UpdateDownload::size(image), digest, release)) {
        removeAll(work);
        co_return *refused;
    }
    co_return co_await stage(context, image, work, release, team);
}

Task<std::variant<Prepared, std::string>> stage(const UpdateContext& context, std::filesystem::path image,
                                                std::filesystem::path work, UpdateManifest release,
                                                std::optional<std::string> team) {
    auto refuse = [&work](const char* sentence) {
        removeAll(work);
        return std::variant<Prepared, std::string>(std::string(sentence));
    };
    // Unpacked by our own reader, which refuses anything but plain files and folders inside.
    std::filesystem::path unpacked = work / "package";
    if (UpdateArchive::extract(image, unpacked)) co_return refuse(notOpened);
    std::filesystem::path staged = work / InstallTarget::bundleName;
    std::filesystem::path app = unpacked / InstallTarget::bundleName;
    struct stat info {};
    bool found = ::lstat(app.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
    bool copied = false;
    if (found) {
        ToolCall copy{"/bin/cp", {"-a", "--", app.string(), staged.string()}, toolEnvironment(context.environment),
                      std::chrono::seconds(120), false, false, std::nullopt};
        copied = (co_await context.tools->run(std::move(copy))).code == 0;
    }
    removeAll(unpacked);
    if (!found) co_return refuse(notNewer);
    if (!copied) co_return refuse(notInstalled);
    std::error_code ec;
    std::filesystem::remove(image, ec);
    if (auto refused = context.signature.verify(staged, team)) {
        removeAll(work);
        co_return *refused;
    }
    auto bundle = BundleInfo::read(staged);
    if (!bundle || !UpdateCheck::identity(bundle->identifier, bundle->shortVersion, release, context.bundleId))
        co_return refuse(notNewer);
    const std::string executable = bundle->executable.value_or("");
    if (executable.empty() || executable.find('/') != std::string::npos) co_return refuse(notNewer);
    std::filesystem::path program = staged / "bin" / executable;
    if (::stat(program.c_str(), &info) != 0 || !S_ISREG(info.st_mode) || ::access(program.c_str(), X_OK) != 0)
        co_return refuse(notNewer);
    co_return Prepared{staged, work};
}

} // namespace orvan::UpdateInstaller
