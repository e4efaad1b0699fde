#pragma once
// One answer of the simulated bridge, before it meets the HTTP library.

#include <nlohmann/json.hpp>
#include <string>

namespace orvan::sim {

struct Reply {
    int status = 204;
    std::string body;
    std::string contentType;
    // Work the bridge finishes before it answers: the answer leaves this many seconds later, and the
    // state is not held meanwhile.
    double delaySeconds = 0;

    // A write with nothing to say.
    static Reply done() { return {204, {}, {}}; }
    static Reply json(int status, const nlohmann::json& value) {
        return {status, value.dump(), "application/json"};
    }
    // A failure as the companion reads it: a sentence for a person in "message".
    static Reply message(int status, const std::string& text) {
        return json(status, nlohmann::json{{"message", text}});
    }
    // A refusal that the companion tells apart by its "error" word.
    static Reply refusal(int status, const std::string& error, const std::string& text) {
        return json(status, nlohmann::json{{"error", error}, {"message", text}});
    }
};

} // namespace orvan::sim
