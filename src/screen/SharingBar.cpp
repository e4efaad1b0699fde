#include "screen/SharingBar.h"

namespace orvan {

ui::Node SharingBarView::build() const {
    ui::Nodes lines;
    lines.push_back(ui::text(text).style(ui::TextStyle::Headline).key("sharing.text"));
    if (detail) lines.push_back(ui::text(*detail).tone(ui::Tone::Dim).style(ui::TextStyle::Caption).key("sharing.detail"));
    auto action = stop;
    return ui::hstack({
        ui::vstack(std::move(lines)),
        ui::button("Stop sharing", [action] { if (action) action(); }).role(ui::Role::Destructive).key("sharing.stop"),
    }).key("sharing");
}

void SharingBar::show(std::string text, std::optional<std::string> detail, std::function<void()> stop) {
    view_ = SharingBarView{std::move(text), std::move(detail), std::move(stop)};
    if (panel_) panel_->present(*view_);
}

void SharingBar::hide() {
    bool was = view_.has_value();
    view_.reset();
    if (panel_ && was) panel_->dismiss();
}

void SharingBar::attach(SharingPanel* panel) {
    if (panel_ && view_) panel_->dismiss();
    panel_ = panel;
    if (panel_ && view_) panel_->present(*view_);
}

} // namespace orvan
