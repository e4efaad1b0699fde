#include "diagnostics/Consent.h"

#include "updates/CompanionVersion.h"

#include <mutex>
#include <utility>
#include <vector>

namespace orvan {

namespace {
struct Notice {
    std::mutex lock;
    int nextId = 1;
    std::vector<std::pair<int, std::shared_ptr<std::function<void()>>>> observers;
};
Notice& notice() {
    static Notice kept;
    return kept;
}
} // namespace

bool Consent::preset(std::string_view version) {
    auto parts = CompanionVersion::parse(version);
    return !parts || parts->empty() || parts->front() < 1;
}

int Consent::storedAnswer(const UserDefaults& defaults) {
    auto stored = defaults.value(answeredKey);
    if (!stored || !stored->is_number_integer()) return 0;
    const auto n = stored->get<std::int64_t>();
    return n < 0 ? 0 : n > 1'000'000 ? 1'000'000 : static_cast<int>(n);
}

Consent Consent::load(const UserDefaults& defaults, std::string_view version) {
    Consent consent;
    consent.on = defaults.boolean(onKey).value_or(preset(version));
    consent.answered = storedAnswer(defaults);
    return consent;
}

void Consent::answer(bool on, UserDefaults& defaults) {
    defaults.set(onKey, on);
    defaults.set(answeredKey, revision);
    postChanged();
}

Consent::Observation& Consent::Observation::operator=(Observation&& other) noexcept {
    if (this != &other) {
        reset();
        id_ = std::exchange(other.id_, 0);
    }
    return *this;
}

void Consent::Observation::reset() {
    if (!id_) return;
    Notice& n = notice();
    std::lock_guard guard(n.lock);
    std::erase_if(n.observers, [&](const auto& entry) { return entry.first == id_; });
    id_ = 0;
}

Consent::Observation Consent::observeChanged(std::function<void()> observer) {
    Notice& n = notice();
    std::lock_guard guard(n.lock);
    const int id = n.nextId++;
    n.observers.emplace_back(id, std::make_shared<std::function<void()>>(std::move(observer)));
    return Observation(id);
}

void Consent::postChanged() {
    // Told outside the lock: an observer may observe or stop observing while being told.
    std::vector<std::shared_ptr<std::function<void()>>> told;
    {
        Notice& n = notice();
        std::lock_guard guard(n.lock);
        for (const auto& entry : n.observers) told.push_back(entry.second);
    }
    for (const auto& observer : told) (*observer)();
}

} // namespace orvan
