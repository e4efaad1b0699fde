// The tool runner: exactly the given environment, output only when asked, and a deadline.
#include "platform/CoreApp.h"
#include "platform/linux/QtTools.h"

#include <QCoroTask>
#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;

TEST(QtToolsTest, EnvironmentCaptureAndDeadline) {
    test::coreApp();
    QtTools tools;
    const std::string line = "echo \"out:$HOME:${SECRET:-none}\"; echo err >&2; exit 3";
    struct Case {
        const char* what;
        ToolCall call;
        CommandResult result;
    } cases[] = {
        {"output only", {"/bin/bash", {"-c", line}, {{"HOME", "/h"}}, 10s, true, false, std::nullopt}, {3, "out:/h:none\n"}},
        {"output and errors", {"/bin/bash", {"-c", line}, {{"HOME", "/h"}}, 10s, true, true, std::nullopt}, {3, "out:/h:none\nerr\n"}},
        {"no capture", {"/bin/bash", {"-c", line}, {}, 10s, false, false, std::nullopt}, {3, ""}},
        {"in a folder", {"/bin/bash", {"-c", "pwd"}, {}, 10s, true, false, std::filesystem::path("/usr")}, {0, "/usr\n"}},
        {"past the deadline", {"/bin/bash", {"-c", "echo early; sleep 20"}, {}, 300ms, true, false, std::nullopt}, {1, ""}},
        {"no such tool", {"/nonexistent/tool", {}, {}, 10s, true, false, std::nullopt}, {1, ""}},
    };
    for (auto& c : cases) {
        auto started = std::chrono::steady_clock::now();
        CommandResult got = QCoro::waitFor(tools.run(c.call));
        EXPECT_EQ(got.code, c.result.code) << c.what;
        EXPECT_EQ(got.output, c.result.output) << c.what;
        EXPECT_LT(std::chrono::steady_clock::now() - started, 10s) << c.what;
    }
}

} // namespace
} // namespace orvan
