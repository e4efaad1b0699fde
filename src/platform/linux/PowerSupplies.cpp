#include "platform/linux/PowerSupplies.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <string>

namespace orvan::PowerSupplies {

namespace {

// sysfs attributes are one short line; anything longer is not what we look for.
std::string attribute(const std::filesystem::path& supply, const char* name) {
    std::ifstream in(supply / name);
    if (!in) return {};
    std::string line;
    line.resize(128);
    in.read(line.data(), static_cast<std::streamsize>(line.size()));
    line.resize(static_cast<std::size_t>(in.gcount()));
    while (!line.empty() && (line.back() == '\n' || line.back() == ' ')) line.pop_back();
    return line;
}

std::optional<std::int64_t> number(const std::filesystem::path& supply, const char* name) {
    std::string text = attribute(supply, name);
    std::int64_t value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

} // namespace

std::optional<std::vector<PowerSource>> read(const std::filesystem::path& folder) {
    std::error_code ec;
    std::vector<std::filesystem::path> supplies;
    for (auto it = std::filesystem::directory_iterator(folder, ec); !ec && it != std::filesystem::directory_iterator();
         it.increment(ec))
        supplies.push_back(it->path());
    if (ec) return std::nullopt;
    std::sort(supplies.begin(), supplies.end());

    bool mains = false;
    for (const auto& supply : supplies) {
        std::string type = attribute(supply, "type");
        if ((type == "Mains" || type == "USB") && attribute(supply, "online") == "1") mains = true;
    }
    std::vector<PowerSource> sources;
    for (const auto& supply : supplies) {
        if (attribute(supply, "type") != "Battery" || attribute(supply, "scope") == "Device") continue;
        PowerSource source;
        source.type = "InternalBattery";
        std::string status = attribute(supply, "status");
        source.state = mains ? "AC Power" : "Battery Power";
        source.charging = status == "Charging";
        if (auto percent = number(supply, "capacity")) {
            source.current = percent;
            source.max = 100;
        } else if (auto charge = number(supply, "charge_now")) {
            source.current = charge;
            source.max = number(supply, "charge_full");
        } else if (auto energy = number(supply, "energy_now")) {
            source.current = energy;
            source.max = number(supply, "energy_full");
        }
        sources.push_back(std::move(source));
    }
    return sources;
}

} // namespace orvan::PowerSupplies
