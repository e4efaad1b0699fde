#pragma once
// The owner's one switch for sending feedback and crash reports, kept in the user defaults with
// the revision it was answered under, so that a later version can ask again when the switch
// covers more.

#include "foundation/UserDefaults.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace orvan {

struct Consent {
    static constexpr const char* onKey = "orvan.consent.on";
    static constexpr const char* answeredKey = "orvan.consent.answered";
    // The one name of the change notice, also for the crash reporter.
    static constexpr const char* changed = "orvan.consent.changed";
    static constexpr int revision = 2;

    bool on = false;
    int answered = 0;

    bool allows() const { return on && answered >= 1; }
    bool needsAsking() const { return answered < revision; }

    // A version that doesn't parse, has no parts, or is below 1 opens with sharing on: pre-releases
    // go to people who asked to help.
    static bool preset(std::string_view version);
    static Consent load(const UserDefaults& defaults, std::string_view version);
    // Stores the answer under the current revision and tells every observer.
    static void answer(bool on, UserDefaults& defaults);
    // The stored revision; 0 when never answered or not a whole number.
    static int storedAnswer(const UserDefaults& defaults);

    // Ends an observation of the change notice when destroyed.
    class Observation {
    public:
        Observation() = default;
        explicit Observation(int id) : id_(id) {}
        Observation(Observation&& other) noexcept : id_(std::exchange(other.id_, 0)) {}
        Observation& operator=(Observation&& other) noexcept;
        Observation(const Observation&) = delete;
        Observation& operator=(const Observation&) = delete;
        ~Observation() { reset(); }
        void reset();
        explicit operator bool() const { return id_ != 0; }

    private:
        int id_ = 0;
    };
    // Observers are told on the thread that posts, which is the one the owner answered on.
    static Observation observeChanged(std::function<void()> observer);
    static void postChanged();

    bool operator==(const Consent&) const = default;
};

} // namespace orvan
