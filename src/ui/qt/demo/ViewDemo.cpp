// A window of sample content drawn by the Qt renderer, for people to look at: every kind of node
// in the arrangement the main window uses. `--out FILE` saves a picture of the window and exits;
// `--dark` draws it with a dark palette. Without `--out` the window stays open.

#include "ui/Node.h"
#include "ui/qt/TonePalette.h"
#include "ui/qt/WindowHost.h"

#include <QApplication>
#include <QPalette>
#include <QPixmap>
#include <QStyle>
#include <QStyleFactory>
#include <QTimer>
#include <QWidget>

#include <cstdio>
#include <cstring>
#include <string>

using namespace orvan;

namespace {

struct DemoState {
    bool on = true;
    bool renaming = true;
    std::string draft = "Studio Mac";
    std::string side = "left";
    bool login = false;
};

QPalette darkPalette() {
    QPalette p;
    const QColor window(0x23, 0x24, 0x28), base(0x1b, 0x1c, 0x20), text(0xe8, 0xe6, 0xe3);
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::AlternateBase, window);
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::Button, QColor(0x33, 0x35, 0x3a));
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::Highlight, QColor(0x5d, 0x9c, 0xec));
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::ToolTipBase, base);
    p.setColor(QPalette::ToolTipText, text);
    p.setColor(QPalette::PlaceholderText, QColor(0x8a, 0x8a, 0x8a));
    p.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(0x7a, 0x7a, 0x7a));
    p.setColor(QPalette::Disabled, QPalette::WindowText, QColor(0x7a, 0x7a, 0x7a));
    p.setColor(QPalette::Disabled, QPalette::Text, QColor(0x7a, 0x7a, 0x7a));
    return p;
}

ui::Node view(DemoState& s, ui::qt::WindowHost*& host) {
    auto again = [&host] {
        if (host) host->requestRender();
    };
    ui::Nodes phones;
    const std::pair<const char*, const char*> devices[] = {{"Ann's iPhone", "Owner"}, {"Bo's iPhone", "Member"},
                                                           {"Browser \u2013 Firefox", "Guest until 12 May"}};
    for (const auto& [name, role] : devices) {
        const bool guest = std::string(role).rfind("Guest", 0) == 0;
        phones.push_back(ui::row(name, role,
                                 {ui::when(guest, ui::menu("Extend", {ui::button("One day", [] {}),
                                                                      ui::button("One week", [] {})})),
                                  ui::button("Remove", [] {}).help("Takes this device's approval away.")})
                             .key(name));
    }
    phones.push_back(ui::button("Invite someone\u2026", [] {}).help("A member, or a guest who sees only what you pick."));

    return ui::vstack({
        ui::section("", {
            s.renaming ? ui::row("", {ui::field("rename", "", s.draft, [&s](const std::string& t) { s.draft = t; })
                                          .placeholder("Name this Mac"),
                                      ui::button("Save", [&s, again] { s.renaming = false; again(); }).role(ui::Role::Primary),
                                      ui::button("Cancel", [&s, again] { s.renaming = false; again(); })})
                       : ui::row(s.draft, {ui::button("Rename", [&s, again] { s.renaming = true; again(); })
                                               .help("The name your iPhone shows for this Mac.")}),
            ui::text("Your iPhone uses this name.").tone(ui::Tone::Dim).style(ui::TextStyle::Caption),
            ui::hstack({ui::symbol("circle.fill", ui::Tone::Good), ui::text("Running, version 1.4.2")}),
            ui::toggle("Remote control", s.on, [&s](bool on) { s.on = on; }).help("Turns remote control off."),
            ui::text("This Mac has to stay awake. Your iPhone finds it on this Wi-Fi and away from it, with no "
                     "address to type and nothing to sign in to.")
                .tone(ui::Tone::Dim),
        }),
        ui::section("Phones", std::move(phones)),
        ui::section("Environments", "What runs threads on this Mac.", {
            ui::row("Direct", "Agents run straight on this Mac.", {}),
            ui::picker("Sidebar", {{"Left", "left"}, {"Right", "right"}}, s.side,
                       [&s](const std::string& v) { s.side = v; })
                .label("Tulm's sidebar")
                .help("Which side of the Tulm desktop window its session sidebar sits on."),
            ui::text("Sidebar could not be changed.").tone(ui::Tone::Danger),
        }),
        ui::section("Sandboxes", {
            ui::progress(0.62, "Downloading the image"),
            ui::hstack({ui::spinner("Starting the desktop"), ui::symbol("exclamationmark.triangle", ui::Tone::Warning)}),
            ui::secureField("token", "Token", "not-shown", [](const std::string&) {}),
        }),
        ui::section("", {
            ui::toggle("Open when you log in", s.login, [&s](bool on) { s.login = on; }),
            ui::text("The Mac is ready before you open this window.").tone(ui::Tone::Dim),
        }),
        ui::section("Updates", {
            ui::text("A newer release asks on its own, about every four hours. Check now looks right away.").tone(ui::Tone::Dim),
            ui::hstack({ui::button("Check now", [] {}), ui::button("Update", [] {}).enabled(false)}),
        }),
        ui::text("Version 0.1.0 (1)").selectable().tone(ui::Tone::Dim).style(ui::TextStyle::Caption),
    });
}

} // namespace

int main(int argc, char** argv) {
    const char* out = nullptr;
    bool dark = false;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--out") == 0 && i + 1 < argc) out = argv[++i];
        else if (std::strcmp(argv[i], "--dark") == 0) dark = true;
    }
    QApplication app(argc, argv);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(dark ? darkPalette() : QApplication::style()->standardPalette());

    DemoState state;
    ui::qt::WindowHost* host = nullptr;
    ui::qt::WindowHost window({.id = "demo", .title = "Remote control", .minimumSize = {640, 780}, .defaultSize = {760, 920}, .defaults = nullptr},
                              [&] { return view(state, host); });
    host = &window;
    window.setTonePalette(ui::qt::TonePalette::fromPalette(QApplication::palette()));
    window.show();
    window.window()->resize(760, 920);

    if (!out) return app.exec();
    QTimer::singleShot(0, [&] {
        window.renderNow();
        const QPixmap picture = window.window()->grab();
        const bool saved = picture.save(QString::fromLocal8Bit(out), "PNG");
        std::fprintf(saved ? stdout : stderr, "%s %s (%dx%d)\n", saved ? "saved" : "could not save", out,
                     picture.width(), picture.height());
        app.exit(saved ? 0 : 1);
    });
    return app.exec();
}
