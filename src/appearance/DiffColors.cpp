#include "appearance/DiffColors.h"

namespace orvan {

std::string_view DiffColors::rawValue() const {
    switch (value) {
    case redGreen: return "redGreen";
    case blueOrange: return "blueOrange";
    }
    return "redGreen";
}

std::optional<DiffColors> DiffColors::from(std::string_view raw) {
    for (DiffColors d : all())
        if (d.rawValue() == raw) return d;
    return std::nullopt;
}

std::string_view DiffColors::title() const {
    switch (value) {
    case redGreen: return "Red & green";
    case blueOrange: return "Blue & orange";
    }
    return "Red & green";
}

} // namespace orvan
