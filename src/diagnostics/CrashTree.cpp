#include "diagnostics/CrashTree.h"
#include "foundation/Text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <memory>
#include <mutex>

#include <unicode/regex.h>

namespace orvan::CrashTree {

namespace {

// 1 for the bytes that change the scanner's state outside a string.
constexpr std::array<bool, 256> structural = [] {
    std::array<bool, 256> t{};
    for (unsigned char c : {'"', '[', ']', '{', '}'}) t[c] = true;
    return t;
}();

// Skips one bracketed value whose opening bracket stands at `i`. Gives the index after its
// closing bracket, or npos when the data ends first.
std::size_t skipValue(std::string_view data, std::size_t i) {
    int depth = 0;
    bool inString = false;
    bool escape = false;
    for (; i < data.size(); ++i) {
        char c = data[i];
        if (inString) {
            if (escape) escape = false;
            else if (c == '\\') escape = true;
            else if (c == '"') inString = false;
            continue;
        }
        if (c == '"') inString = true;
        else if (c == '[' || c == '{') ++depth;
        else if ((c == ']' || c == '}') && --depth == 0) return i + 1;
    }
    return std::string_view::npos;
}

using Object = CrashJSON::Object;
using Array = CrashJSON::Array;

const Array& listOr(const CrashJSON* value, const Array& empty) {
    const Array* list = value ? value->asArray() : nullptr;
    return list ? *list : empty;
}

Array frames(const Array& list, int& budget) {
    static const Array none;
    Array out;
    for (const CrashJSON& old : list) {
        const Object* o = old.asObject();
        if (!o || budget <= 0) break;
        --budget;
        Object frame;
        if (auto* v = old["binaryUUID"]; v && v->asString() && isUUID(*v->asString()))
            frame.emplace("binaryUUID", *v);
        if (auto* v = old["binaryName"]; v && v->asString() && isName(*v->asString()))
            frame.emplace("binaryName", *v);
        for (const char* key : {"offsetIntoBinaryTextSegment", "sampleCount"})
            if (auto* v = old[key]; v && v->integer()) frame.emplace(key, CrashJSON::integer(*v->integer()));
        // "address" is on the allow-list yet never copied: an absolute address tells more about
        // a machine than an offset does.
        frame.emplace("subFrames", CrashJSON::array(frames(listOr(old["subFrames"], none), budget)));
        out.push_back(CrashJSON::object(std::move(frame)));
    }
    return out;
}

bool attributed(const CrashJSON& stack) {
    const CrashJSON* flag = stack["threadAttributed"];
    return flag && flag->asBool() && *flag->asBool();
}

} // namespace

std::string shallow(std::string_view data) {
    std::string out;
    out.reserve(data.size() + 8);
    const char* p = data.data();
    const std::size_t n = data.size();
    std::size_t copied = 0;
    int depth = 0;
    std::size_t i = 0;
    while (i < n) {
        unsigned char c = static_cast<unsigned char>(p[i]);
        if (!structural[c]) {
            ++i;
            continue;
        }
        if (c == '"') {
            // Inside a string only a quote or a backslash matters.
            for (++i; i < n; ++i) {
                if (p[i] == '\\') ++i;
                else if (p[i] == '"') break;
            }
            ++i;
            continue;
        }
        if (c == '[' || c == '{') {
            if (depth >= maxDepth) {
                out.append(p + copied, i - copied);
                std::size_t after = skipValue(data, i);
                if (after == std::string_view::npos) return out; // ran off the end: the scan ends
                out += "null";
                copied = i = after;
                continue;
            }
            ++depth;
        } else if (depth > 0) {
            --depth;
        }
        ++i;
    }
    if (copied < n) out.append(p + copied, n - copied);
    return out;
}

CrashJSON clean(const CrashJSON& json) {
    static const Array none;
    Array stacks = listOr(json["callStacks"], none);
    for (std::size_t k = 0; k < stacks.size(); ++k) {
        if (!stacks[k].asObject() || !attributed(stacks[k])) continue;
        if (k > 0) std::rotate(stacks.begin(), stacks.begin() + static_cast<std::ptrdiff_t>(k),
                               stacks.begin() + static_cast<std::ptrdiff_t>(k) + 1);
        break;
    }
    int budget = maxFrames;
    Array kept;
    for (std::size_t k = 0; k < stacks.size() && k < maxThreads; ++k) {
        const CrashJSON& stack = stacks[k];
        Object made;
        if (stack.asObject()) {
            if (const CrashJSON* flag = stack["threadAttributed"]; flag && flag->asBool())
                made.emplace("threadAttributed", *flag);
            made.emplace("callStackRootFrames",
                         CrashJSON::array(frames(listOr(stack["callStackRootFrames"], none), budget)));
        } else {
            made.emplace("callStackRootFrames", CrashJSON::array({}));
        }
        kept.push_back(CrashJSON::object(std::move(made)));
    }
    Object result;
    result.emplace("callStacks", CrashJSON::array(std::move(kept)));
    if (const CrashJSON* perThread = json["callStackPerThread"]; perThread && perThread->asBool())
        result.emplace("callStackPerThread", *perThread);
    return CrashJSON::object(std::move(result));
}

std::vector<CrashReport::Frame> path(const CrashJSON& stack) {
    static const Array none;
    std::vector<CrashReport::Frame> out;
    const Array& stacks = listOr(stack["callStacks"], none);
    if (stacks.empty()) return out;
    const CrashJSON* chosen = &stacks.front();
    for (const CrashJSON& s : stacks) {
        if (attributed(s)) {
            chosen = &s;
            break;
        }
    }
    const Array* level = &listOr((*chosen)["callStackRootFrames"], none);
    while (out.size() < maxPath) {
        const CrashJSON* picked = nullptr;
        std::int64_t heaviest = 0;
        for (const CrashJSON& frame : *level) {
            if (!frame.asObject()) continue;
            const CrashJSON* count = frame["sampleCount"];
            std::int64_t weight = count && count->integer() ? *count->integer() : 1;
            if (!picked || weight > heaviest) {
                picked = &frame;
                heaviest = weight;
            }
        }
        if (!picked) break;
        CrashReport::Frame made;
        if (auto* v = (*picked)["binaryUUID"]; v && v->asString()) made.binary = *v->asString();
        if (auto* v = (*picked)["binaryName"]; v && v->asString()) made.name = *v->asString();
        if (auto* v = (*picked)["offsetIntoBinaryTextSegment"]; v) made.offset = v->integer();
        out.push_back(std::move(made));
        level = &listOr((*picked)["subFrames"], none);
    }
    return out;
}

bool isUUID(std::string_view text) {
    if (text.size() != 36) return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (i == 8 || i == 13 || i == 18 || i == 23) {
            if (c != '-') return false;
        } else if (!std::isxdigit(static_cast<unsigned char>(c))) {
            return false;
        }
    }
    return true;
}

bool isName(std::string_view text) {
    static const std::unique_ptr<icu::RegexPattern> pattern = [] {
        UErrorCode status = U_ZERO_ERROR;
        UParseError where{};
        std::unique_ptr<icu::RegexPattern> p(icu::RegexPattern::compile(
            icu::UnicodeString(u"^[\\w .,:;()+\\-/\\[\\]#*<>?@$]*$"), 0, where, status));
        if (U_FAILURE(status)) std::abort(); // a fault of this constant, never of the input
        return p;
    }();
    if (!Text::isValidUtf8(text) || Text::characterCount(text) > 80) return false;
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString u = icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
    std::unique_ptr<icu::RegexMatcher> m(pattern->matcher(u, status));
    // The whole text must match: a name with a line break in it is not a name.
    return U_SUCCESS(status) && m && m->matches(status) && U_SUCCESS(status);
}

} // namespace orvan::CrashTree
