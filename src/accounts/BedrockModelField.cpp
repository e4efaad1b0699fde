#include "accounts/BedrockModelField.h"

namespace orvan::BedrockModelField {

namespace {
Task<void> load(Accounts& accounts, BedrockModelList& list, Json body, std::function<void()> changed) {
    list.loading = true;
    list.note.clear();
    if (changed) changed();
    auto result = co_await accounts.bedrockModels(std::move(body));
    list.loading = false;
    list.loaded = true;
    if (auto* models = std::get_if<0>(&result)) {
        list.models = std::move(*models);
        list.note.clear();
    } else {
        list.models.clear();
        list.note = std::get<1>(result);
    }
    if (changed) changed();
}
} // namespace

ui::Nodes build(Accounts& accounts, BedrockModelList& list, std::string& model, const std::string& key,
                std::function<std::optional<Json>()> body, std::function<void()> changed) {
    Accounts* m = &accounts;
    BedrockModelList* l = &list;
    std::string* text = &model;
    ui::Nodes out;
    const bool canLoad = !list.loading && body && body().has_value();
    out.push_back(ui::hstack({
        ui::field(key + ".model", "Model ID", model, [text](const std::string& typed) { *text = typed; })
            .placeholder("Optional")
            .help(modelHelp),
        list.loading ? ui::spinner("Listing models…")
                     : ui::button(list.note.empty() ? "Choose" : "List again",
                                  [m, l, body, changed] {
                                      if (auto b = body()) spawn(load(*m, *l, std::move(*b), changed));
                                  })
                           .enabled(canLoad)
                           .help("The Claude models Amazon Bedrock lists for this account in its region.")
                           .key(key + ".choose"),
    }).key(key + ".modelRow"));
    if (!list.models.empty()) {
        std::vector<ui::Choice> choices{{"Claude Code's default", ""}};
        for (const auto& listed : list.models) choices.push_back({listed.label(), listed.id});
        out.push_back(ui::picker("Listed models", std::move(choices), model,
                                 [text, changed](const std::string& id) {
                                     *text = id;
                                     if (changed) changed();
                                 })
                          .pickerAs(ui::PickerStyle::Menu)
                          .key(key + ".listed"));
    }
    if (!list.note.empty()) out.push_back(ui::text(list.note).tone(ui::Tone::Danger).key(key + ".modelsNote"));
    return out;
}

} // namespace orvan::BedrockModelField
