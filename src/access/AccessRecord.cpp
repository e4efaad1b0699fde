#include "access/AccessRecord.h"

namespace orvan {

namespace {
// Absent and null count as missing; any other type fails the whole record.
template <class T> bool take(const Json& j, const char* key, std::optional<T>& out) {
    auto it = j.find(key);
    if (it == j.end() || it->is_null()) return true;
    auto value = Decode<T>::from(*it);
    if (!value) return false;
    out = std::move(*value);
    return true;
}
} // namespace

std::optional<CompanionMark> CompanionMark::decode(const Json& j) {
    if (!j.is_object()) return std::nullopt;
    std::optional<std::string> bundle;
    CompanionMark mark;
    if (!take(j, "bundle", bundle) || !bundle) return std::nullopt;
    if (!take(j, "team", mark.team) || !take(j, "requirement", mark.requirement)) return std::nullopt;
    mark.bundle = *bundle;
    return mark;
}

Json CompanionMark::encode() const {
    Json j = {{"bundle", bundle}};
    if (team) j["team"] = *team;
    if (requirement) j["requirement"] = *requirement;
    return j;
}

AccessRecord AccessRecord::read(const std::optional<std::string>& data) {
    if (!data) return {};
    auto j = json::parse(*data);
    if (!j || !j->is_object()) return {};
    AccessRecord record;
    if (auto it = j->find("mark"); it != j->end() && !it->is_null()) {
        auto mark = CompanionMark::decode(*it);
        if (!mark) return {};
        record.mark = std::move(mark);
    }
    if (auto it = j->find("sent"); it != j->end() && !it->is_null()) {
        if (!it->is_object()) return {};
        std::map<std::string, std::string> sent;
        for (const auto& [raw, by] : it->items()) {
            if (!by.is_string()) return {};
            sent[raw] = by.get<std::string>();
        }
        record.sent = std::move(sent);
    }
    return record;
}

std::string AccessRecord::bytes() const {
    Json j = Json::object();
    if (mark) j["mark"] = mark->encode();
    if (sent) j["sent"] = *sent;
    return json::dump(j).value_or("{}");
}

std::optional<MarkChange> MarkCheck::change(const std::optional<CompanionMark>& last, const CompanionMark& current,
                                            const std::vector<std::string>& earlier) {
    if (!last) {
        for (const auto& bundle : earlier)
            if (!bundle.empty() && bundle != current.bundle) return MarkChange{MarkChange::Bundle{bundle}};
        return std::nullopt;
    }
    if (last->bundle != current.bundle) return MarkChange{MarkChange::Bundle{last->bundle}};
    // Unsigned builds aren't judged: their requirement changes with every build.
    if (!last->team && !current.team) return std::nullopt;
    if (last->team != current.team) return MarkChange{MarkChange::Signature{}};
    if (last->requirement == current.requirement) return std::nullopt;
    return MarkChange{MarkChange::Signature{}};
}

} // namespace orvan
