#pragma once
// The clipboard of the terminal the text view runs in: the OSC 52 request that terminal
// emulators (and tmux, and SSH sessions through them) turn into a copy on the owner's desktop.
// It goes to the controlling terminal, never to standard output, so a copied link can't end up
// in a log that standard output is sent to. Without a terminal there is no clipboard.

#include "platform/Clipboard.h"

namespace orvan {

class TerminalClipboard final : public Clipboard {
public:
    bool putText(const std::string& text, bool concealed) override;
    // A terminal carries text only: the pictures are named by their files under the text.
    bool putTextAndImages(const std::string& text, const std::vector<std::filesystem::path>& pictures) override;

    // For the program's own end-to-end tests: with ORVAN_TEST_CLIPBOARD naming a file, each copy is
    // added to that file as one line instead of going to the terminal. Concealed text is never
    // written there; its line says only that something concealed was copied.
    static constexpr const char* testRecord = "ORVAN_TEST_CLIPBOARD";
};

} // namespace orvan
