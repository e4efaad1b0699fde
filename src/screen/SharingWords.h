#pragma once
// What the bar, the section and the menu say about who sees this screen. A controller is named
// only when it has a name: an empty one is nobody.

#include "bridge/CompanionScreen.h"

#include <optional>
#include <string>

namespace orvan::SharingWords {

std::optional<std::string> bar(const CompanionScreen& screen);
std::optional<std::string> first(const CompanionScreen& screen);
std::string watching(const CompanionScreen& screen);
std::string menu(const CompanionScreen& screen);

} // namespace orvan::SharingWords
