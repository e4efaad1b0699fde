#pragma once
// A fresh folder under /tmp for one test, removed with everything in it (read-only parts too)
// when the test ends.

#include <cstdlib>
#include <filesystem>
#include <string>

namespace orvan::test {

class TempFolder {
public:
    TempFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "orvan-test-XXXXXX").string();
        if (!::mkdtemp(pattern.data())) std::abort();
        path_ = pattern;
    }
    ~TempFolder() {
        std::error_code ec;
        for (auto it = std::filesystem::recursive_directory_iterator(path_, ec);
             it != std::filesystem::recursive_directory_iterator(); it.increment(ec))
            if (it->is_directory(ec) && !it->is_symlink(ec))
                std::filesystem::permissions(it->path(), std::filesystem::perms::owner_all,
                                             std::filesystem::perm_options::add, ec);
        std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ec);
        std::filesystem::remove_all(path_, ec);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

} // namespace orvan::test
