// Searches for lines that make redaction slow: random lines built from the pieces the rules care
// about, then mutation of the slowest found so far, one search per rule and one for the whole
// line path. Prints the slowest line per rule and whether any rule ran out of time. A development
// tool: what it finds goes into the benchmark inputs.
//
//   bench_redaction_hunt [--whole] [seconds per rule = 3]
//   bench_redaction_hunt --explain FILE
//   bench_redaction_hunt --repeat FILE [times]
#include "diagnostics/CrashRedact.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <unicode/uchar.h>

namespace {

using namespace orvan;
using Clock = std::chrono::steady_clock;

const std::vector<std::string> pieces = {
    "a", "Z", "0", "9", "f", "_", ".", "-", "+", "@", ":", "/", "\\", "\"", "'", "`", " ", "=", "%", "~", "<",
    "(", ",", "eyJ", "://", "key", "token", "Auth", "to\u212Aen", "pa\u00DFwd", "\u00DF", "\u212A", "\u00E9",
    "\U0001F600", ": command not found", "::", "C:\\", "x@y", "..", "1.2", "sk-", "bearer ", "repo ", "cmd ",
    "spawn ", "A=", "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaa", "a.a.a.a.a.a.a.", "a a a a a ", "1.1.1.1.", "a:a:a:",
    "{\"a\":\"", "\\\"", "\u00A0", "\u200B", "ghp_", "xoxb-", "AKIA", "github_pat_", "sk_live_", "$ ", "/a/b"};

std::string randomLine(std::mt19937& rng) {
    std::string line;
    const std::size_t target = 100 + rng() % 412;
    while (line.size() < target) line += pieces[rng() % pieces.size()];
    return line;
}

// Keeps the line within what is read at all: 512 bytes, cut at a character boundary.
std::string fit(std::string line) {
    if (line.size() <= 512) return line;
    std::size_t cut = 512;
    while (cut > 0 && (static_cast<unsigned char>(line[cut]) & 0xC0) == 0x80) --cut;
    line.resize(cut);
    return line;
}

std::string mutate(const std::string& line, std::mt19937& rng) {
    std::string out = line;
    const std::size_t at = out.empty() ? 0 : rng() % out.size();
    switch (rng() % 4) {
    case 0: out.insert(at, pieces[rng() % pieces.size()]); break;
    case 1: out.erase(at, 1 + rng() % 8); break;
    case 2: {
        const std::size_t length = 1 + rng() % 40;
        out.insert(rng() % (out.size() + 1), out.substr(at, length));
        break;
    }
    default: out.replace(at, 1 + rng() % 6, pieces[rng() % pieces.size()]); break;
    }
    // Only whole characters survive a cut or a splice: repair by round trip.
    return fit(CrashRedact::redactLine(out, false));
}

template <class Work> double microseconds(Work work) {
    double best = 1e18;
    for (int i = 0; i < 3; ++i) {
        const auto start = Clock::now();
        work();
        best = std::min(best, std::chrono::duration<double, std::micro>(Clock::now() - start).count());
    }
    return best;
}

std::string printable(const std::string& line) {
    std::string out;
    for (unsigned char c : line) out += (c < 0x20 || c == '\\') ? "\\x" + std::to_string(c) : std::string(1, static_cast<char>(c));
    return out;
}

struct Found {
    std::string line;
    double us = 0;
    bool timedOut = false;
};

template <class Measure> Found hunt(Measure measure, double seconds, unsigned seed) {
    std::mt19937 rng(seed);
    Found best;
    const auto end = Clock::now() + std::chrono::duration<double>(seconds);
    while (Clock::now() < end) {
        std::string line = (best.line.empty() || rng() % 4 == 0) ? randomLine(rng) : mutate(best.line, rng);
        bool timedOut = false;
        double us = measure(line, timedOut);
        // A slow reading may be the machine, not the line: it must hold on a second look.
        if (us > best.us) us = std::min(us, measure(line, timedOut));
        if (us > best.us) best = {line, us, timedOut};
    }
    return best;
}

} // namespace

// Times each rule in turn on one line, each on the output of the one before, as redaction runs them.
int explain(const char* path) {
    std::FILE* file = std::fopen(path, "rb");
    if (!file) return 2;
    std::string line;
    for (int c; (c = std::fgetc(file)) != EOF && c != '\n';) line += static_cast<char>(c);
    std::fclose(file);
    // Each form a line can take on its way: invisible characters dropped or made spaces, and each
    // of those with all white space made plain spaces.
    for (bool spaced : {false, true}) {
        for (bool flat : {false, true}) {
            std::string form = CrashRedact::redactLine(line, spaced);
            auto text = icu::UnicodeString::fromUTF8(form);
            if (flat) {
                icu::UnicodeString plain;
                for (int32_t i = 0; i < text.length(); ++i) plain.append(u_isUWhiteSpace(text.charAt(i)) ? u' ' : text.charAt(i));
                text = plain;
            }
            std::printf("-- %s, %s\n", spaced ? "spaced" : "dropped", flat ? "flat" : "as is");
            double total = 0;
            for (std::size_t r = 0; r < CrashRedact::rules().size(); ++r) {
                std::optional<icu::UnicodeString> out;
                double us = microseconds([&] { out = CrashRedact::replace(CrashRedact::rules()[r], text); });
                total += us;
                if (us > 1 || !out) std::printf("rule %2zu  %8.1f us%s\n", r + 1, us, out ? "" : "  TIME-OUT");
                if (!out) break;
                text = *out;
            }
            std::printf("total %.1f us\n", total);
        }
    }
    return 0;
}

// Redacts eight copies of the line over and over, for a profiler to watch.
int repeat(const char* path, int times) {
    std::FILE* file = std::fopen(path, "rb");
    if (!file) return 2;
    std::string line;
    for (int c; (c = std::fgetc(file)) != EOF && c != '\n';) line += static_cast<char>(c);
    std::fclose(file);
    std::string text;
    for (int i = 0; i < 8; ++i) text += line + "\n";
    std::size_t total = 0;
    const auto start = Clock::now();
    for (int i = 0; i < times; ++i) total += CrashRedact::text(text, 512).size();
    std::printf("%.1f us per text, %zu bytes out\n",
                std::chrono::duration<double, std::micro>(Clock::now() - start).count() / times, total / times);
    return 0;
}

int main(int argc, char** argv) {
    if (argc > 2 && std::string(argv[1]) == "--explain") return explain(argv[2]);
    if (argc > 2 && std::string(argv[1]) == "--repeat") return repeat(argv[2], argc > 3 ? std::atoi(argv[3]) : 1000);
    const bool wholeOnly = argc > 1 && std::string(argv[1]) == "--whole";
    const double seconds = argc > 1 + wholeOnly ? std::atof(argv[1 + wholeOnly]) : 3.0;
    const auto& rules = CrashRedact::rules();
    bool anyTimeOut = false;
    for (std::size_t r = 0; r < rules.size() && !wholeOnly; ++r) {
        Found f = hunt(
            [&](const std::string& line, bool& timedOut) {
                const auto text = icu::UnicodeString::fromUTF8(line);
                return microseconds([&] { timedOut = !CrashRedact::replace(rules[r], text).has_value(); });
            },
            seconds, static_cast<unsigned>(r) + 1);
        anyTimeOut = anyTimeOut || f.timedOut;
        std::printf("rule %2zu  %8.1f us%s  %s\n", r + 1, f.us, f.timedOut ? "  TIME-OUT" : "", printable(f.line).c_str());
    }
    // The whole path, eight lines of 4 KiB, with the invisible-character and white-space retries.
    Found whole = hunt(
        [](const std::string& line, bool& timedOut) {
            std::string text;
            for (int i = 0; i < 8; ++i) text += line + "\n";
            std::string out;
            double us = microseconds([&] { out = CrashRedact::text(text, 512); });
            timedOut = out.find("<line>") != std::string::npos;
            return us;
        },
        seconds * 4, 99);
    std::printf("text()  %8.1f us for 8 lines%s  %s\n", whole.us, whole.timedOut ? "  (<line> in output)" : "",
                printable(whole.line).c_str());
    if (std::FILE* file = std::fopen("redaction-hunt-worst.txt", "wb")) {
        std::fwrite(whole.line.data(), 1, whole.line.size(), file);
        std::fclose(file);
    }
    return anyTimeOut ? 1 : 0;
}
