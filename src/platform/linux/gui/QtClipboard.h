#pragma once
// The desktop's clipboard. Concealed text carries the marks that clipboard managers honour:
// KDE's password manager hint and the concealed type that other desktops' managers look for.

#include "platform/Clipboard.h"

namespace orvan {

class QtClipboard final : public Clipboard {
public:
    bool putText(const std::string& text, bool concealed) override;
    // The text, the pictures as files to paste into a mail, and the first picture itself.
    bool putTextAndImages(const std::string& text, const std::vector<std::filesystem::path>& pictures) override;
    std::optional<std::string> image() const override;
};

} // namespace orvan
