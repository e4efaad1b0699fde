#pragma once
// What the program says about its grants: the buttons, why a restart is due, how a leftover entry
// is cleared, and why the grants must be given again after the identity changed.

#include "access/AccessKind.h"
#include "access/AccessRecord.h"

#include <string>
#include <vector>

namespace orvan::AccessWords {

inline const std::string reopenButton = "Quit and reopen Orvan Companion";

std::string open(AccessKind kind);
std::string reopen(const std::vector<AccessKind>& kinds);
std::string stale(AccessKind kind, bool lines);
std::string elsewhere(AccessKind kind);
std::string note(const MarkChange& change, const std::string& bundle);
// The Terminal lines that clear a leftover entry; none for a bundle id that isn't plainly one, so
// nothing odd ever reaches a shell through the clipboard.
std::vector<std::string> lines(AccessKind kind, const std::string& bundle);

} // namespace orvan::AccessWords
