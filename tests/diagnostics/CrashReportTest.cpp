// Making a crash record, its signature, its size rule, and reading it back strictly.
#include "diagnostics/CrashReport.h"
#include "diagnostics/CrashSignature.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace orvan {
namespace {

using Frame = CrashReport::Frame;

std::string uuid(int i) {
    char text[37];
    std::snprintf(text, sizeof text, "%08X-0000-4000-8000-%012d", i, i);
    return text;
}

// `n` heavy frames side by side under one attributed thread.
std::string wideTree(int n) {
    std::string frames;
    for (int i = 0; i < n; ++i) {
        frames += (i ? "," : "");
        frames += R"({"binaryUUID":")" + uuid(i) + R"(","binaryName":")" + std::string(80, 'n') +
                  R"(","offsetIntoBinaryTextSegment":1234567890123456789,"sampleCount":)" + std::to_string(1000000000000000000LL + i) +
                  R"(,"address":99,"subFrames":[]})";
    }
    return R"({"callStacks":[{"threadAttributed":true,"callStackRootFrames":[)" + frames + "]}]}";
}

CrashInput input() {
    CrashInput in;
    in.kind = "crash";
    in.version = "  1.4.2\n";
    in.build = "";
    in.os = "Linux 6.1";
    in.device = " \t ";
    in.reason = "";
    in.tree = wideTree(3);
    in.at = TimePoint(std::chrono::microseconds(1'700'000'000'123'600));
    return in;
}

TEST(CrashSignature, LinesAndHash) {
    std::vector<Frame> frames{{"U1", "ignored name", 5}, {std::nullopt, std::nullopt, std::nullopt}};
    EXPECT_EQ(CrashSignature::lines("crash", 1, std::nullopt, 11, frames), "crash\n1,-1,11\nU1+5\n?+0");
    EXPECT_EQ(CrashSignature::of("crash", 1, std::nullopt, 11, frames),
              "0bf086de04c241027da4ab4cfa4284044898f3e63a513c97f3a99a2208758540");
    EXPECT_EQ(CrashSignature::of("hang", std::nullopt, std::nullopt, std::nullopt, {}),
              "9efb4e4be447bc139ce6e04ac6996dd2ad239ad30546b0668970fbbcf826c675");
    // Absent and -1 are the same fault; only the first eight frames count; names take no part.
    EXPECT_EQ(CrashSignature::of("crash", -1, -1, -1, {}), CrashSignature::of("crash", {}, {}, {}, {}));
    std::vector<Frame> ten(10, Frame{"U", std::nullopt, 1});
    std::vector<Frame> otherTail = ten;
    otherTail[9].offset = 2;
    otherTail[0].name = "other";
    EXPECT_EQ(CrashSignature::of("crash", 1, 2, 3, ten), CrashSignature::of("crash", 1, 2, 3, otherTail));
    otherTail[7].offset = 2;
    EXPECT_NE(CrashSignature::of("crash", 1, 2, 3, ten), CrashSignature::of("crash", 1, 2, 3, otherTail));
}

TEST(CrashReport, MakeCleansEveryField) {
    CrashInput in = input();
    in.reason = "open /Users/bob/x failed\nmail bob@example.com";
    in.exceptionName = "EXC_BAD_ACCESS token=abc";
    CrashReport r = CrashReport::make("companion", in);
    EXPECT_EQ(r.v, 1);
    EXPECT_EQ(r.source, "companion");
    EXPECT_EQ(r.version, "1.4.2");
    EXPECT_EQ(r.build, std::nullopt);
    EXPECT_EQ(r.os, "Linux 6.1");
    EXPECT_EQ(r.device, std::nullopt);
    EXPECT_EQ(r.reason, "open <path> failed\nmail <email>");
    ASSERT_TRUE(r.exception);
    EXPECT_EQ(r.exception->name, "EXC_BAD_ACCESS token=<hidden>");
    EXPECT_EQ(r.at, 1'700'000'000'124);
    EXPECT_EQ(r.count, 1);
    ASSERT_EQ(r.frames.size(), 1u);
    EXPECT_EQ(r.frames[0].binary, uuid(2)); // the heaviest of the three
    EXPECT_EQ(r.signature, CrashSignature::of("crash", std::nullopt, std::nullopt, std::nullopt, r.frames));
    ASSERT_TRUE(r.stack);
    EXPECT_EQ(r.stack->encode().dump().find("address"), std::string::npos);

    // The same fault with another reason groups with it.
    in.reason = "something else entirely";
    EXPECT_EQ(CrashReport::make("companion", in).signature, r.signature);
}

TEST(CrashReport, ExceptionAndTreeEdges) {
    struct Case {
        const char* name;
        std::optional<std::int64_t> type;
        std::optional<std::string> exceptionName;
        bool hasException;
    };
    for (const Case& c : std::vector<Case>{{"all absent", std::nullopt, std::nullopt, false},
                                           {"type 0 alone", 0, std::nullopt, true},
                                           {"name alone", std::nullopt, "SIGSEGV", true}}) {
        SCOPED_TRACE(c.name);
        CrashInput in = input();
        in.exceptionType = c.type;
        in.exceptionName = c.exceptionName;
        CrashReport r = CrashReport::make("companion", in);
        ASSERT_EQ(r.exception.has_value(), c.hasException);
        Json out = Json::parse(*r.encode());
        EXPECT_EQ(out.contains("exception"), c.hasException);
        if (c.type) EXPECT_EQ(out["exception"]["type"], 0);
    }
    CrashInput broken = input();
    broken.tree = "{not json";
    broken.version = "\n";
    CrashReport r = CrashReport::make("companion", broken);
    EXPECT_TRUE(r.frames.empty());
    EXPECT_FALSE(r.stack);
    EXPECT_EQ(r.version, "?");
    EXPECT_EQ(r.signature, CrashSignature::of("crash", {}, {}, {}, {}));
}

TEST(CrashReport, EncodingLeavesAbsentFieldsOutInOrder) {
    CrashReport r = CrashReport::make("companion", input());
    std::string encoded = *r.encode();
    std::vector<std::string> keys;
    const auto tree = r.toJson();
    for (const auto& [key, value] : tree.items()) keys.push_back(key);
    EXPECT_EQ(keys, (std::vector<std::string>{"v", "source", "kind", "signature", "version", "os", "frames", "stack",
                                              "count", "at"}));
    EXPECT_EQ(encoded.find("null"), std::string::npos);
    auto back = CrashReport::read(encoded);
    ASSERT_TRUE(back);
    EXPECT_EQ(*back, r);
}

TEST(CrashReport, SizeRuleAtAndOverTheLimit) {
    // Find a tree whose record leaves room for a reason, then fill the room to the byte.
    CrashInput in = input();
    in.build = std::string(64, 'b');
    in.device = std::string(64, 'd');
    in.os = std::string(64, 'o');
    in.exceptionName = std::string(20, 'e') + " " + std::string(20, 'e') + " " + std::string(20, 'e');
    std::size_t base = 0;
    for (int n = 200; n > 0; --n) {
        in.tree = wideTree(n);
        CrashReport r = CrashReport::make("companion", in);
        base = r.stack ? r.encode()->size() : 0;
        if (base > 0 && base + 12 + 1 <= CrashReport::maxBytes) break;
    }
    ASSERT_GT(base + 12 + 500, CrashReport::maxBytes);
    auto withReason = [&](std::size_t encodedLength) {
        // Lines of short words pass redaction as they are; a line feed takes two bytes in JSON.
        std::string reason;
        std::size_t encoded = 0;
        std::size_t line = 0;
        while (encoded < encodedLength) {
            if (line == 50 && encodedLength - encoded >= 3) {
                reason += '\n';
                encoded += 2;
                line = 0;
            } else {
                reason += line % 3 == 2 ? ' ' : 'a';
                ++encoded;
                ++line;
            }
        }
        if (reason.back() == ' ') reason.back() = 'a';
        in.reason = reason;
        return CrashReport::make("companion", in);
    };
    const std::size_t room = CrashReport::maxBytes - base - std::string(R"(,"reason":"")").size();
    CrashReport atLimit = withReason(room);
    ASSERT_TRUE(atLimit.stack);
    EXPECT_EQ(atLimit.encode()->size(), CrashReport::maxBytes);
    CrashReport over = withReason(room + 1);
    EXPECT_FALSE(over.stack);
    EXPECT_EQ(over.frames, atLimit.frames);
    EXPECT_EQ(over.signature, atLimit.signature);
    EXPECT_LT(over.encode()->size(), 8'000u);
}

TEST(CrashReport, ReadingBackIsStrict) {
    const std::string good =
        R"({"v":1,"source":"companion","kind":"crash","signature":"ab","version":"1","frames":[{"binary":"U","offset":3}],"count":2,"at":5})";
    ASSERT_TRUE(CrashReport::read(good));
    EXPECT_EQ(CrashReport::read(good)->frames[0].offset, 3);
    struct Case { const char* name; std::string from; std::string to; };
    for (const Case& c : std::vector<Case>{
             {"missing version", R"("version":"1",)", ""},
             {"missing frames", R"("frames":[{"binary":"U","offset":3}],)", ""},
             {"count as text", R"("count":2)", R"("count":"2")"},
             {"at as a fraction", R"("at":5)", R"("at":5.5)"},
             {"frame offset as text", R"("offset":3)", R"("offset":"3")"},
             {"reason as a number", R"("count":2)", R"("reason":7,"count":2)"},
             {"exception as a list", R"("count":2)", R"("exception":[],"count":2)"},
             {"exception name as a number", R"("count":2)", R"("exception":{"name":1},"count":2)"},
         }) {
        SCOPED_TRACE(c.name);
        std::string bad = good;
        auto at = bad.find(c.from);
        ASSERT_NE(at, std::string::npos);
        bad.replace(at, c.from.size(), c.to);
        EXPECT_FALSE(CrashReport::read(bad)) << bad;
    }
    EXPECT_FALSE(CrashReport::read("[]"));
    EXPECT_FALSE(CrashReport::read(""));
}

} // namespace
} // namespace orvan
