#include "connections/Connections.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

struct Cleaning {
    const char* typed;
    std::optional<std::string> clean;
};

TEST(ConnectionsTest, HostnamesAreCleanedOrRefused) {
    const Cleaning cases[] = {
        {"HTTPS://Mac.Example.COM/", "mac.example.com"},
        {"  http://a-b.example.org\n", "a-b.example.org"},
        {"https://http://x.io", "x.io"},
        {"x.io//", std::nullopt},
        {"localhost", std::nullopt},
        {"-a.example.com", std::nullopt},
        {"a-.example.com", std::nullopt},
        {"a..example.com", std::nullopt},
        {"example.com.", std::nullopt},
        {"a_b.example.com", std::nullopt},
        {"caf\xC3\xA9.example.com", std::nullopt},
        {"", std::nullopt},
        {"https://", std::nullopt},
    };
    for (const auto& c : cases) EXPECT_EQ(Connections::hostname(c.typed), c.clean) << c.typed;

    std::string label63(63, 'a');
    EXPECT_TRUE(Connections::hostname(label63 + ".io"));
    EXPECT_FALSE(Connections::hostname(label63 + "a.io"));
    // 253 characters pass, 254 don't, whatever the labels.
    std::string name = label63 + "." + label63 + "." + label63 + "." + std::string(61, 'b');
    ASSERT_EQ(name.size(), 253u);
    EXPECT_TRUE(Connections::hostname(name));
    EXPECT_FALSE(Connections::hostname(name + "b"));
}

TEST(ConnectionsTest, TokensAreCleanedOrRefused) {
    const Cleaning cases[] = {
        {"  eyJhIjoi+/=_-Z09 \n", "eyJhIjoi+/=_-Z09"},
        {"abc def", std::nullopt},
        {"abc\"", std::nullopt},
        {"   ", std::nullopt},
    };
    for (const auto& c : cases) EXPECT_EQ(Connections::token(c.typed), c.clean) << c.typed;
    EXPECT_TRUE(Connections::token(std::string(4096, 'x')));
    EXPECT_FALSE(Connections::token(std::string(4097, 'x')));
}

TEST(ConnectionsTest, ProblemsAndTheBodySaveSends) {
    struct Case {
        const char* hostname;
        const char* token;
        bool kept;
        std::optional<std::string> problem;
    } cases[] = {
        {"localhost", "abc", true, "Type this Mac's hostname, such as orvan.example.com."},
        {"mac.example.com", " ", false, "Paste the Cloudflare tunnel token."},
        {"mac.example.com", "", true, std::nullopt},
        {"mac.example.com", "a b", true, "That does not look like a tunnel token."},
        {"mac.example.com", "abc", false, std::nullopt},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Connections::problem(c.hostname, c.token, c.kept), c.problem) << c.hostname << "|" << c.token;

    EXPECT_EQ(Connections::save(" Mac.Example.com ", ""), (Json{{"hostname", "mac.example.com"}}));
    EXPECT_EQ(Connections::save(" not a host ", " tok "), (Json{{"hostname", "not a host"}, {"token", "tok"}}));
    EXPECT_EQ(Connections::save("a.io", "bad token"), (Json{{"hostname", "a.io"}}));
    EXPECT_EQ(Connections::remove(), (Json{{"hostname", ""}, {"token", ""}}));
    EXPECT_EQ(Connections::quick(false), (Json{{"quick", false}}));
}

TEST(ConnectionsTest, TheTargetFollowsALoopbackHttpOriginOnly) {
    struct Case {
        const char* origin;
        const char* target;
        const char* forbidden;
    } cases[] = {
        {"http://127.0.0.1:9100", "http://127.0.0.1:9100", "9099"},
        {"https://x", "http://127.0.0.1:8788", "8787"},
        {"http://localhost:9100", "http://127.0.0.1:8788", "8787"},
        {"http://127.0.0.1", "http://127.0.0.1:8788", "8787"},
        {"http://127.0.0.1:1", "http://127.0.0.1:8788", "8787"},
        {"http://127.0.0.1:2", "http://127.0.0.1:2", "1"},
        {"", "http://127.0.0.1:8788", "8787"},
    };
    for (const auto& c : cases) {
        TunnelState state;
        state.origin = c.origin;
        EXPECT_EQ(Connections::targetLine(state), std::string("In Cloudflare, point the tunnel at ") + c.target +
                                                      " only: never at port " + c.forbidden +
                                                      ", and never as a TCP service.")
            << c.origin;
    }
}

TEST(ConnectionsTest, LinesForEachState) {
    struct Case {
        const char* status;
        const char* hostname;
        const char* line;
    } domains[] = {
        {"up", "mac.example.com", "Up. Your devices can reach this Mac at mac.example.com."},
        {"up", "", "Up."},
        {"starting", "mac.example.com", "Starting the tunnel to mac.example.com\u2026"},
        {"starting", "", "Starting\u2026"},
        {"refused", "", "Cloudflare refused this tunnel token."},
        {"down", "mac.example.com", "Off."},
        {"", "", "Not set up."},
    };
    for (const auto& c : domains) {
        TunnelState state;
        state.status = c.status;
        state.hostname = c.hostname;
        EXPECT_EQ(Connections::domainLine(state), c.line) << c.status << "|" << c.hostname;
    }

    struct Quick {
        bool quick;
        const char* status;
        const char* url;
        const char* line;
    } quicks[] = {
        {false, "up", "https://a.example.net", "Off."},
        {true, "up", "https://a-b.example.net/x", "Up at a-b.example.net"},
        {true, "up", "not a url", "Starting\u2026"},
        {true, "refused", "", "The quick tunnel did not start."},
        {true, "", "", "Starting\u2026"},
    };
    for (const auto& c : quicks) {
        TunnelState state;
        state.quick = c.quick;
        state.quickStatus = c.status;
        state.quickURL = c.url;
        EXPECT_EQ(Connections::quickLine(state), c.line) << c.status << "|" << c.url;
    }

    struct Tailnet {
        std::vector<std::string> addresses;
        const char* line;
    } tailnets[] = {
        {{}, "Not found on this Mac."},
        {{"", "100.64.0.1"}, "Not found on this Mac."},
        {{"100.64.0.1:8787"}, "On a tailnet at 100.64.0.1"},
        {{"http://100.64.0.1:8787"}, "On a tailnet at 100.64.0.1"},
        {{"[fd7a:115c::1]:8787"}, "On a tailnet at fd7a:115c::1"},
        {{"http://[fd7a:115c::1]:8787/"}, "On a tailnet at fd7a:115c::1"},
        {{"fd7a:115c::1"}, "On a tailnet at fd7a:115c::1"},
        {{"mac.tail1234.ts.net"}, "On a tailnet at mac.tail1234.ts.net"},
    };
    for (const auto& c : tailnets) {
        TunnelState state;
        state.tailscale = c.addresses;
        EXPECT_EQ(Connections::tailscaleLine(state), c.line);
    }
}

TEST(ConnectionsTest, OnlyTheKnownQuickReasonIsShownAndReasonsAreCut) {
    TunnelState state;
    state.quick = true;
    state.quickStatus = "up";
    state.quickReason = std::string("  ") + Connections::unchecked + "\n";
    EXPECT_EQ(Connections::quickNote(state), std::string(Connections::unchecked));
    state.quickStatus = "starting";
    EXPECT_EQ(Connections::quickNote(state), std::nullopt);
    state.quickStatus = "up";
    state.quickReason = "exit status 1";
    EXPECT_EQ(Connections::quickNote(state), std::nullopt);

    EXPECT_EQ(Connections::reason("  short \n"), "short");
    EXPECT_EQ(Connections::reason(std::string(400, 'r')).size(), 300u);
}

TEST(ConnectionsTest, StateKeysAreReadLoosely) {
    auto state = decodeJson<TunnelState>(
        R"({"hostname":7,"token":true,"status":"up","quick":"yes","quickURL":"https://q.example.net",
            "tailscale":["100.64.0.1"],"origin":null,"extra":{}})");
    ASSERT_TRUE(state);
    EXPECT_EQ(state->hostname, "");
    EXPECT_TRUE(state->token);
    EXPECT_EQ(state->status, "up");
    EXPECT_FALSE(state->quick);
    EXPECT_EQ(state->tailscale, std::vector<std::string>{"100.64.0.1"});
    EXPECT_EQ(decodeJson<TunnelState>(R"({"tailscale":["a",1]})")->tailscale, std::vector<std::string>{});
    EXPECT_FALSE(decodeJson<TunnelState>("[]"));
    EXPECT_FALSE(decodeJson<TunnelState>("{"));
}

} // namespace
} // namespace orvan
