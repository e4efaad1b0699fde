// Unpacking refuses every entry that could reach outside its folder or carry privileges.
#include "fakes/TempFolder.h"
#include "foundation/Files.h"
#include "updates/UpdateArchive.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <zlib.h>

#include <cstring>

namespace orvan {
namespace {

struct Entry {
    std::string name;
    char type = '0';
    unsigned mode = 0644;
    std::string content;
    std::string link;
};

void octal(char* field, std::size_t size, std::uint64_t value) { std::snprintf(field, size, "%0*llo", int(size - 1), (unsigned long long)value); }

std::string header(const Entry& e) {
    char h[512] = {};
    std::memcpy(h, e.name.data(), std::min<std::size_t>(e.name.size(), 100));
    octal(h + 100, 8, e.mode);
    octal(h + 108, 8, 0);
    octal(h + 116, 8, 0);
    octal(h + 124, 12, e.content.size());
    octal(h + 136, 12, 0);
    h[156] = e.type;
    std::memcpy(h + 157, e.link.data(), std::min<std::size_t>(e.link.size(), 100));
    std::memcpy(h + 257, "ustar\0" "00", 8);
    std::memset(h + 148, ' ', 8);
    unsigned sum = 0;
    for (unsigned char c : h) sum += c;
    std::snprintf(h + 148, 8, "%06o", sum);
    std::string out(h, 512);
    out += e.content;
    out.append((512 - e.content.size() % 512) % 512, '\0');
    return out;
}

void pack(const std::filesystem::path& to, const std::vector<Entry>& entries) {
    std::string tar;
    for (const auto& e : entries) {
        if (e.name.size() > 100) tar += header({"././@LongLink", 'L', 0644, e.name + '\0', ""});
        tar += header(e);
    }
    tar.append(1024, '\0');
    gzFile out = gzopen(to.c_str(), "wb");
    gzwrite(out, tar.data(), static_cast<unsigned>(tar.size()));
    gzclose(out);
}

TEST(UpdateArchiveTest, APlainBundleComesOutWithItsModes) {
    test::TempFolder temp;
    std::string deep = "orvan-companion/share/" + std::string(120, 'd') + "/file";
    pack(temp.path() / "p.tgz", {{"orvan-companion/", '5', 0755, "", ""},
                                 {"orvan-companion/bin/orvan-companion", '0', 0755, "#!/bin/sh\n", ""},
                                 {deep, '0', 0600, "deep", ""}});
    ASSERT_EQ(UpdateArchive::extract(temp.path() / "p.tgz", temp.path() / "out"), std::nullopt);
    struct stat info {};
    ASSERT_EQ(::stat((temp.path() / "out/orvan-companion/bin/orvan-companion").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0755u);
    EXPECT_EQ(Files::read(temp.path() / "out" / deep), "deep");
}

TEST(UpdateArchiveTest, RefusalsWriteNothingOutsideTheFolder) {
    test::TempFolder temp;
    const std::string outside = (temp.path() / "outside").string();
    struct Case {
        const char* what;
        std::vector<Entry> entries;
        UpdateArchive::Limits limits{};
    } cases[] = {
        {"path traversal", {{"orvan-companion/../../outside", '0', 0644, "x", ""}}},
        {"absolute path", {{outside, '0', 0644, "x", ""}}},
        {"a link leaving the tree", {{"orvan-companion/evil", '2', 0777, "", "../../outside"}}},
        {"a link inside the tree", {{"orvan-companion/bin/again", '2', 0777, "", "orvan-companion"}}},
        {"a hard link", {{"orvan-companion/hard", '1', 0644, "", outside}}},
        {"a device node", {{"orvan-companion/dev", '3', 0644, "", ""}}},
        {"a pipe", {{"orvan-companion/fifo", '6', 0644, "", ""}}},
        {"a set-id file", {{"orvan-companion/bin/root", '0', 04755, "x", ""}}},
        {"a set-group folder", {{"orvan-companion/g/", '5', 02755, "", ""}}},
        {"too many entries", {{"a", '0', 0644, "", ""}, {"b", '0', 0644, "", ""}, {"c", '0', 0644, "", ""}}, {2, 1 << 20}},
        {"too many bytes", {{"a", '0', 0644, std::string(600, 'x'), ""}}, {10, 512}},
        {"twice the same file", {{"a", '0', 0644, "1", ""}, {"a", '0', 0644, "2", ""}}},
    };
    int n = 0;
    for (const auto& c : cases) {
        auto package = temp.path() / ("p" + std::to_string(n) + ".tgz");
        auto into = temp.path() / ("work" + std::to_string(n++));
        pack(package, c.entries);
        EXPECT_TRUE(UpdateArchive::extract(package, into, c.limits)) << c.what;
        EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(outside))) << c.what;
        for (const auto& entry : std::filesystem::directory_iterator(temp.path())) {
            auto name = entry.path().filename().string();
            EXPECT_TRUE(name.rfind("work", 0) == 0 || name.rfind("p", 0) == 0) << c.what << ": " << name;
        }
    }
    // A damaged or truncated package.
    Files::write(temp.path() / "junk.tgz", "not a package at all, and longer than nothing");
    EXPECT_TRUE(UpdateArchive::extract(temp.path() / "junk.tgz", temp.path() / "junk"));
}

} // namespace
} // namespace orvan
