// The depth guard, the allow-list rebuild and the heaviest path of a call-stack tree.
#include "diagnostics/CrashTree.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orvan {
namespace {

CrashJSON parsed(const std::string& text) {
    auto tree = json::parse(CrashTree::shallow(text));
    EXPECT_TRUE(tree) << text.substr(0, 200);
    auto value = tree ? CrashJSON::decode(*tree) : std::nullopt;
    EXPECT_TRUE(value);
    return value ? *value : CrashJSON();
}

int depthOf(const Json& j) {
    int deepest = 0;
    if (j.is_structured())
        for (const auto& child : j) deepest = std::max(deepest, depthOf(child));
    return j.is_structured() ? deepest + 1 : 0;
}

TEST(CrashTree, ShallowGuardsDepthAndRespectsStrings) {
    struct Case { const char* name; std::string in; std::string out; };
    const std::string deep480 = std::string(480, '[') + std::string(480, ']');
    for (const Case& c : std::vector<Case>{
             {"flat passes as is", R"({"a":[1,2,{"b":"c"}]})", R"({"a":[1,2,{"b":"c"}]})"},
             {"480 deep passes", deep480, deep480},
             {"481st level becomes null", std::string(481, '[') + std::string(481, ']'),
              std::string(480, '[') + "null" + std::string(480, ']')},
             {"object too deep becomes null", std::string(480, '[') + R"({"k":[1]})" + std::string(480, ']'),
              std::string(480, '[') + "null" + std::string(480, ']')},
             {"brackets in strings skipped", std::string(480, '[') + R"(["]]}{[", "\"[", 1])" + std::string(480, ']'),
              std::string(480, '[') + "null" + std::string(480, ']')},
             {"escaped quote ends no string", R"(["a\"]", "[["])", R"(["a\"]", "[["])"},
             {"running off the end while skipping", std::string(481, '[') + "\"x",
              std::string(480, '[')},
         }) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(CrashTree::shallow(c.in), c.out);
    }
    // Strings don't move the depth: 600 brackets inside a string leave room for real nesting.
    std::string inString = "[\"" + std::string(600, '[') + "\"," + std::string(479, '[') + std::string(479, ']') + "]";
    EXPECT_EQ(CrashTree::shallow(inString), inString);
}

TEST(CrashTree, TenThousandLevelsDecodeAfterShallow) {
    std::string text = std::string(10000, '[') + std::string(10000, ']');
    auto tree = json::parse(CrashTree::shallow(text));
    ASSERT_TRUE(tree);
    EXPECT_EQ(depthOf(*tree), 480);
    const Json* at = &*tree;
    for (int i = 0; i < 480; ++i) at = &(*at)[0];
    EXPECT_TRUE(at->is_null());
    EXPECT_TRUE(CrashJSON::decode(*tree));
}

// A frame at `offset`, weighing `weight` samples (none when empty), over `sub`.
std::string frame(int offset, const std::string& weight, const std::string& sub = "") {
    return R"({"offsetIntoBinaryTextSegment":)" + std::to_string(offset) +
           (weight.empty() ? "" : ",\"sampleCount\":" + weight) + R"(,"subFrames":[)" + sub + "]}";
}

TEST(CrashTree, CleanKeepsOnlyTheAllowList) {
    CrashJSON tree = parsed(R"({"callStackPerThread":true,"secret":"x","callStacks":[{"threadAttributed":false,"user":"bob",
        "callStackRootFrames":[{"binaryUUID":123,"binaryName":")" + std::string(81, 'n') +
                            R"(","address":4096,"offsetIntoBinaryTextSegment":2.0,"sampleCount":"2","path":"/Users/bob"}]}]})");
    CrashJSON cleaned = CrashTree::clean(tree);
    Json out = cleaned.encode();
    EXPECT_EQ(out, Json::parse(R"({"callStackPerThread":true,"callStacks":[{"threadAttributed":false,
        "callStackRootFrames":[{"offsetIntoBinaryTextSegment":2,"subFrames":[]}]}]})"));
    EXPECT_EQ(CrashTree::clean(parsed(R"({"callStacks":{"a":1}})")).encode(), Json::parse(R"({"callStacks":[]})"));
    EXPECT_EQ(CrashTree::clean(parsed(R"({"callStacks":[7,{"callStackRootFrames":[{"x":1},5,{"x":2}]}]})")).encode(),
              Json::parse(R"({"callStacks":[{"callStackRootFrames":[]},{"callStackRootFrames":[{"subFrames":[]}]}]})"));
}

TEST(CrashTree, CleanMovesTheAttributedThreadFirstAndCapsThreads) {
    CrashJSON tree = parsed(R"({"callStacks":[{"n":0,"callStackRootFrames":[{"sampleCount":1}]},
        {"callStackRootFrames":[{"sampleCount":2}]},{"threadAttributed":true,"callStackRootFrames":[{"sampleCount":3}]},
        {"callStackRootFrames":[{"sampleCount":4}]},{"callStackRootFrames":[{"sampleCount":5}]}]})");
    Json out = CrashTree::clean(tree).encode();
    ASSERT_EQ(out["callStacks"].size(), 4u);
    std::vector<int> order;
    for (const auto& s : out["callStacks"]) order.push_back(s["callStackRootFrames"][0]["sampleCount"].get<int>());
    EXPECT_EQ(order, (std::vector<int>{3, 1, 2, 4}));
}

TEST(CrashTree, OneBudgetOf200FramesServesTheWholeTree) {
    // 150 frames in a chain in one thread, 51 side by side in another: 201 in all.
    std::string chain;
    for (int i = 0; i < 150; ++i) chain = frame(10, std::to_string(i), chain);
    std::string row;
    for (int i = 0; i < 51; ++i) row += (i ? "," : "") + frame(10, "");
    CrashJSON cleaned = CrashTree::clean(parsed(R"({"callStacks":[{"callStackRootFrames":[)" + chain +
                                                R"(]},{"callStackRootFrames":[)" + row + "]}]}"));
    Json out = cleaned.encode();
    int count = 0;
    bool everySubFrames = true;
    std::vector<const Json*> todo{&out["callStacks"][0]["callStackRootFrames"], &out["callStacks"][1]["callStackRootFrames"]};
    while (!todo.empty()) {
        const Json* list = todo.back();
        todo.pop_back();
        for (const auto& f : *list) {
            ++count;
            everySubFrames = everySubFrames && f.contains("subFrames");
            if (f.contains("subFrames")) todo.push_back(&f["subFrames"]);
        }
    }
    EXPECT_EQ(count, 200);
    EXPECT_TRUE(everySubFrames);
    EXPECT_EQ(out["callStacks"][1]["callStackRootFrames"].size(), 50u);
}

TEST(CrashTree, PathFollowsTheHeaviestFrame) {
    struct Case { const char* name; std::string tree; std::vector<std::int64_t> offsets; };
    const auto f = [](int offset, const std::string& weight, const std::string& sub = "") { return frame(offset, weight, sub); };
    for (const Case& c : std::vector<Case>{
             {"heaviest wins", R"({"callStacks":[{"callStackRootFrames":[)" + f(1, "1") + "," + f(2, "5", f(3, "")) + "]}]}",
              {2, 3}},
             {"tie goes to the earlier", R"({"callStacks":[{"callStackRootFrames":[)" + f(1, "2") + "," + f(2, "2") + "]}]}",
              {1}},
             {"2.0 counts as 2, 2.5 and text as 1",
              R"({"callStacks":[{"callStackRootFrames":[)" + f(1, "2.5") + "," + f(2, "\"2\"") + "," + f(3, "2.0") + "]}]}",
              {3}},
             {"no attributed thread: the first", R"({"callStacks":[{"callStackRootFrames":[)" + f(1, "") +
                                                     R"(]},{"callStackRootFrames":[)" + f(2, "") + "]}]}",
              {1}},
             {"attributed thread chosen", R"({"callStacks":[{"callStackRootFrames":[)" + f(1, "") +
                                              R"(]},{"threadAttributed":true,"callStackRootFrames":[)" + f(2, "") + "]}]}",
              {2}},
             {"no stacks", R"({"callStacks":[]})", {}},
         }) {
        SCOPED_TRACE(c.name);
        std::vector<std::int64_t> offsets;
        for (const auto& frame : CrashTree::path(parsed(c.tree))) offsets.push_back(frame.offset.value_or(-1));
        EXPECT_EQ(offsets, c.offsets);
    }
    // A chain of 100 stops at 64.
    std::string chain;
    for (int i = 99; i >= 0; --i) chain = f(i, "", chain);
    auto path = CrashTree::path(parsed(R"({"callStacks":[{"callStackRootFrames":[)" + chain + "]}]}"));
    ASSERT_EQ(path.size(), CrashTree::maxPath);
    EXPECT_EQ(path.back().offset, 63);
}

TEST(CrashTree, TextFilters) {
    const std::pair<std::string, bool> uuids[] = {
        {"0A1b2C3d-4E5f-6789-abcd-EF0123456789", true},   {"0A1b2C3d-4E5f-6789-abcd-EF012345678", false},
        {"0A1b2C3d4E5f-6789-abcd-EF0123456789a", false}, {"0A1b2C3d-4E5f-6789-abcd-EF012345678g", false},
        {"", false}};
    for (const auto& [text, ok] : uuids) EXPECT_EQ(CrashTree::isUUID(text), ok) << text;
    const std::pair<std::string, bool> names[] = {
        {"libswiftCore.dylib", true}, {"Qt Core (x86_64) [1.2] #3 <a>?@$*+-/;:,", true},
        {std::string(80, 'n'), true}, {std::string(81, 'n'), false},
        {"name\n", false},            {"a\"b", false},
        {"a\\b", false}};
    for (const auto& [text, ok] : names) EXPECT_EQ(CrashTree::isName(text), ok) << text;
}

} // namespace
} // namespace orvan
