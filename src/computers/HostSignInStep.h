#pragma once
// What the sign-in sheet shows for a state the computer reported.

#include "computers/HostSignInState.h"

#include <string>

namespace orvan {

struct HostSignInStep {
    enum class Kind { starting, waiting, verifying, done, failed };

    Kind kind = Kind::starting;
    // With `waiting`: the state that carries the page and the code.
    HostSignInState state;
    // With `failed`: the sentence.
    std::string sentence;

    static HostSignInStep starting() { return {}; }
    static HostSignInStep failed(std::string sentence) { return {Kind::failed, {}, std::move(sentence)}; }
    static HostSignInStep of(const HostSignInState& state);

    // A sign-in still under way: the sheet offers to stop it.
    bool running() const { return kind == Kind::starting || kind == Kind::waiting || kind == Kind::verifying; }
    bool operator==(const HostSignInStep&) const = default;
};

} // namespace orvan
