// Replays a fuzz target's seed corpus, then feeds it inputs made by small mutations of the seeds
// (byte flips, cuts, splices, repeats), with a fixed seed so a failure can be replayed.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <algorithm>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

std::vector<std::string> readCorpus(const std::filesystem::path& folder) {
    std::vector<std::string> seeds;
    std::error_code ec;
    if (!std::filesystem::is_directory(folder, ec)) return seeds;
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder, ec))
        if (entry.is_regular_file()) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    for (const auto& file : files) {
        std::ifstream in(file, std::ios::binary);
        seeds.emplace_back((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    }
    return seeds;
}

std::string mutate(std::string input, const std::vector<std::string>& seeds, std::mt19937_64& rng) {
    auto pick = [&](size_t n) { return n == 0 ? size_t{0} : static_cast<size_t>(rng() % n); };
    static const char* tokens[] = {"{", "}", "[", "]", "\"", ":", ",", "null", "true", "-1", "1e999",
                                   "\\u0000", "\\ud800", "\xF0\x9F\x98\x80", "\xC3", "\"message\"", "0.5"};
    int rounds = 1 + static_cast<int>(pick(4));
    for (int r = 0; r < rounds; ++r) {
        switch (pick(6)) {
        case 0: // flip a byte
            if (!input.empty()) input[pick(input.size())] = static_cast<char>(rng());
            break;
        case 1: // cut
            if (!input.empty()) input.erase(pick(input.size()), pick(16) + 1);
            break;
        case 2: // insert a token
            input.insert(pick(input.size() + 1), tokens[pick(std::size(tokens))]);
            break;
        case 3: // splice another seed
            if (!seeds.empty()) {
                const std::string& other = seeds[pick(seeds.size())];
                input = input.substr(0, pick(input.size() + 1)) + other.substr(pick(other.size() + 1));
            }
            break;
        case 4: // repeat a piece
            if (!input.empty()) {
                size_t at = pick(input.size());
                std::string piece = input.substr(at, pick(32) + 1);
                for (size_t k = pick(8); k > 0; --k) input.insert(at, piece);
            }
            break;
        default: // random bytes
            for (size_t k = pick(16); k > 0; --k) input.insert(pick(input.size() + 1), 1, static_cast<char>(rng()));
        }
    }
    return input;
}

} // namespace

int main(int argc, char** argv) {
    std::filesystem::path corpus = argc > 1 ? argv[1] : "";
    long generated = argc > 2 ? std::strtol(argv[2], nullptr, 10) : 1000;
    auto seeds = readCorpus(corpus);
    for (const auto& seed : seeds)
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(seed.data()), seed.size());
    std::mt19937_64 rng(0x0a11ce);
    for (long i = 0; i < generated; ++i) {
        std::string base = seeds.empty() ? std::string() : seeds[static_cast<size_t>(rng() % seeds.size())];
        std::string input = mutate(base, seeds, rng);
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
    }
    std::printf("%zu seeds and %ld generated inputs ran without a fault\n", seeds.size(), generated);
    return 0;
}
