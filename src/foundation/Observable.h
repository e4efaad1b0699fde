#pragma once
// A model that tells its views when a published field is assigned. Views coalesce the calls, so a
// model may publish as often as it assigns.

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace orvan {

class Observable {
public:
    using Observer = std::function<void()>;

    // Ends an observation when destroyed; safe to outlive the model.
    class Subscription {
    public:
        Subscription() = default;
        Subscription(std::weak_ptr<std::vector<std::pair<int, Observer>>> list, int id)
            : list_(std::move(list)), id_(id) {}
        Subscription(Subscription&& o) noexcept : list_(std::move(o.list_)), id_(std::exchange(o.id_, 0)) {}
        Subscription& operator=(Subscription&& o) noexcept {
            if (this != &o) {
                reset();
                list_ = std::move(o.list_);
                id_ = std::exchange(o.id_, 0);
            }
            return *this;
        }
        Subscription(const Subscription&) = delete;
        Subscription& operator=(const Subscription&) = delete;
        ~Subscription() { reset(); }
        void reset() {
            if (auto list = list_.lock()) std::erase_if(*list, [&](const auto& o) { return o.first == id_; });
            list_.reset();
            id_ = 0;
        }

    private:
        std::weak_ptr<std::vector<std::pair<int, Observer>>> list_;
        int id_ = 0;
    };

    Observable() = default;
    Observable(const Observable&) = delete;
    Observable& operator=(const Observable&) = delete;
    virtual ~Observable() = default;

    Subscription observe(Observer observer) {
        int id = nextId_++;
        observers_->emplace_back(id, std::move(observer));
        return Subscription(observers_, id);
    }

protected:
    void publish() {
        // Copied: an observer may subscribe or unsubscribe while being told.
        auto observers = *observers_;
        for (auto& [id, observer] : observers) observer();
    }

    // Assigns a published field and tells the observers. Views are drawn from the models alone, so
    // an assignment that changes nothing has nothing to tell, and an idle poll costs no redraw.
    template <class T, class U> void assign(T& field, U&& value) {
        if (field == value) return;
        field = std::forward<U>(value);
        publish();
    }

private:
    std::shared_ptr<std::vector<std::pair<int, Observer>>> observers_ =
        std::make_shared<std::vector<std::pair<int, Observer>>>();
    int nextId_ = 1;
};

} // namespace orvan
