#include "appearance/AppearanceSection.h"

#include "appearance/AppearanceWords.h"
#include "appearance/Swatch.h"
#include "appearance/ThemeCatalog.h"

#include <algorithm>
#include <string>
#include <vector>

namespace orvan::AppearanceSection {

namespace {

ui::Node paletteRow(ThemeStore& store, const ThemePalette& palette) {
    const ThemeChoice& choice = store.choice();
    const auto state = AppearanceWords::state(choice.light == palette.id, choice.dark == palette.id);
    const std::string id = palette.id;
    return ui::vstack({
               ui::hstack({
                   ui::picture(Swatch::png(palette), Swatch::width, Swatch::height, palette.name + " colours"),
                   ui::link(palette.name, [&store, id] { store.setChoice(ThemeChoice::both(id)); })
                       .help(AppearanceWords::both(palette.name)),
                   ui::button("Light", [&store, id] { store.setChoice(store.choice().withLight(id)); })
                       .help(AppearanceWords::one(palette.name, false))
                       .key(id + ".light"),
                   ui::button("Dark", [&store, id] { store.setChoice(store.choice().withDark(id)); })
                       .help(AppearanceWords::one(palette.name, true))
                       .key(id + ".dark"),
                   ui::when(state.has_value(), ui::text(state.value_or("")).tone(ui::Tone::Accent)),
               }),
               ui::text(palette.credit).tone(ui::Tone::Dim).style(ui::TextStyle::Caption),
           })
        .key(id);
}

} // namespace

ui::Node build(ThemeStore& store) {
    std::vector<ui::Choice> schemes;
    for (Appearance a : Appearance::all()) schemes.push_back({std::string(a.title()), std::string(a.rawValue())});

    ui::Nodes children = {
        ui::picker("", schemes, std::string(store.scheme().rawValue()),
                   [&store](const std::string& raw) {
                       if (auto scheme = Appearance::from(raw)) store.setScheme(*scheme);
                   })
            .key("scheme"),
        ui::text(AppearanceWords::scheme).tone(ui::Tone::Dim),
        ui::text(AppearanceWords::themes).tone(ui::Tone::Dim),
    };
    for (const auto& palette : ThemeCatalog::all()) children.push_back(paletteRow(store, palette));
    return ui::section(title, AppearanceWords::line, std::move(children)).key("appearance");
}

void compact(ui::Node& section, ThemeStore& store) {
    std::vector<ui::Choice> palettes;
    for (const auto& palette : ThemeCatalog::all()) palettes.push_back({palette.name, palette.id});
    const ThemeChoice& choice = store.choice();
    auto nameOf = [](const std::string& id) {
        for (const auto& palette : ThemeCatalog::all())
            if (palette.id == id) return palette.name;
        return id;
    };
    // The palette rows carry the palettes' ids as keys; everything else in the section stays.
    ui::Nodes kept;
    for (auto& child : section.children) {
        const bool paletteRow = std::any_of(palettes.begin(), palettes.end(),
                                            [&](const ui::Choice& p) { return p.value == child.identity; });
        const bool clickHint = child.kind == ui::Kind::Text && child.text == AppearanceWords::themes;
        if (!paletteRow && !clickHint) kept.push_back(std::move(child));
    }
    kept.push_back(ui::picker("Palette", palettes, choice.light == choice.dark ? choice.light : std::string{},
                              [&store](const std::string& id) { store.setChoice(ThemeChoice::both(id)); })
                       .pickerAs(ui::PickerStyle::Menu)
                       .key("palette"));
    if (choice.light != choice.dark)
        kept.push_back(ui::text("Light: " + nameOf(choice.light) + ", Dark: " + nameOf(choice.dark) + ".")
                           .tone(ui::Tone::Dim));
    section.children = std::move(kept);
}

} // namespace orvan::AppearanceSection
