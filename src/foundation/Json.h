#pragma once
// Decoding of the bridge's JSON in the three strictnesses the program uses:
//  - strict optionals: a key may be missing or null; present with a wrong type fails the record;
//  - loose: a wrong type counts as absent;
//  - Lossy<T>: a list that steps over the rows its element decoder rejects.
// A record declares `static std::optional<Rec> decode(const Json&)` and writes it with `Fields`,
// so the decoder reads like the record's table of keys. Nothing here throws to its caller.

#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan {

using Json = nlohmann::json;

namespace json {
// Parses bytes into a tree. Absent on any syntax error, invalid UTF-8, or trailing garbage.
std::optional<Json> parse(std::string_view bytes) noexcept;
// Serialises a tree. Absent when the tree holds text that is not valid UTF-8.
std::optional<std::string> dump(const Json& value) noexcept;
} // namespace json

// Decodes from any JSON value and keeps nothing; lets Lossy step past a bad element.
struct Skipped {};

// A list whose bad rows are dropped without a gap; order is kept.
template <class T> struct Lossy {
    std::vector<T> items;
    bool operator==(const Lossy&) const = default;
};

template <class T, class = void> struct Decode {
    static std::optional<T> from(const Json& j) { return T::decode(j); }
};

template <> struct Decode<std::string> {
    static std::optional<std::string> from(const Json& j) {
        if (!j.is_string()) return std::nullopt;
        return j.get_ref<const std::string&>();
    }
};

template <> struct Decode<bool> {
    static std::optional<bool> from(const Json& j) {
        if (!j.is_boolean()) return std::nullopt;
        return j.get<bool>();
    }
};

template <> struct Decode<double> {
    static std::optional<double> from(const Json& j) {
        if (!j.is_number()) return std::nullopt;
        return j.get<double>();
    }
};

// Whole numbers: an integral JSON number, or a float with no fractional part that fits.
template <> struct Decode<std::int64_t> {
    static std::optional<std::int64_t> from(const Json& j) {
        if (j.is_number_integer() && !j.is_number_unsigned()) return j.get<std::int64_t>();
        if (j.is_number_unsigned()) {
            auto u = j.get<std::uint64_t>();
            if (u > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) return std::nullopt;
            return static_cast<std::int64_t>(u);
        }
        if (j.is_number_float()) {
            double d = j.get<double>();
            if (!std::isfinite(d) || std::trunc(d) != d) return std::nullopt;
            if (d < -9.2233720368547758e18 || d >= 9.2233720368547758e18) return std::nullopt;
            return static_cast<std::int64_t>(d);
        }
        return std::nullopt;
    }
};

template <> struct Decode<int> {
    static std::optional<int> from(const Json& j) {
        auto wide = Decode<std::int64_t>::from(j);
        if (!wide || *wide < std::numeric_limits<int>::min() || *wide > std::numeric_limits<int>::max())
            return std::nullopt;
        return static_cast<int>(*wide);
    }
};

template <> struct Decode<Json> {
    static std::optional<Json> from(const Json& j) { return j; }
};

template <> struct Decode<Skipped> {
    static std::optional<Skipped> from(const Json&) { return Skipped{}; }
};

template <class T> struct Decode<std::vector<T>> {
    static std::optional<std::vector<T>> from(const Json& j) {
        if (!j.is_array()) return std::nullopt;
        std::vector<T> out;
        out.reserve(j.size());
        for (const auto& element : j) {
            auto v = Decode<T>::from(element);
            if (!v) return std::nullopt;
            out.push_back(std::move(*v));
        }
        return out;
    }
};

template <class T> struct Decode<std::map<std::string, T>> {
    static std::optional<std::map<std::string, T>> from(const Json& j) {
        if (!j.is_object()) return std::nullopt;
        std::map<std::string, T> out;
        for (auto it = j.begin(); it != j.end(); ++it) {
            auto v = Decode<T>::from(it.value());
            if (!v) return std::nullopt;
            out.emplace(it.key(), std::move(*v));
        }
        return out;
    }
};

template <class T> struct Decode<Lossy<T>> {
    static std::optional<Lossy<T>> from(const Json& j) {
        if (!j.is_array()) return std::nullopt;
        Lossy<T> out;
        for (const auto& element : j) {
            if (auto v = Decode<T>::from(element)) {
                out.items.push_back(std::move(*v));
            } else if (!Decode<Skipped>::from(element)) {
                break; // even stepping over failed: keep what was collected
            }
        }
        return out;
    }
};

// Reads the keys of one JSON object into a record. The first failure sticks; later calls do nothing.
class Fields {
public:
    explicit Fields(const Json& object) : object_(object), ok_(object.is_object()) {}

    // Present, not null, and of the right type.
    template <class T> Fields& required(const char* key, T& out) {
        if (!ok_) return *this;
        const Json* v = find(key);
        if (!v || v->is_null()) return fail();
        auto decoded = Decode<T>::from(*v);
        if (!decoded) return fail();
        out = std::move(*decoded);
        return *this;
    }

    // Missing or null is absent; present with a wrong type fails the record.
    template <class T> Fields& optional(const char* key, std::optional<T>& out) {
        if (!ok_) return *this;
        out.reset();
        const Json* v = find(key);
        if (!v || v->is_null()) return *this;
        auto decoded = Decode<T>::from(*v);
        if (!decoded) return fail();
        out = std::move(decoded);
        return *this;
    }

    // Strict, with a value standing in for missing or null.
    template <class T, class U> Fields& optional(const char* key, T& out, U&& fallback) {
        std::optional<T> v;
        optional(key, v);
        out = v ? std::move(*v) : T(std::forward<U>(fallback));
        return *this;
    }

    // A wrong type counts as absent; never fails the record.
    template <class T> Fields& loose(const char* key, std::optional<T>& out) {
        out.reset();
        if (!ok_) return *this;
        const Json* v = find(key);
        if (!v || v->is_null()) return *this;
        out = Decode<T>::from(*v);
        return *this;
    }

    // Loose, with a value standing in for missing, null or a wrong type.
    template <class T, class U> Fields& loose(const char* key, T& out, U&& fallback) {
        std::optional<T> v;
        loose(key, v);
        out = v ? std::move(*v) : T(std::forward<U>(fallback));
        return *this;
    }

    bool ok() const { return ok_; }

    template <class T> std::optional<T> result(T&& value) const {
        if (!ok_) return std::nullopt;
        return std::optional<T>(std::forward<T>(value));
    }

private:
    const Json* find(const char* key) const {
        auto it = object_.find(key);
        return it == object_.end() ? nullptr : &*it;
    }
    Fields& fail() {
        ok_ = false;
        return *this;
    }

    const Json& object_;
    bool ok_;
};

// Parses bytes and decodes them as T. Absent on any failure; never throws.
template <class T> std::optional<T> decodeJson(std::string_view bytes) noexcept {
    try {
        auto tree = json::parse(bytes);
        if (!tree) return std::nullopt;
        return Decode<T>::from(*tree);
    } catch (...) {
        return std::nullopt;
    }
}

// Decodes an already parsed tree as T. Absent on any failure; never throws.
template <class T> std::optional<T> decodeTree(const Json& tree) noexcept {
    try {
        return Decode<T>::from(tree);
    } catch (...) {
        return std::nullopt;
    }
}

} // namespace orvan
