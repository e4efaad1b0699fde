#include "diagnostics/CrashReport.h"
#include "diagnostics/CrashRedact.h"
#include "diagnostics/CrashSignature.h"
#include "diagnostics/CrashTree.h"
#include "foundation/Text.h"

#include <chrono>

namespace orvan {

namespace {

// Version, build, OS and device: trimmed, at most 64 characters, empty counts as absent.
std::optional<std::string> cleaned(std::string_view text) {
    std::string out = Text::prefixCharacters(Text::trimmed(Text::toValidUtf8(text)), 64);
    if (out.empty()) return std::nullopt;
    return out;
}

std::optional<CrashJSON> decodeStack(std::string_view tree) {
    auto parsed = json::parse(CrashTree::shallow(tree));
    if (!parsed) return std::nullopt;
    return CrashJSON::decode(*parsed);
}

// The stack in the ordered flavour the record is written with.
nlohmann::ordered_json ordered(const CrashJSON& value) {
    using Ordered = nlohmann::ordered_json;
    switch (value.kind()) {
    case CrashJSON::Kind::object: {
        Ordered out = Ordered::object();
        for (const auto& [key, member] : *value.asObject()) out[key] = ordered(member);
        return out;
    }
    case CrashJSON::Kind::array: {
        Ordered out = Ordered::array();
        for (const auto& item : *value.asArray()) out.push_back(ordered(item));
        return out;
    }
    case CrashJSON::Kind::int_: return std::get<std::int64_t>(value.value);
    case CrashJSON::Kind::double_: return std::get<double>(value.value);
    case CrashJSON::Kind::bool_: return std::get<bool>(value.value);
    case CrashJSON::Kind::string: return *value.asString();
    case CrashJSON::Kind::null: return nullptr;
    }
    return nullptr;
}

} // namespace

CrashReport CrashReport::make(std::string_view source, const CrashInput& input) {
    CrashReport r;
    r.source = Text::toValidUtf8(source);
    r.kind = Text::toValidUtf8(input.kind);
    if (auto tree = decodeStack(input.tree)) {
        r.stack = CrashTree::clean(*tree);
        r.frames = CrashTree::path(*r.stack);
    }
    if (input.exceptionType || input.exceptionCode || input.signal || input.exceptionName) {
        Exception e{input.exceptionType, input.exceptionCode, input.signal, std::nullopt};
        if (input.exceptionName) e.name = CrashRedact::text(*input.exceptionName, maxExceptionName);
        r.exception = std::move(e);
    }
    r.signature = CrashSignature::of(r.kind, input.exceptionType, input.exceptionCode, input.signal, r.frames);
    r.version = cleaned(input.version).value_or("?");
    r.build = cleaned(input.build);
    r.os = cleaned(input.os);
    r.device = cleaned(input.device);
    if (std::string reason = CrashRedact::text(input.reason, maxReason); !reason.empty()) r.reason = std::move(reason);
    if (r.frames.size() > maxFrames) r.frames.resize(maxFrames);
    r.at = std::chrono::round<std::chrono::milliseconds>(input.at.time_since_epoch()).count();
    r.v = 1;
    r.count = 1;
    // A big tree is what makes a record big; without it the record still groups and says where.
    if (auto encoded = r.encode(); encoded && encoded->size() > maxBytes) r.stack.reset();
    return r;
}

nlohmann::ordered_json CrashReport::toJson() const {
    using Ordered = nlohmann::ordered_json;
    Ordered out = Ordered::object();
    out["v"] = v;
    out["source"] = source;
    out["kind"] = kind;
    out["signature"] = signature;
    out["version"] = version;
    if (build) out["build"] = *build;
    if (os) out["os"] = *os;
    if (device) out["device"] = *device;
    if (exception) {
        Ordered e = Ordered::object();
        if (exception->type) e["type"] = *exception->type;
        if (exception->code) e["code"] = *exception->code;
        if (exception->signal) e["signal"] = *exception->signal;
        if (exception->name) e["name"] = *exception->name;
        out["exception"] = std::move(e);
    }
    if (reason) out["reason"] = *reason;
    Ordered list = Ordered::array();
    for (const Frame& f : frames) {
        Ordered frame = Ordered::object();
        if (f.binary) frame["binary"] = *f.binary;
        if (f.name) frame["name"] = *f.name;
        if (f.offset) frame["offset"] = *f.offset;
        list.push_back(std::move(frame));
    }
    out["frames"] = std::move(list);
    if (stack) out["stack"] = ordered(*stack);
    out["count"] = count;
    out["at"] = at;
    return out;
}

std::optional<std::string> CrashReport::encode() const {
    try {
        return toJson().dump();
    } catch (...) {
        return std::nullopt;
    }
}

std::optional<CrashReport::Exception> CrashReport::Exception::decode(const Json& json) {
    Exception e;
    Fields f(json);
    f.optional("type", e.type).optional("code", e.code).optional("signal", e.signal).optional("name", e.name);
    return f.result(std::move(e));
}

std::optional<CrashReport::Frame> CrashReport::Frame::decode(const Json& json) {
    Frame frame;
    Fields f(json);
    f.optional("binary", frame.binary).optional("name", frame.name).optional("offset", frame.offset);
    return f.result(std::move(frame));
}

std::optional<CrashReport> CrashReport::decode(const Json& json) {
    try {
        CrashReport r;
        Fields f(json);
        f.required("v", r.v).required("source", r.source).required("kind", r.kind);
        f.required("signature", r.signature).required("version", r.version);
        f.optional("build", r.build).optional("os", r.os).optional("device", r.device);
        f.optional("exception", r.exception).optional("reason", r.reason);
        f.required("frames", r.frames).required("count", r.count).required("at", r.at);
        if (!f.ok()) return std::nullopt;
        if (auto it = json.find("stack"); it != json.end() && !it->is_null()) {
            r.stack = CrashJSON::decode(*it);
            if (!r.stack) return std::nullopt;
        }
        return r;
    } catch (...) {
        return std::nullopt;
    }
}

std::optional<CrashReport> CrashReport::read(std::string_view bytes) {
    auto tree = json::parse(bytes);
    if (!tree) return std::nullopt;
    return decode(*tree);
}

} // namespace orvan
