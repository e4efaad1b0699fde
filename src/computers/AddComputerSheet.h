#pragma once
// Adding a computer: the form, a test, trust in its host key on first contact, the add, and then
// the agents and accounts chosen on the way. The password or passphrase lives only in this
// object's memory and in the one request that carries it; closing the sheet wipes it.

#include "accounts/Accounts.h"
#include "computers/ComputerForm.h"
#include "computers/Hosts.h"
#include "computers/ReplaceAsk.h"
#include "computers/SudoSheet.h"
#include "ui/Node.h"

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace orvan {

class FilePicker;

class AddComputerSheet : public std::enable_shared_from_this<AddComputerSheet> {
public:
    // `closed` runs once, when the sheet goes, however it goes.
    AddComputerSheet(Hosts& hosts, Accounts& accounts, ComputerForm form, std::function<void()> closed);
    ~AddComputerSheet();
    AddComputerSheet(const AddComputerSheet&) = delete;
    AddComputerSheet& operator=(const AddComputerSheet&) = delete;

    ComputerForm form;
    std::set<std::string> agents;
    std::set<std::string> copying;
    std::optional<CompanionHost> added;
    std::optional<SudoAsk> sudo;
    std::optional<ReplaceAsk> replacing;
    // Typed into the sudo question; emptied as it goes.
    std::string sudoPassword;
    // Told when the sheet's own fields change after a wait, so its window draws again.
    std::function<void()> changed;

    // How long the steps stay readable before a sheet with nothing more to do closes.
    static constexpr Duration readingPause = std::chrono::milliseconds(1500);

    std::string computerName() const;

    // The form's changes, with what each undoes.
    void setSignIn(ComputerForm::SignIn signIn);
    void setAddress(std::string address);
    void setPort(std::string port);
    void setTerminalOnly(bool on);

    bool canTest() const;
    bool canAdd() const;
    std::string addHelp() const;

    Task<void> test();
    // Trusts the key the last test showed, and tests again with it.
    Task<void> trust();
    Task<void> add();
    // The sudo sheet closed, with the password or without.
    Task<void> sudoDone(std::optional<std::string> password);
    // "Replace" on the question of a copy.
    Task<void> replace();
    void dismissReplace() { replacing.reset(); }

    void close();
    bool isClosed() const { return closed_ == nullptr; }

    Hosts& hosts() { return hosts_; }
    Accounts& accounts() { return accounts_; }

private:
    void tell() {
        if (changed) changed();
    }
    Task<void> copyChosen(std::vector<std::string> ids);
    void wipe();

    Hosts& hosts_;
    Accounts& accounts_;
    std::function<void()> closed_;
    Cancel alive_;
};

namespace AddComputerSheetView {
// `files` chooses the key file where a chooser can be shown; otherwise the path is typed.
ui::Node build(const std::shared_ptr<AddComputerSheet>& sheet, FilePicker* files, const std::string& home,
               std::function<void()> changed);
} // namespace AddComputerSheetView

} // namespace orvan
