#include "Seeds.h"

#include "State.h"

namespace orvan::sim {

namespace {
using std::chrono::hours;
constexpr hours days(int n) { return hours(24 * n); }
} // namespace

std::optional<Seed> Seeds::named(const std::string& name) {
    if (name == "demo") return Seed::demo;
    if (name == "empty") return Seed::empty;
    return std::nullopt;
}

State Seeds::make(Seed seed, TimePoint now) {
    State state;
    if (seed == Seed::empty) {
        // A bridge that has just been installed: nobody has paired, nobody owns it yet.
        state.name = "Mac mini";
        state.on = false;
        state.tulm = "absent";
        state.screen.available = true;
        return state;
    }
    state.name = "Mara’s MacBook Pro";
    state.on = true;
    state.sidebar = "left";
    state.tulm = "up";
    state.screen.available = true;
    state.screen.on = true;
    state.diagnostics = true;
    state.diagnosticsAnswered = true;
    state.phones.push_back(Phone{"9F2C4E1A-7B3D-4C21-A8E5-3D6F0B7C9A12", "Mara’s iPhone", "owner",
                                 Rfc3339::string(now - days(41)), std::nullopt});
    state.phones.push_back(Phone{"C81D5A73-2E9F-4B6A-9C0D-5E7F1A2B3C48",
                                 "Theo’s iPad",
                                 "guest",
                                 std::nullopt,
                                 nlohmann::json{{"projects", {"orvan-site"}},
                                                {"sessions", nlohmann::json::array()},
                                                {"mode", "watch"},
                                                {"ends", Rfc3339::string(now + days(5))}}});
    return state;
}

} // namespace orvan::sim
