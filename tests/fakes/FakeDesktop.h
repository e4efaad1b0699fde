#pragma once
// Records what a model asked the desktop to open, and chooses what a test says the owner chose.

#include "platform/Desktop.h"
#include "platform/FilePicker.h"

#include <deque>
#include <string>
#include <vector>

namespace orvan::test {

class FakeDesktop final : public Desktop {
public:
    bool openUrl(const std::string& url) override { return record("url " + url); }
    bool openFile(const std::filesystem::path& file) override { return record("file " + file.string()); }
    bool openFolder(const std::filesystem::path& folder) override { return record("folder " + folder.string()); }
    void activate() override { opened.push_back("activate"); }

    std::vector<std::string> opened;
    bool works = true;

private:
    bool record(std::string what) {
        opened.push_back(std::move(what));
        return works;
    }
};

class FakeFilePicker final : public FilePicker {
public:
    bool canChoose() const override { return true; }
    Task<std::optional<std::filesystem::path>> choose(FileChoice choice) override {
        asked.push_back(choice);
        if (answers.empty()) co_return std::nullopt;
        auto answer = answers.front();
        answers.pop_front();
        co_return answer;
    }
    std::vector<FileChoice> asked;
    // Nothing means the owner cancelled.
    std::deque<std::optional<std::filesystem::path>> answers;
};

} // namespace orvan::test
