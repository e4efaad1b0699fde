#pragma once
// User defaults: one JSON file per domain under $XDG_CONFIG_HOME/orvan, types kept exactly
// (a stored Boolean stays a Boolean). Reading an absent or corrupt file gives an empty domain.
// Everyone who opens the same file shares one store, so a change made by one model is seen by
// the observers of another.

#include "foundation/Carryover.h"
#include "foundation/Json.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

class UserDefaults : public std::enable_shared_from_this<UserDefaults> {
public:
    using Observer = std::function<void(const std::string& key)>;

    // Ends an observation when destroyed.
    class Subscription {
    public:
        Subscription() = default;
        Subscription(std::weak_ptr<UserDefaults> store, int id) : store_(std::move(store)), id_(id) {}
        Subscription(Subscription&& other) noexcept { *this = std::move(other); }
        Subscription& operator=(Subscription&& other) noexcept;
        Subscription(const Subscription&) = delete;
        Subscription& operator=(const Subscription&) = delete;
        ~Subscription() { reset(); }
        void reset();

    private:
        std::weak_ptr<UserDefaults> store_;
        int id_ = 0;
    };

    // The store of one domain in the standard folder, shared by every caller in this process.
    static std::shared_ptr<UserDefaults> domain(const std::string& name, const Environment& environment);
    static std::shared_ptr<UserDefaults> domain(const std::string& name);
    // The store kept in one file, shared by every caller in this process.
    static std::shared_ptr<UserDefaults> at(const std::filesystem::path& file);
    static std::filesystem::path fileOf(const std::string& domain, const Environment& environment);

    const std::filesystem::path& file() const { return file_; }

    std::optional<Json> value(const std::string& key) const;
    // Typed reads: absent when missing or of another type.
    std::optional<bool> boolean(const std::string& key) const;
    std::optional<std::string> string(const std::string& key) const;
    std::optional<double> number(const std::string& key) const;

    void set(const std::string& key, Json value);
    void remove(const std::string& key);
    // Every key and value, as stored.
    Json all() const { return values_; }
    // Puts `values` (an object; anything else is refused) in place of the whole domain, and tells the
    // observers of every key that was added, changed or dropped.
    bool replaceAll(Json values);

    Subscription observe(Observer observer);

    explicit UserDefaults(std::filesystem::path file);

private:
    void save() const;
    void changed(const std::string& key);

    std::filesystem::path file_;
    Json values_ = Json::object();
    int nextId_ = 1;
    std::vector<std::pair<int, Observer>> observers_;
};

} // namespace orvan
