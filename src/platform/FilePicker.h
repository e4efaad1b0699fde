#pragma once
// Letting the owner choose one file or one folder. A front end without windows has no chooser:
// its views offer a field that takes a path instead, so they ask `canChoose` first.

#include "foundation/Async.h"

#include <filesystem>
#include <optional>
#include <string>

namespace orvan {

struct FileChoice {
    enum class Kind { file, folder };
    Kind kind = Kind::file;
    // What the chooser says the choice is for.
    std::string message;
    // Where it opens; the home folder when empty or missing.
    std::filesystem::path start;
    // Key files live in dot folders and are dot files themselves often enough.
    bool showHidden = false;
};

class FilePicker {
public:
    virtual ~FilePicker() = default;
    virtual bool canChoose() const = 0;
    // The chosen path, or nothing when the owner cancelled (or nothing can be shown).
    virtual Task<std::optional<std::filesystem::path>> choose(FileChoice choice) = 0;
};

} // namespace orvan

namespace orvan {

// A front end without windows: its views take a typed path instead.
class NoFilePicker final : public FilePicker {
public:
    bool canChoose() const override { return false; }
    Task<std::optional<std::filesystem::path>> choose(FileChoice) override { co_return std::nullopt; }
};

} // namespace orvan
