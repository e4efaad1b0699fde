#pragma once
// Pages, files and folders go to xdg-open, found on the program's own PATH so the owner's choice
// of handler (and a test's stand-in) is the one used. Bringing the program forward is the front
// end's business: a window-less one has nothing to raise.

#include "foundation/Carryover.h"
#include "platform/Desktop.h"

#include <functional>

namespace orvan {

class XdgDesktop final : public Desktop {
public:
    explicit XdgDesktop(Environment environment) : environment_(std::move(environment)) {}

    bool openUrl(const std::string& url) override;
    bool openFile(const std::filesystem::path& file) override;
    bool openFolder(const std::filesystem::path& folder) override;
    void activate() override {
        if (raise_) raise_();
    }
    void onActivate(std::function<void()> raise) { raise_ = std::move(raise); }

private:
    bool open(const std::string& target);
    Environment environment_;
    std::function<void()> raise_;
};

} // namespace orvan
