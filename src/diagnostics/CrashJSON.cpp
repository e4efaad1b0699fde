#include "diagnostics/CrashJSON.h"

#include <cmath>

namespace orvan {

namespace {

std::optional<CrashJSON> decodeAt(const Json& j, int depth) {
    if (depth > CrashJSON::maxNesting) return std::nullopt;
    if (j.is_null()) return CrashJSON();
    if (j.is_boolean()) return CrashJSON::boolean(j.get<bool>());
    if (j.is_number_integer()) {
        if (!j.is_number_unsigned()) return CrashJSON::integer(j.get<std::int64_t>());
        auto u = j.get<std::uint64_t>();
        if (u <= static_cast<std::uint64_t>(INT64_MAX)) return CrashJSON::integer(static_cast<std::int64_t>(u));
        return CrashJSON::number(static_cast<double>(u));
    }
    if (j.is_number_float()) return CrashJSON::number(j.get<double>());
    if (j.is_string()) return CrashJSON::string(j.get<std::string>());
    if (j.is_array()) {
        CrashJSON::Array items;
        items.reserve(j.size());
        for (const Json& element : j) {
            auto v = decodeAt(element, depth + 1);
            if (!v) return std::nullopt;
            items.push_back(std::move(*v));
        }
        return CrashJSON::array(std::move(items));
    }
    if (j.is_object()) {
        CrashJSON::Object members;
        for (auto it = j.begin(); it != j.end(); ++it) {
            auto v = decodeAt(it.value(), depth + 1);
            if (!v) return std::nullopt;
            members.emplace(it.key(), std::move(*v));
        }
        return CrashJSON::object(std::move(members));
    }
    return std::nullopt; // binary values and the parser's discarded marker have no place here
}

} // namespace

std::optional<std::int64_t> CrashJSON::integer() const {
    if (auto n = std::get_if<std::int64_t>(&value)) return *n;
    if (auto d = std::get_if<double>(&value)) {
        if (std::isfinite(*d) && std::round(*d) == *d && std::fabs(*d) < 9e15) return static_cast<std::int64_t>(*d);
    }
    return std::nullopt;
}

const CrashJSON* CrashJSON::operator[](const std::string& key) const {
    const Object* o = asObject();
    if (!o) return nullptr;
    auto it = o->find(key);
    return it == o->end() ? nullptr : &it->second;
}

std::optional<CrashJSON> CrashJSON::decode(const Json& json) {
    try {
        return decodeAt(json, 0);
    } catch (...) {
        return std::nullopt;
    }
}

Json CrashJSON::encode() const {
    switch (kind()) {
    case Kind::object: {
        Json out = Json::object();
        for (const auto& [key, member] : std::get<Object>(value)) out[key] = member.encode();
        return out;
    }
    case Kind::array: {
        Json out = Json::array();
        for (const auto& item : std::get<Array>(value)) out.push_back(item.encode());
        return out;
    }
    case Kind::int_: return std::get<std::int64_t>(value);
    case Kind::double_: return std::get<double>(value);
    case Kind::bool_: return std::get<bool>(value);
    case Kind::string: return std::get<std::string>(value);
    case Kind::null: return nullptr;
    }
    return nullptr;
}

} // namespace orvan
