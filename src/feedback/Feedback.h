#pragma once
// A report to the developer as the owner sees it before it goes: the limits of a draft, its first
// fault, the diagnostics lines, the preview that is exactly what will be sent, the wire body, and
// what the bridge's answer means. Everything here is pure, so the window and its tests share it.

#include "feedback/FeedbackImage.h"
#include "feedback/FeedbackKind.h"
#include "foundation/Json.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan::Feedback {

inline constexpr std::size_t maxImages = 3;
// All the pictures together.
inline constexpr std::size_t maxImageBytes = 2'097'152;
// One picture's share: a third of the whole, so three that passed can never exceed it.
inline constexpr std::size_t imageBudget = 699'050;
// User-perceived characters of the cleaned text.
inline constexpr std::size_t maxText = 10'000;
// Unicode scalars of the diagnostics text.
inline constexpr std::size_t maxDiagnostics = 4'000;
inline constexpr const char* path = "/companion/feedback";
inline constexpr const char* mailAddress = "support@orvan.app";

struct ShrinkStep {
    int longestSide;
    double quality;
};
// Tried in order until one picture fits `imageBudget`.
inline constexpr std::array<ShrinkStep, 5> shrinkSteps = {{{1600, 0.7}, {1280, 0.6}, {1024, 0.5}, {800, 0.45}, {640, 0.4}}};

struct Outcome {
    enum class Kind { sent, relayOff, failed };
    Kind kind = Kind::failed;
    std::string text; // only for `failed`
    static Outcome sent() { return {Kind::sent, {}}; }
    static Outcome relayOff() { return {Kind::relayOff, {}}; }
    static Outcome failed(std::string text) { return {Kind::failed, std::move(text)}; }
    bool operator==(const Outcome&) const = default;
};

// How the report went, or is about to go, for the sentence under the buttons.
enum class Went { notYet, relay, mail, clipboard };

// Carriage return and line feed pairs, and lone carriage returns, become line feeds; the ends are trimmed.
std::string clean(std::string_view text);

// The first fault of a draft, or nothing. `locale` groups the digits of the text limit ("" = the process's).
std::optional<std::string> problem(std::string_view text, const std::vector<FeedbackImage>& images,
                                   const std::string& locale = {});

// The lines under "Diagnostics:": the companion, its bridge, the system and model, then each added
// computer by number with its bridge's version. Never a computer's name.
std::string diagnostics(const std::string& app, const std::optional<std::string>& bridge, const std::string& system,
                        const std::string& model, const std::vector<std::optional<std::string>>& computers);

// The model as sent: a firmware model id of the shape "Name12,3", else "Mac".
std::string device(std::string_view model);

// A byte count in the owner's words: "512 bytes", "87 KB", "1.4 MB".
std::string byteSize(std::size_t bytes);

// Exactly what will go, line by line. `diagnostics` absent: the owner left them out.
std::string preview(FeedbackKind kind, const std::string& device, const std::string& text,
                    const std::optional<std::string>& diagnostics, const std::vector<FeedbackImage>& images);

std::string footer(Went went, bool consentAllows, bool canMail);

// The POST body; `diagnostics` empty when the owner turned them off.
Json body(FeedbackKind kind, const std::string& text, const std::string& diagnostics, const std::string& device,
          const std::vector<FeedbackImage>& images);

// What an HTTP answer to a send means.
Outcome outcome(int status, std::string_view body);

std::string mailSubject(FeedbackKind kind, const std::string& text);

} // namespace orvan::Feedback
