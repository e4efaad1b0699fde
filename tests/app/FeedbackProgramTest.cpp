// The real program, headless, against the simulator it launches as its own bridge on 8787: a
// report with two pictures goes through the relay and arrives exactly as its preview showed it;
// with the relay refusing, the report goes to a stand-in mail program with its pictures attached.
#include "DrivenProgram.h"
#include "feedback/Feedback.h"

#include <QByteArray>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using namespace test;
using nlohmann::json;
namespace fs = std::filesystem;

// A BMP picture of one colour, written by hand: the test needs no image library to make one.
void writeBmp(const fs::path& file, int width, int height, unsigned char shade) {
    const int row = (width * 3 + 3) / 4 * 4;
    const std::uint32_t data = static_cast<std::uint32_t>(row * height), size = 54 + data;
    std::string out = "BM";
    auto put = [&](std::uint32_t v, int bytes) {
        for (int i = 0; i < bytes; ++i) out += static_cast<char>((v >> (8 * i)) & 0xFF);
    };
    put(size, 4), put(0, 4), put(54, 4), put(40, 4), put(width, 4), put(height, 4), put(1, 2), put(24, 2);
    put(0, 4), put(data, 4), put(2835, 4), put(2835, 4), put(0, 4), put(0, 4);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) out += std::string{static_cast<char>(shade), static_cast<char>(x % 256), static_cast<char>(y % 256)};
        out += std::string(static_cast<std::size_t>(row - width * 3), '\0');
    }
    std::ofstream(file, std::ios::binary) << out;
}

class FeedbackProgram : public DrivenProgram {
protected:
    // Sharing is on, so Send goes to the relay; and a stand-in xdg-email first on PATH records its
    // arguments (NUL-separated, since the body has lines) and copies what it was asked to attach.
    void adjust(QProcessEnvironment& env) override {
        Files::write(home_.root / "config" / "orvan" / (std::string(ORVAN_BUNDLE_ID) + ".json"),
                     R"({"orvan.consent.on":true,"orvan.consent.answered":2})");
        const fs::path bin = home_.root / "bin";
        fs::create_directories(bin);
        const fs::path mail = bin / "xdg-email";
        const std::string record = (home_.root / "mail").string();
        std::ofstream(mail) << "#!/bin/sh\nmkdir -p '" << record << "/attached'\n"
                            << "for a in \"$@\"; do printf '%s\\0' \"$a\"; done > '" << record << "/argv.part'\n"
                            << "next=\nfor a in \"$@\"; do\n  if [ \"$next\" = attach ]; then cp \"$a\" '" << record
                            << "/attached/'; fi\n  next=; [ \"$a\" = --attach ] && next=attach\ndone\n"
                            << "mv '" << record << "/argv.part' '" << record << "/argv'\n";
        fs::permissions(mail, fs::perms::owner_all);
        env.insert("PATH", QString::fromStdString(bin.string()) + ":" + env.value("PATH"));
        env.remove("DISPLAY");
        env.remove("WAYLAND_DISPLAY");
    }
    std::vector<std::string> mailArguments() {
        std::vector<std::string> out;
        std::string all = contents(home_.root / "mail" / "argv");
        for (std::size_t start = 0, end; (end = all.find('\0', start)) != std::string::npos; start = end + 1)
            out.push_back(all.substr(start, end - start));
        return out;
    }
    bool addPicture(const fs::path& file, const std::string& shown) {
        return type("type \"Picture file\" " + file.string(), "> Typed into Picture file.") &&
               type("press \"Choose a file…\"", "> Pressed Choose a file…") &&
               waitUntil([&] { return saw(shown); }, 20s);
    }
};

TEST_F(FeedbackProgram, AReportWithPicturesArrivesAsPreviewedAndARefusedOneGoesByMail) {
    writeBmp(home_.root / "first.bmp", 900, 600, 40);
    writeBmp(home_.root / "second.bmp", 64, 48, 200);
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntil([&] { return saw("[Send feedback…]") && saw("Remote control is"); }, 40s)) << tail();

    ASSERT_TRUE(type("press \"Send feedback…\"", "> Pressed Send feedback…")) << tail();
    ASSERT_TRUE(waitUntil([&] { return saw("Bridge ") && saw("What happened"); }, 15s)) << tail();
    ASSERT_TRUE(type("type \"What happened\" The accounts list went blank after the lid closed",
                     "> Typed into What happened.")) << tail();
    ASSERT_TRUE(addPicture(home_.root / "first.bmp", "Picture 1")) << tail();
    ASSERT_TRUE(addPicture(home_.root / "second.bmp", "Picture 2")) << tail();
    ASSERT_TRUE(waitUntil([&] { return saw("Pictures: 2, "); }, 10s)) << tail();
    const std::size_t previewed = output_.rfind("Kind: Bug");

    ASSERT_TRUE(type("press \"Send to Linear\"", "> Pressed Send to Linear")) << tail();
    ASSERT_TRUE(waitUntil([&] { return saw("Sent to the developer's Linear. Thank you."); }, 20s)) << tail();
    const json reports = read("/companion/feedback").value("reports", json::array());
    ASSERT_EQ(reports.size(), 1u);
    const json& body = reports[0];
    EXPECT_EQ(body["kind"], "bug");
    EXPECT_EQ(body["text"], "The accounts list went blank after the lid closed");
    ASSERT_EQ(body["images"].size(), 2u);
    std::vector<FeedbackImage> images;
    for (const auto& image : body["images"]) {
        EXPECT_EQ(image["type"], "image/jpeg");
        const std::string bytes = QByteArray::fromBase64(QByteArray::fromStdString(image["data"])).toStdString();
        EXPECT_EQ(bytes.substr(0, 2), "\xFF\xD8");
        images.push_back({"", bytes});
    }
    // What arrived, drawn as the window draws it, is what the owner was shown before Send, line by line.
    const std::string preview = Feedback::preview(FeedbackKind::bug, body["device"], body["text"],
                                                  body["diagnostics"].get<std::string>(), images);
    std::size_t at = previewed;
    std::istringstream lines(preview);
    for (std::string line; std::getline(lines, line);) {
        if (line.empty()) continue;
        at = output_.find(line, at);
        ASSERT_NE(at, std::string::npos) << "not shown in order: " << line << "\n" << output_.substr(previewed);
    }
    EXPECT_NE(body["diagnostics"].get<std::string>().find("Bridge "), std::string::npos);

    // A second report while the relay has nowhere to file it: the refusal, then Mail by hand.
    ASSERT_TRUE(type("press Done", "> Pressed Done")) << tail();
    ASSERT_EQ(ask("/_sim/feedback", json{{"relay", "none"}})->status, 204);
    ASSERT_TRUE(type("press \"Send feedback…\"", "> Pressed Send feedback…")) << tail();
    ASSERT_TRUE(type("type \"What happened\" Second try", "> Typed into What happened.")) << tail();
    const std::size_t second = output_.size();
    ASSERT_TRUE(addPicture(home_.root / "second.bmp", "Picture 1")) << tail();
    ASSERT_TRUE(type("press \"Send to Linear\"", "> Pressed Send to Linear")) << tail();
    ASSERT_TRUE(waitUntil([&] { return saw("Feedback is not set up on the relay yet.", second); }, 20s)) << tail();
    ASSERT_TRUE(type("press \"Mail the developer instead\"", "> Pressed Mail the developer instead")) << tail();
    ASSERT_TRUE(waitUntil([&] { return saw("Opened in Mail, with the pictures. Send it from there.", second); }, 10s))
        << tail();
    ASSERT_TRUE(waitUntil([&] { return fs::exists(home_.root / "mail" / "argv"); }, 10s)) << errors_;
    const auto arguments = mailArguments();
    auto after = [&](const std::string& flag) {
        for (std::size_t i = 0; i + 1 < arguments.size(); ++i)
            if (arguments[i] == flag) return arguments[i + 1];
        return std::string();
    };
    EXPECT_EQ(after("--subject"), "Orvan feedback (Bug): Second try");
    EXPECT_EQ(after("--body").rfind("Kind: Bug\nFrom: ", 0), 0u) << after("--body");
    EXPECT_NE(after("--body").find("Second try\n\nDiagnostics:\n"), std::string::npos);
    EXPECT_EQ(fs::path(after("--attach")).filename(), "screenshot-1.jpg");
    EXPECT_EQ(arguments.back(), Feedback::mailAddress);
    const std::string attached = contents(home_.root / "mail" / "attached" / "screenshot-1.jpg");
    EXPECT_EQ(attached.substr(0, 2), "\xFF\xD8");
    EXPECT_EQ(read("/companion/feedback").value("reports", json::array()).size(), 1u);
}

} // namespace
} // namespace orvan
