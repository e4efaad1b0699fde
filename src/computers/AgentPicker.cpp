#include "computers/AgentPicker.h"

#include "computers/AgentChoice.h"

namespace orvan::AgentPicker {

ui::Node build(const HostAgentsThere& there, const std::set<std::string>& chosen,
               std::function<void(const std::string&, bool)> tick) {
    ui::Nodes rows{ui::text(AgentChoice::line(there)).key("agents.line")};
    const auto missing = AgentChoice::missing(there);
    if (missing.empty() && there.node) {
        rows.push_back(ui::text("Every agent the companion installs is there.").tone(ui::Tone::Dim).key("agents.all"));
        return ui::vstack(std::move(rows)).key("agentPicker");
    }
    ui::Nodes group;
    for (const auto& agent : missing) {
        const std::string name = agent.name;
        group.push_back(ui::toggle(agent.title, chosen.count(name) > 0, [tick, name](bool on) { tick(name, on); })
                            .help(agent.how)
                            .key("agent:" + name));
        group.push_back(ui::text(agent.how).tone(ui::Tone::Dim).style(ui::TextStyle::Caption));
    }
    if (!there.node) {
        const bool comes = AgentChoice::nodeComes(chosen, there);
        const std::string name = HostAgent::node().name;
        group.push_back(ui::toggle("Node.js, which Claude's and Codex's threads need", comes || chosen.count(name) > 0,
                                   [tick, name](bool on) { tick(name, on); })
                            .enabled(!comes)
                            .help(HostAgent::node().how)
                            .key("agent:node"));
    }
    rows.push_back(ui::section("Install there", std::move(group)).key("agents.install"));
    rows.push_back(ui::text("Each installs as this user, with its maker's own installer, into the user's own folders. "
                            "sudo is asked for only if the computer lacks a tool they need, such as curl.")
                       .tone(ui::Tone::Dim)
                       .style(ui::TextStyle::Caption));
    return ui::vstack(std::move(rows)).key("agentPicker");
}

} // namespace orvan::AgentPicker
