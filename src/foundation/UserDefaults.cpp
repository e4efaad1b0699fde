#include "foundation/UserDefaults.h"

#include "foundation/Files.h"

#include <map>
#include <mutex>

namespace orvan {

namespace fs = std::filesystem;

UserDefaults::Subscription& UserDefaults::Subscription::operator=(Subscription&& other) noexcept {
    if (this != &other) {
        reset();
        store_ = std::move(other.store_);
        id_ = other.id_;
        other.id_ = 0;
    }
    return *this;
}

void UserDefaults::Subscription::reset() {
    if (auto store = store_.lock()) {
        std::erase_if(store->observers_, [&](const auto& o) { return o.first == id_; });
    }
    store_.reset();
    id_ = 0;
}

UserDefaults::UserDefaults(fs::path file) : file_(std::move(file)) {
    if (auto bytes = Files::read(file_)) {
        if (auto tree = json::parse(*bytes); tree && tree->is_object()) values_ = std::move(*tree);
    }
}

fs::path UserDefaults::fileOf(const std::string& domain, const Environment& environment) {
    return DataFolder::configHome(environment) / "orvan" / (domain + ".json");
}

std::shared_ptr<UserDefaults> UserDefaults::at(const fs::path& file) {
    static std::mutex lock;
    static std::map<fs::path, std::weak_ptr<UserDefaults>> open;
    std::lock_guard guard(lock);
    auto& slot = open[file];
    if (auto existing = slot.lock()) return existing;
    auto store = std::make_shared<UserDefaults>(file);
    slot = store;
    return store;
}

std::shared_ptr<UserDefaults> UserDefaults::domain(const std::string& name, const Environment& environment) {
    return at(fileOf(name, environment));
}

std::shared_ptr<UserDefaults> UserDefaults::domain(const std::string& name) {
    return domain(name, Carryover::processEnvironment());
}

std::optional<Json> UserDefaults::value(const std::string& key) const {
    auto it = values_.find(key);
    if (it == values_.end()) return std::nullopt;
    return *it;
}

std::optional<bool> UserDefaults::boolean(const std::string& key) const {
    auto v = value(key);
    return v ? Decode<bool>::from(*v) : std::nullopt;
}

std::optional<std::string> UserDefaults::string(const std::string& key) const {
    auto v = value(key);
    return v ? Decode<std::string>::from(*v) : std::nullopt;
}

std::optional<double> UserDefaults::number(const std::string& key) const {
    auto v = value(key);
    return v ? Decode<double>::from(*v) : std::nullopt;
}

void UserDefaults::set(const std::string& key, Json value) {
    values_[key] = std::move(value);
    save();
    changed(key);
}

void UserDefaults::remove(const std::string& key) {
    if (values_.erase(key) == 0) return;
    save();
    changed(key);
}

bool UserDefaults::replaceAll(Json values) {
    if (!values.is_object()) return false;
    std::vector<std::string> touched;
    for (auto it = values_.begin(); it != values_.end(); ++it)
        if (!values.contains(it.key()) || values.at(it.key()) != it.value()) touched.push_back(it.key());
    for (auto it = values.begin(); it != values.end(); ++it)
        if (!values_.contains(it.key())) touched.push_back(it.key());
    values_ = std::move(values);
    save();
    for (const auto& key : touched) changed(key);
    return true;
}

UserDefaults::Subscription UserDefaults::observe(Observer observer) {
    int id = nextId_++;
    observers_.emplace_back(id, std::move(observer));
    // The registry hands out shared pointers, so this store is always owned by one.
    return Subscription(weak_from_this(), id);
}

void UserDefaults::save() const {
    if (auto bytes = json::dump(values_)) Files::write(file_, *bytes);
}

void UserDefaults::changed(const std::string& key) {
    // Copy first: an observer may end its own or another's subscription.
    auto observers = observers_;
    for (const auto& [id, observer] : observers) observer(key);
}

} // namespace orvan
