#pragma once
// The sign-in sheet of one computer, drawn from its model: the agents there, or the one being
// signed in with its page, its code and how it ends.

#include "computers/ComputersViewState.h"
#include "computers/HostSignInSheet.h"
#include "ui/Node.h"

#include <functional>

namespace orvan::HostSignInSheetView {

// `closed` puts the sheet away once its model has stopped what runs.
ui::Node build(HostSignInSheet& sheet, std::function<void()> closed);

// The card's "Sign in agents…", which opens the sheet for `host`.
ui::Node opener(Hosts& hosts, ComputersViewState& state, const CompanionHost& host, Desktop* desktop,
                Clipboard* clipboard, std::function<void()> changed);
// The open sheet, or nothing.
ui::Node present(ComputersViewState& state, std::function<void()> changed);

} // namespace orvan::HostSignInSheetView
