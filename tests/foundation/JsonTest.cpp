#include "foundation/Json.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

struct Row {
    std::string id;
    std::optional<std::string> name;
    static std::optional<Row> decode(const Json& j) {
        Row r;
        Fields f(j);
        f.required("id", r.id).loose("name", r.name);
        return f.result(std::move(r));
    }
};

struct Strict {
    std::optional<std::string> name;
    std::optional<bool> on;
    std::optional<std::int64_t> count;
    std::optional<std::vector<Row>> rows;
    static std::optional<Strict> decode(const Json& j) {
        Strict s;
        Fields f(j);
        f.optional("name", s.name).optional("on", s.on).optional("count", s.count).optional("rows", s.rows);
        return f.result(std::move(s));
    }
};

struct WithLossy {
    std::optional<Lossy<Row>> rows;
    std::string mode;
    static std::optional<WithLossy> decode(const Json& j) {
        WithLossy w;
        Fields f(j);
        f.optional("rows", w.rows).loose("mode", w.mode, "");
        return f.result(std::move(w));
    }
};

TEST(StrictOptionals, WrongTypeFailsTheRecordMissingOrNullDoesNot) {
    const std::pair<const char*, bool> cases[] = {
        {"{}", true}, {R"({"name":null,"on":null})", true}, {R"({"name":"x","on":true,"count":3})", true},
        {R"({"count":3.0})", true}, {R"({"count":3.5})", false}, {R"({"on":"yes"})", false}, {R"({"on":1})", false},
        {R"({"name":3})", false}, {R"({"rows":[{"id":"a"},{"id":"b","name":3}]})", true},
        {R"({"rows":[{"id":"a"},{"name":"no id"}]})", false}, {R"({"rows":{}})", false},
        {R"({"unknown":[1,2]})", true}, {"[]", false}, {"null", false}, {"", false}, {"{", false},
        {R"({"name":"x"} trailing)", false}, {"{\"name\":\"\xC3\x28\"}", false}};
    for (const auto& [json, decodes] : cases) EXPECT_EQ(decodeJson<Strict>(json).has_value(), decodes) << json;
}

TEST(Loose, WrongTypeCountsAsAbsentButARequiredKeyStillFailsTheRecord) {
    auto row = decodeJson<Row>(R"({"id":"a","name":3})");
    ASSERT_TRUE(row);
    EXPECT_EQ(row->id, "a");
    EXPECT_FALSE(row->name);

    auto w = decodeJson<WithLossy>(R"({"mode":["x"]})");
    ASSERT_TRUE(w);
    EXPECT_EQ(w->mode, "");
    EXPECT_FALSE(w->rows);

    // A required key is never loose.
    for (const char* json : {R"({"name":"x"})", R"({"id":null})", R"({"id":7})"}) EXPECT_FALSE(decodeJson<Row>(json)) << json;
}

TEST(LossyLists, BadRowsAreDroppedInOrder) {
    struct Case {
        const char* json;
        bool decodes;
        std::vector<std::string> ids;
    };
    for (const auto& c : std::vector<Case>{
             {R"({"rows":[{"id":"a"},3,{"id":"b"}]})", true, {"a", "b"}},
             {R"({"rows":[]})", true, {}},
             {R"({})", true, {}},
             {R"({"rows":[null,{"name":"x"},"s",[1],{"id":"c","name":{}}]})", true, {"c"}},
             // A list that isn't a list is an error of the enclosing record.
             {R"({"rows":{}})", false, {}},
             {R"({"rows":"a"})", false, {}}}) {
        auto w = decodeJson<WithLossy>(c.json);
        ASSERT_EQ(w.has_value(), c.decodes) << c.json;
        if (!w) continue;
        std::vector<std::string> ids;
        if (w->rows)
            for (const auto& r : w->rows->items) ids.push_back(r.id);
        EXPECT_EQ(ids, c.ids) << c.json;
    }
}

TEST(Decode, NumbersKeepTheirWidthAndRefuseWhatDoesNotFit) {
    EXPECT_EQ(decodeJson<std::int64_t>("9007199254740993"), 9007199254740993LL);
    EXPECT_FALSE(decodeJson<std::int64_t>("18446744073709551615"));
    EXPECT_FALSE(decodeJson<int>("4294967296"));
    EXPECT_FALSE(decodeJson<std::int64_t>("1e300"));
    EXPECT_EQ(decodeJson<double>("1e3"), 1000.0);
    EXPECT_FALSE(decodeJson<bool>("0"));
}

TEST(Decode, DeepNestingNeitherCrashesNorDecodes) {
    std::string deep(100000, '[');
    deep += std::string(100000, ']');
    EXPECT_FALSE(decodeJson<Strict>(deep));
    EXPECT_TRUE(json::parse(deep).has_value());
}

TEST(Dump, InvalidTextGivesNothingInsteadOfThrowing) {
    Json j = {{"name", std::string("\xFF\xFE")}};
    EXPECT_FALSE(json::dump(j));
    EXPECT_EQ(json::dump(Json::object()), "{}");
}

} // namespace
} // namespace orvan
