#include "ui/SymbolTable.h"

#include <array>

namespace orvan::ui {

namespace {

// Status shapes have no theme icon on purpose: their tone is their message.
constexpr std::array entries{
    SymbolEntry{"circle", "", SymbolShape::Circle},
    SymbolEntry{"circle.fill", "", SymbolShape::FilledCircle},
    SymbolEntry{"eye.circle.fill", "", SymbolShape::EyeCircle},
    SymbolEntry{"checkmark.circle", "", SymbolShape::Check},
    SymbolEntry{"checkmark.circle.fill", "", SymbolShape::CheckFilled},
    SymbolEntry{"exclamationmark.triangle", "", SymbolShape::Warning},
    SymbolEntry{"exclamationmark.circle", "", SymbolShape::Alert},
    SymbolEntry{"iphone", "phone", SymbolShape::Phone},
    SymbolEntry{"desktopcomputer", "computer", SymbolShape::Computer},
    SymbolEntry{"antenna.radiowaves.left.and.right", "network-wireless", SymbolShape::Waves},
    SymbolEntry{"text.bubble", "mail-message-new", SymbolShape::Bubble},
    SymbolEntry{"bolt.horizontal", "network-transmit-receive", SymbolShape::Bolt},
    SymbolEntry{"cursorarrow.rays", "input-mouse", SymbolShape::Pointer},
    SymbolEntry{"chevron.left.forwardslash.chevron.right", "text-x-script", SymbolShape::Code},
};

} // namespace

namespace SymbolTable {

SymbolEntry find(std::string_view name) {
    for (const auto& entry : entries)
        if (entry.name == name) return entry;
    return SymbolEntry{"", "", SymbolShape::Dot};
}

bool known(std::string_view name) {
    for (const auto& entry : entries)
        if (entry.name == name) return true;
    return false;
}

} // namespace SymbolTable
} // namespace orvan::ui
