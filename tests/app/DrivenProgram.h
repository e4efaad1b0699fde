#pragma once
// The real program, headless, in a temporary home of its own, against the simulator it launches as
// its own bridge on 8787, driven through the text view's commands as an owner at a terminal would.

#include "RealBridge.h"
#include "app/TreeCommands.h"
#include "foundation/Files.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <httplib.h>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <sys/stat.h>

namespace orvan::test {

// The bridge child of a process: the first of its children, or -1.
inline int childOf(qint64 pid) {
    auto children = procList(static_cast<int>(pid), ("task/" + std::to_string(pid) + "/children").c_str());
    return children.empty() ? -1 : std::atoi(children[0].c_str());
}

class DrivenProgram : public testing::Test {
protected:
    void SetUp() override {
        qtApp();
        if (healthzAnswers(8787)) GTEST_SKIP() << "something else already serves port 8787";
        const std::string runtime = (home_.root / "run").string();
        ::mkdir(runtime.c_str(), 0700);
        auto env = QProcessEnvironment::systemEnvironment();
        env.insert("HOME", QString::fromStdString(home_.root.string()));
        env.insert("XDG_DATA_HOME", QString::fromStdString((home_.root / "share").string()));
        env.insert("XDG_CONFIG_HOME", QString::fromStdString((home_.root / "config").string()));
        env.insert("XDG_RUNTIME_DIR", QString::fromStdString(runtime));
        env.insert("ORVAN_DIR", QString::fromStdString(home_.data().string()));
        env.insert("COLUMNS", "120");
        env.insert("LANG", "en_US.UTF-8");
        for (const char* name : {"ORVAN_COMPANION_BIN", "TULM_COMPANION_BIN", "ORVAN_SIM_SANDBOX"}) env.remove(name);
        // The first start asks about sending reports; these programs start as an owner who already
        // answered no, so the window opens without the question. The privacy test asks for it.
        if (answersConsent())
            Files::write(home_.root / "config" / "orvan" / (std::string(ORVAN_BUNDLE_ID) + ".json"),
                         R"({"orvan.consent.on":false,"orvan.consent.answered":2})");
        adjust(env);
        program_.setProcessEnvironment(env);
        QObject::connect(&program_, &QProcess::readyReadStandardOutput,
                         [this] { output_ += program_.readAllStandardOutput().toStdString(); });
        QObject::connect(&program_, &QProcess::readyReadStandardError,
                         [this] { errors_ += program_.readAllStandardError().toStdString(); });
    }
    void TearDown() override {
        if (program_.state() != QProcess::NotRunning) {
            program_.terminate();
            program_.waitForFinished(10000);
        }
    }
    // What one test program adds to the environment.
    virtual void adjust(QProcessEnvironment&) {}
    // Whether the consent question was answered before the first start.
    virtual bool answersConsent() const { return true; }

    bool start() {
        program_.start(ORVAN_COMPANION_PATH, {"--headless"});
        return program_.waitForStarted(5000);
    }
    // Waits on the event loop: the program may have ended while the test waited for an answer.
    bool finished() { return waitUntil([&] { return program_.state() == QProcess::NotRunning; }, std::chrono::seconds(10)); }
    bool saw(const std::string& words, std::size_t from = 0) const { return output_.find(words, from) != std::string::npos; }
    // Types one command line and waits for an answer that holds `answer`.
    bool type(const std::string& line, const std::string& answer) {
        const std::size_t mark = output_.size();
        program_.write(QByteArray::fromStdString(line + "\n"));
        return waitUntil([&] { return saw(answer, mark); }, std::chrono::seconds(10));
    }
    // Waits until the program has printed nothing for `quiet`, so the numbers of the frame read next
    // still hold when a command names one.
    bool settled(std::chrono::milliseconds quiet = std::chrono::milliseconds(1500)) {
        std::size_t seen = output_.size();
        auto since = std::chrono::steady_clock::now();
        return waitUntil(
            [&] {
                const auto now = std::chrono::steady_clock::now();
                if (output_.size() != seen) {
                    seen = output_.size();
                    since = now;
                }
                return now - since >= quiet;
            },
            std::chrono::seconds(30));
    }
    // Waits for something the program does on its own, at the pace of its polls.
    bool settles(const std::function<bool()>& done) { return waitUntil(done, std::chrono::seconds(20)); }
    bool press(const std::string& ref) { return type("press " + ref, "> Pressed"); }

    // The last frame printed, from its heading on; a frame still arriving may be cut short.
    std::string frame() const {
        const auto at = output_.rfind(app::frameHeading);
        return at == std::string::npos ? std::string() : output_.substr(at);
    }
    bool inFrame(const std::string& words) const { return frame().find(words) != std::string::npos; }
    // The last frame from the last `marker` in it (a sheet's or a section's heading) on.
    std::string partFrom(const std::string& marker) const {
        const std::string f = frame();
        const auto at = f.rfind(marker);
        return at == std::string::npos ? std::string() : f.substr(at);
    }
    // The line of the last frame that holds `words`.
    std::string lineWith(const std::string& words) const {
        const std::string f = frame();
        const auto at = f.find(words);
        if (at == std::string::npos) return {};
        const auto start = f.rfind('\n', at) + 1;
        return f.substr(start, f.find('\n', start) - start);
    }
    // A row of the last frame: its line and the deeper-indented lines under it (its menu, its
    // detail, and its own line where the terminal wrapped it).
    std::string rowOf(const std::string& words) const {
        const std::string f = frame();
        const auto at = f.find(words);
        if (at == std::string::npos) return {};
        const auto start = f.rfind('\n', at) + 1;
        const auto indent = f.find_first_not_of(' ', start) - start;
        auto end = f.find('\n', start);
        while (end != std::string::npos && end + 1 < f.size() && f.find_first_not_of(' ', end + 1) - (end + 1) > indent)
            end = f.find('\n', end + 1);
        return f.substr(start, end == std::string::npos ? std::string::npos : end - start);
    }
    // The number that `part` gives the control drawn as `shown` ("[Remove]", "[ ] Codex"), or "".
    static std::string numberIn(const std::string& part, const std::string& shown) {
        // "(•) Password" is a choice drawn before the field "7) Password", so only a number counts.
        for (auto at = part.find(") " + shown); at != std::string::npos; at = part.find(") " + shown, at + 1)) {
            auto from = at;
            while (from > 0 && part[from - 1] >= '0' && part[from - 1] <= '9') --from;
            if (from < at) return part.substr(from, at - from);
        }
        return {};
    }
    // Works the control drawn as `shown` in the part of the frame `where` reads: `verb N rest`.
    // The number is read again once the program has stopped printing, so that a frame still
    // arriving, or one that moves the numbers, cannot send the line to another control; and the
    // answer names the control that was worked.
    bool act(const std::function<std::string()>& where, const std::string& shown, const std::string& verb,
             const std::string& answer, const std::string& rest = {}) {
        if (!settles([&] { return !numberIn(where(), shown).empty(); }) || !settled(std::chrono::milliseconds(600)))
            return false;
        const std::string number = numberIn(where(), shown);
        return !number.empty() && type(verb + " " + number + (rest.empty() ? "" : " " + rest), answer);
    }
    bool pressIn(const std::function<std::string()>& where, const std::string& title) {
        return act(where, "[" + title + "]", "press", "> Pressed " + title + ".");
    }
    // The end of what the program printed: enough for a failure's message to show the last frame.
    std::string tail(std::size_t size = 8000) const {
        return output_.size() > size ? output_.substr(output_.size() - size) : output_;
    }
    // Quits as the owner does; the secrets typed during the test are then nowhere: not in what the
    // program printed, not in any file under its home.
    void quitLeavingNothingOf(std::initializer_list<std::string> secrets) {
        ASSERT_TRUE(type("quit", "> Quitting;")) << tail();
        EXPECT_TRUE(finished());
        for (const auto& secret : secrets) {
            EXPECT_EQ(output_.find(secret), std::string::npos) << secret;
            EXPECT_EQ(errors_.find(secret), std::string::npos) << secret;
            EXPECT_FALSE(anyFileHas(secret)) << secret;
        }
    }

    // A file's bytes; nothing when it is not there (yet).
    static std::string contents(const std::filesystem::path& path) { return Files::read(path).value_or(""); }
    // Whether any file under the temporary home holds the text: where a typed secret must never be.
    bool anyFileHas(const std::string& text) const {
        std::error_code ec;
        for (auto it = std::filesystem::recursive_directory_iterator(home_.root, ec);
             it != std::filesystem::recursive_directory_iterator(); it.increment(ec)) {
            if (!it->is_regular_file(ec)) continue;
            std::ifstream in(it->path(), std::ios::binary);
            std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
            if (bytes.find(text) != std::string::npos) return true;
        }
        return false;
    }
    // Asks the simulator directly, with the key the bridge wrote.
    httplib::Result ask(const std::string& path, const std::optional<nlohmann::json>& body = std::nullopt) {
        std::ifstream file(home_.data() / "local.key");
        std::string key;
        std::getline(file, key);
        httplib::Client client("127.0.0.1", 8787);
        client.set_read_timeout(10);
        if (body) return client.Post(path, {{"X-Tulm-Local", key}}, body->dump(), "application/json");
        return client.Get(path, {{"X-Tulm-Local", key}});
    }
    // A read of the simulator's state; an empty object when it did not answer 200 with JSON.
    nlohmann::json read(const std::string& path) {
        auto answer = ask(path);
        return answer && answer->status == 200 ? nlohmann::json::parse(answer->body, nullptr, false)
                                               : nlohmann::json::object();
    }

    TempHome home_;
    QProcess program_;
    std::string output_;
    std::string errors_;
};

} // namespace orvan::test
