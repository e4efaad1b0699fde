#include "accounts/AccountHome.h"

#include "accounts/AccountProvider.h"

#include <filesystem>

namespace orvan::AccountHome {

namespace {
std::string standardised(const std::string& path) {
    std::string out = std::filesystem::path(path).lexically_normal().string();
    while (out.size() > 1 && out.back() == '/') out.pop_back();
    return out;
}
} // namespace

std::string bridgeFolder(const Environment& environment, const std::string& userHome) {
    if (auto dir = Carryover::env("ORVAN_DIR", environment)) return standardised(*dir);
    // On this desktop the per-user application data lives under XDG_DATA_HOME.
    auto data = environment.find("XDG_DATA_HOME");
    if (data != environment.end() && !data->second.empty() && data->second.front() == '/')
        return standardised(data->second + "/Orvan");
    std::string home = userHome;
    while (!home.empty() && home.back() == '/') home.pop_back();
    return home + "/.local/share/Orvan";
}

std::string tilde(const std::string& path, const std::string& userHome) {
    std::string home = userHome;
    if (!home.empty() && home.back() == '/') home.pop_back();
    if (home.empty()) return path;
    if (path == home) return "~";
    if (path.size() > home.size() && path.compare(0, home.size(), home) == 0 && path[home.size()] == '/')
        return "~" + path.substr(home.size());
    return path;
}

std::string line(const CompanionAccount& account, const std::string& userHome) {
    if (!account.isDefault) return tilde(account.home, userHome);
    std::string place;
    if (!account.home.empty()) place = tilde(account.home, userHome);
    else if (auto known = AccountProviders::parse(account.provider)) place = AccountProviders::defaultHome(*known);
    else place = "the CLI's own";
    return "Default login (" + place + ")";
}

bool made(const CompanionAccount& account, const std::string& accountsFolder) {
    if (account.made) return *account.made;
    if (account.isDefault || account.home.empty()) return false;
    std::string inside = accountsFolder + "/";
    return account.home.compare(0, inside.size(), inside) == 0;
}

} // namespace orvan::AccountHome
