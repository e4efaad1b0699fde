#pragma once
// The login item on desktops that follow the XDG autostart convention: a desktop entry in
// $XDG_CONFIG_HOME/autostart (default ~/.config/autostart) that the session starts at login, with an
// argument that lets the program tell such a launch from one by hand.

#include "foundation/Carryover.h"
#include "platform/LoginItem.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

class XdgAutostart final : public LoginItem {
public:
    static constexpr const char* launchedAtLoginFlag = "--launched-at-login";

    // `executable` is the absolute path of the running program; `arguments` are the ones it was started
    // with. Both are taken as given, so tests can point everything into a temporary folder.
    XdgAutostart(Environment environment, std::filesystem::path executable,
                 std::vector<std::string> arguments);

    bool registerItem(std::string& error) override;
    bool unregisterItem(std::string& error) override;
    Status status() const override;
    bool launchedAtLogin() const override;

    std::filesystem::path file() const;

    // The whole desktop entry for a program at `executable`; absent when that path can't be written in
    // one (not absolute, not UTF-8, or holding control characters the format has no escape for).
    static std::optional<std::string> entry(const std::filesystem::path& executable);
    // One argument of an Exec line: quoted when it holds a reserved character, then escaped as a value.
    static std::string execArgument(const std::string& argument);

private:
    Environment environment_;
    std::filesystem::path executable_;
    std::vector<std::string> arguments_;
};

} // namespace orvan
