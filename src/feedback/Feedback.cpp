#include "feedback/Feedback.h"

#include "feedback/FeedbackWords.h"
#include "foundation/Text.h"

#include <QByteArray>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <regex>
#include <unicode/locid.h>
#include <unicode/numfmt.h>

namespace orvan::Feedback {

namespace {

std::string grouped(std::size_t number, const std::string& locale) {
    std::string id = locale;
    if (id.empty()) {
        for (const char* name : {"LC_ALL", "LC_NUMERIC", "LANG"}) {
            const char* value = std::getenv(name);
            if (value && *value) {
                id = value;
                break;
            }
        }
    }
    for (char cut : {'.', '@'})
        if (auto at = id.find(cut); at != std::string::npos) id.resize(at);
    if (id.empty() || id == "C" || id == "POSIX") id = "en_US";
    UErrorCode error = U_ZERO_ERROR;
    std::unique_ptr<icu::NumberFormat> format(icu::NumberFormat::createInstance(icu::Locale(id.c_str()), error));
    if (U_FAILURE(error) || !format) return std::to_string(number);
    icu::UnicodeString out;
    format->format(static_cast<int64_t>(number), out);
    std::string text;
    out.toUTF8String(text);
    return text;
}

std::size_t totalBytes(const std::vector<FeedbackImage>& images) {
    std::size_t total = 0;
    for (const auto& image : images) total += image.data.size();
    return total;
}

std::string oneDecimal(double value) {
    const long tenths = std::lround(value * 10);
    std::string text = std::to_string(tenths / 10);
    if (tenths % 10) text += "." + std::to_string(tenths % 10);
    return text;
}

} // namespace

std::string clean(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r') {
            out += '\n';
            if (i + 1 < text.size() && text[i + 1] == '\n') ++i;
        } else {
            out += text[i];
        }
    }
    return Text::trimmed(out);
}

std::optional<std::string> problem(std::string_view text, const std::vector<FeedbackImage>& images,
                                   const std::string& locale) {
    const std::string cleaned = clean(text);
    if (cleaned.empty()) return std::string(FeedbackWords::writeFirst);
    if (Text::characterCount(cleaned) > maxText) return "Keep it under " + grouped(maxText, locale) + " characters.";
    if (images.size() > maxImages) return std::string(FeedbackWords::tooManyPictures);
    if (totalBytes(images) > maxImageBytes) return std::string(FeedbackWords::tooBig);
    return std::nullopt;
}

std::string diagnostics(const std::string& app, const std::optional<std::string>& bridge, const std::string& system,
                        const std::string& model, const std::vector<std::optional<std::string>>& computers) {
    std::vector<std::string> lines{app};
    if (bridge && !bridge->empty()) lines.push_back("Bridge " + *bridge);
    std::string machine = system;
    if (!machine.empty() && !model.empty()) machine += " · ";
    machine += model;
    if (!machine.empty()) lines.push_back(machine);
    for (std::size_t i = 0; i < computers.size(); ++i) {
        const auto& version = computers[i];
        lines.push_back("Computer " + std::to_string(i + 1) + ": " +
                        (version && !version->empty() ? *version : std::string("version not known")));
    }
    std::string joined;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (i) joined += '\n';
        joined += lines[i];
    }
    return Text::prefixScalars(joined, maxDiagnostics);
}

std::string device(std::string_view model) {
    static const std::regex shape("^[A-Za-z]+[0-9]+,[0-9]+$");
    const std::string text(model);
    return std::regex_match(text, shape) ? text : std::string("Mac");
}

std::string byteSize(std::size_t bytes) {
    if (bytes < 1000) return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
    if (bytes < 1'000'000) return std::to_string((bytes + 500) / 1000) + " KB";
    return oneDecimal(static_cast<double>(bytes) / 1e6) + " MB";
}

std::string preview(FeedbackKind kind, const std::string& device, const std::string& text,
                    const std::optional<std::string>& diagnostics, const std::vector<FeedbackImage>& images) {
    std::string out = std::string("Kind: ") + FeedbackKinds::title(kind) + "\n";
    out += "From: " + device + "\n\n";
    out += text.empty() ? std::string("(nothing written yet)") : text;
    out += "\n\n";
    if (diagnostics) out += "Diagnostics:\n" + *diagnostics;
    else out += "Diagnostics: not included";
    if (!images.empty())
        out += "\n\nPictures: " + std::to_string(images.size()) + ", " + byteSize(totalBytes(images)) + " together";
    return out;
}

std::string footer(Went went, bool consentAllows, bool canMail) {
    switch (went) {
    case Went::relay: return FeedbackWords::footerRelay;
    case Went::mail: return FeedbackWords::footerMail;
    case Went::clipboard: return FeedbackWords::footerClipboard;
    case Went::notYet: break;
    }
    if (consentAllows) return FeedbackWords::footerRelay;
    return canMail ? FeedbackWords::footerMail : FeedbackWords::footerClipboard;
}

Json body(FeedbackKind kind, const std::string& text, const std::string& diagnostics, const std::string& device,
          const std::vector<FeedbackImage>& images) {
    std::string lines;
    lines.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
        lines += text[i];
    }
    Json pictures = Json::array();
    for (const auto& image : images) {
        const QByteArray raw = QByteArray::fromRawData(image.data.data(), static_cast<qsizetype>(image.data.size()));
        pictures.push_back({{"type", image.type}, {"data", raw.toBase64().toStdString()}});
    }
    return Json{{"kind", FeedbackKinds::raw(kind)},
                {"text", lines},
                {"diagnostics", diagnostics},
                {"device", device},
                {"images", std::move(pictures)}};
}

Outcome outcome(int status, std::string_view body) {
    if (status >= 200 && status <= 299) return Outcome::sent();
    std::optional<std::string> error, message;
    if (auto tree = json::parse(body); tree && tree->is_object()) {
        if (auto e = tree->find("error"); e != tree->end() && e->is_string()) error = e->get<std::string>();
        if (auto m = tree->find("message"); m != tree->end() && m->is_string()) message = m->get<std::string>();
    }
    if (status == 401) return Outcome::failed(FeedbackWords::paired);
    if (status == 503 && (error == "feedback_off" || error == "no_relay")) return Outcome::relayOff();
    const std::string said = message ? Text::trimmed(*message) : std::string();
    return Outcome::failed(said.empty() ? std::string(FeedbackWords::notSent) : said);
}

std::string mailSubject(FeedbackKind kind, const std::string& text) {
    std::string subject = std::string("Orvan feedback (") + FeedbackKinds::title(kind) + ")";
    // The first words of the first line, enough to tell reports apart in a mailbox.
    std::string first = clean(text);
    if (auto end = first.find('\n'); end != std::string::npos) first.resize(end);
    first = Text::trimmed(first);
    if (first.empty()) return subject;
    if (Text::characterCount(first) > 60) {
        first = Text::prefixCharacters(first, 60);
        if (auto space = first.rfind(' '); space != std::string::npos && space > 20) first.resize(space);
        first = Text::trimmed(first) + "…";
    }
    return subject + ": " + first;
}

} // namespace orvan::Feedback
