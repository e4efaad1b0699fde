// The package digest against the openssl tool on the same file. The file is 256 MiB by default;
// ORVAN_BENCH_SHA256_GIB=1 makes it the largest package a release may have, 1 GiB.
#include "updates/UpdateDownload.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace {

const std::filesystem::path& file() {
    static const std::filesystem::path path = [] {
        const char* gib = std::getenv("ORVAN_BENCH_SHA256_GIB");
        const std::int64_t size = (gib && std::string(gib) == "1") ? (1LL << 30) : (256LL << 20);
        std::filesystem::path p = std::filesystem::temp_directory_path() / ("orvan-bench-sha256-" + std::to_string(::getpid()));
        std::ofstream out(p, std::ios::binary);
        std::string block(1 << 20, '\0');
        for (std::size_t i = 0; i < block.size(); ++i) block[i] = static_cast<char>((i * 131 + 7) & 0xff);
        for (std::int64_t written = 0; written < size; written += static_cast<std::int64_t>(block.size())) {
            block[0] = static_cast<char>(written >> 20);
            out.write(block.data(), static_cast<std::streamsize>(block.size()));
        }
        std::atexit([] { std::filesystem::remove(file()); });
        return p;
    }();
    return path;
}

std::string tool(const std::filesystem::path& path) {
    std::string command = "openssl dgst -sha256 -r '" + path.string() + "'";
    std::FILE* pipe = ::popen(command.c_str(), "r");
    char line[256] = {};
    if (pipe) {
        if (!std::fgets(line, sizeof line, pipe)) line[0] = 0;
        ::pclose(pipe);
    }
    return std::string(line).substr(0, 64);
}

void BM_Sha256Ours(benchmark::State& state) {
    const auto& path = file();
    std::string digest;
    for (auto _ : state) digest = orvan::UpdateDownload::sha256(path).value_or("");
    if (digest != tool(path)) state.SkipWithError("the digests differ");
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(std::filesystem::file_size(path)));
}

void BM_Sha256OpensslTool(benchmark::State& state) {
    const auto& path = file();
    for (auto _ : state) benchmark::DoNotOptimize(tool(path));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(std::filesystem::file_size(path)));
}

} // namespace

// The same warm file for both, read once before either is timed.
BENCHMARK(BM_Sha256OpensslTool)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_Sha256Ours)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
