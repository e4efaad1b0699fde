#include "appearance/InkSet.h"

namespace orvan {

InkSet InkSet::from(const ThemeTones& t, bool isDark) {
    return {.bg = {t.bg},
            .card = {t.card},
            .ink = {t.ink},
            .dim = {t.dim},
            .line = {t.line},
            .accent = {t.accent},
            .well = {t.well},
            .steel = {t.steel},
            .good = {t.good},
            .danger = {t.danger},
            .onAccent = {t.onAccent},
            .shadow = {0x000000, static_cast<std::uint8_t>(isDark ? 0x73 : 0x1f)}};
}

} // namespace orvan
