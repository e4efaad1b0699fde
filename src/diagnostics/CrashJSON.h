#pragma once
// A JSON value as a crash report carries it: exactly the shapes the platform's call-stack tree
// uses, decoded in a fixed order of preference so that `true` is never a number.

#include "foundation/Json.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace orvan {

struct CrashJSON {
    using Object = std::map<std::string, CrashJSON>;
    using Array = std::vector<CrashJSON>;
    enum class Kind { object, array, int_, double_, bool_, string, null };

    std::variant<Object, Array, std::int64_t, double, bool, std::string, std::nullptr_t> value = nullptr;

    CrashJSON() = default;
    static CrashJSON object(Object members) { return make(std::move(members)); }
    static CrashJSON array(Array items) { return make(std::move(items)); }
    static CrashJSON integer(std::int64_t n) { return make(n); }
    static CrashJSON number(double d) { return make(d); }
    static CrashJSON boolean(bool b) { return make(b); }
    static CrashJSON string(std::string s) { return make(std::move(s)); }

    Kind kind() const { return static_cast<Kind>(value.index()); }
    const Object* asObject() const { return std::get_if<Object>(&value); }
    const Array* asArray() const { return std::get_if<Array>(&value); }
    const std::string* asString() const { return std::get_if<std::string>(&value); }
    const bool* asBool() const { return std::get_if<bool>(&value); }

    // A number read as a whole number: an int itself, a double only when it is whole and well
    // inside the 64-bit range.
    std::optional<std::int64_t> integer() const;
    // The member of an object, or none.
    const CrashJSON* operator[](const std::string& key) const;

    // Nesting deeper than this fails a decode instead of recursing without end.
    static constexpr int maxNesting = 512;
    static std::optional<CrashJSON> decode(const Json& json);
    Json encode() const;

    bool operator==(const CrashJSON&) const = default;

private:
    template <class T> static CrashJSON make(T v) {
        CrashJSON j;
        j.value = std::move(v);
        return j;
    }
};

} // namespace orvan
