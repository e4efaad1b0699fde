// What redaction and the crash record cost: a realistic log tail, the worst input found so far,
// non-Latin text, the depth guard's throughput, and making a record from a 200-frame tree.
#include "diagnostics/CrashRedact.h"
#include "diagnostics/CrashReport.h"
#include "diagnostics/CrashTree.h"

#include <benchmark/benchmark.h>

#include <fstream>
#include <iterator>
#include <string>

namespace {

using namespace orvan;

std::string upTo4KiB(std::string text) {
    text.resize(4096);
    return text;
}

std::string logTail() {
    const char* lines[] = {
        "2024-05-01 12:00:01.123 [INFO] orvan-bridge: listening on 127.0.0.1:8787 (pid 4242)",
        "Thread 0 Crashed:: Dispatch queue: main-thread",
        "0   libc++abi.dylib  0x00000001a2b3c4d5 std::__1::basic_string<char> append(char const*) + 24",
        "1   QtCore           0x0000000104f2e3a0 QObject::connect(QObject const*, char const*) + 112",
        "error: failed to open /home/alice/projects/secret-app/config.json: No such file or directory",
        "GET https://api.example.com/v1/items?token=abcdef1234567890 -> 401 Unauthorized",
        "retrying in 2.5s (attempt 3 of 5), build 1.4.2 (20240501.3), user alice@example.com",
        R"({"jsonrpc":"2.0","method":"session/update","params":{"path":"/tmp/x y","status":"ok"}})",
    };
    std::string text;
    for (int i = 0; text.size() < 4096; ++i) text += std::string(lines[i % 8]) + "\n";
    return upTo4KiB(text);
}

// Lines of 500 bytes that nearly match many rules at once: long word runs (which once made the
// mail, URL and command rules scan and back off from every start), key words, colons and at signs.
std::string worst() {
    std::string line;
    while (line.size() < 500) line += "tokenkey" + std::string(40, 'a') + ".b-c";
    line = line.substr(0, 440) + "@x :/ key = " + std::string(30, 'z') + " a:b:c:d";
    line.resize(510);
    std::string text;
    while (text.size() < 4096) text += line + "\n";
    return upTo4KiB(text);
}

// The slowest lines the hunting tool (bench/hunt) found: dense with near-matches for every rule,
// most with an invisible character between words and a non-breaking space, so that a line may be
// redacted up to four times over. Eight of them fill the 4,096 bytes that are read.
std::string hunted(const char* name) {
    std::ifstream in(std::string(ORVAN_SOURCE_DIR) + "/fuzz/corpus/fuzz_crash_redact_starts/" + name, std::ios::binary);
    std::string line((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::string text;
    for (int i = 0; i < 8; ++i) text += line + "\n";
    return text;
}

// JSON lines whose values are long phrases: every line is read, every value is scanned.
std::string jsonLog() {
    std::string line = R"({"level":"error","message":")";
    while (line.size() < 480) line += "could not reach the update server, will retry ";
    line += R"(","code":"E42"})";
    std::string text;
    while (text.size() + line.size() < 4096) text += line + "\n";
    return text;
}

std::string nonLatin() {
    std::string text;
    const char* lines[] = {"错误：无法打开文件，请检查权限设置并重试。用户目录不可写。",
                           "Ошибка: не удалось открыть файл конфигурации, повторите попытку позже.",
                           "エラー：設定ファイルを開けませんでした。しばらくしてから再試行してください。",
                           "خطأ: تعذر فتح الملف، يرجى المحاولة مرة أخرى لاحقاً 😀"};
    for (int i = 0; text.size() < 4200; ++i) text += std::string(lines[i % 4]) + "\n";
    // Cut at a line end so the input stays valid text.
    return text.substr(0, text.rfind('\n', 4096) + 1);
}

void run(benchmark::State& state, const std::string& input) {
    for (auto _ : state) benchmark::DoNotOptimize(CrashRedact::text(input, 512));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(input.size()));
}

void TextLogTail(benchmark::State& state) { run(state, logTail()); }
void TextWorst(benchmark::State& state) { run(state, worst()); }
void TextNonLatin(benchmark::State& state) { run(state, nonLatin()); }
void TextHuntedA(benchmark::State& state) { run(state, hunted("hunted-a.txt")); }
void TextHuntedB(benchmark::State& state) { run(state, hunted("hunted-b.txt")); }
void TextHuntedC(benchmark::State& state) { run(state, hunted("hunted-c.txt")); }
void TextJsonLog(benchmark::State& state) { run(state, jsonLog()); }

// 10 MB of nesting that goes far past the guard, with strings holding brackets.
void ShallowDeep(benchmark::State& state) {
    std::string doc;
    while (doc.size() < 10'000'000) {
        doc += std::string(600, '[');
        doc += R"("a [string] with {brackets} and \"quotes\"", 12345, {"k": true})";
        doc += std::string(600, ']');
        doc += ',';
    }
    doc = "[" + doc + "0]";
    for (auto _ : state) benchmark::DoNotOptimize(CrashTree::shallow(doc));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(doc.size()));
}

void MakeReport(benchmark::State& state) {
    std::string frames;
    for (int i = 0; i < 200; ++i) {
        frames = R"({"binaryUUID":"11111111-2222-3333-4444-555555555555","binaryName":"Orvan Companion",)"
                 R"("offsetIntoBinaryTextSegment":)" + std::to_string(1000 + i) +
                 R"(,"sampleCount":)" + std::to_string(i % 7) + R"(,"address":4096,"subFrames":[)" + frames + "]}";
    }
    CrashInput in;
    in.kind = "crash";
    in.version = "1.4.2";
    in.build = "20240501.3";
    in.os = "Linux 6.1";
    in.device = "x86_64";
    in.exceptionType = 1;
    in.signal = 11;
    in.exceptionName = "SIGSEGV";
    in.reason = "EXC_BAD_ACCESS at /home/alice/x: segmentation fault\nthread 3 token=abc";
    in.tree = R"({"callStacks":[{"threadAttributed":true,"callStackRootFrames":[)" + frames + "]}]}";
    for (auto _ : state) benchmark::DoNotOptimize(CrashReport::make("companion", in));
}

} // namespace

BENCHMARK(TextLogTail)->Unit(benchmark::kMicrosecond);
BENCHMARK(TextWorst)->Unit(benchmark::kMicrosecond);
BENCHMARK(TextNonLatin)->Unit(benchmark::kMicrosecond);
BENCHMARK(TextHuntedA)->Unit(benchmark::kMicrosecond);
BENCHMARK(TextHuntedB)->Unit(benchmark::kMicrosecond);
BENCHMARK(TextHuntedC)->Unit(benchmark::kMicrosecond);
BENCHMARK(TextJsonLog)->Unit(benchmark::kMicrosecond);
BENCHMARK(ShallowDeep)->Unit(benchmark::kMillisecond);
BENCHMARK(MakeReport)->Unit(benchmark::kMicrosecond);
