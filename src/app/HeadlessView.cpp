#include "app/HeadlessView.h"

#include "app/TreeCommands.h"
#include "appearance/ThemeStore.h"
#include "phones/JoinWords.h"
#include "phones/OwnerSetupView.h"
#include "phones/OwnerSetupWords.h"
#include "feedback/FeedbackWindow.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace orvan::app {

namespace {

// A line longer than this is not a command anyone typed.
constexpr std::size_t maxLine = 64 * 1024;

std::vector<std::string> splitLines(const std::string& text) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < text.size()) {
        auto end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

std::string answer(const std::string& sentence) { return "> " + sentence + "\n"; }

} // namespace

HeadlessOptions HeadlessOptions::from(const QStringList& arguments) {
    HeadlessOptions options;
    options.quietFrames = arguments.contains(QStringLiteral("--quiet-frames"));
    options.invert = arguments.contains(QStringLiteral("--invert"));
    bool ok = false;
    const int columns = qEnvironmentVariable("COLUMNS").toInt(&ok);
    winsize size{};
    if (ok && columns > 0) options.width = columns;
    else if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) options.width = size.ws_col;
    return options;
}

HeadlessView::HeadlessView(Companion& companion, std::FILE* out, HeadlessOptions options)
    : companion_(companion), out_(out), options_(options) {
    subscription_ = companion_.bridge().observe([this] { requestRender(); });
    // A new status is drawn as soon as it is folded in, ahead of the join list's read.
    companion_.bridge().folded = [this] {
        if (!pending_) return;
        pending_ = false;
        renderNow();
    };
    accounts_ = companion_.accounts().observe([this] { requestRender(); });
    sandboxes_ = companion_.sandboxes().observe([this] { requestRender(); });
    tunnel_ = companion_.tunnel().observe([this] { requestRender(); });
    hosts_ = companion_.hosts().observe([this] { requestRender(); });
    joinView_ = companion_.joinView().observe([this] { requestRender(); });
    ownerSetup_ = companion_.ownerSetup().observe([this] { requestRender(); });
    ownerSetupButton_ = companion_.ownerSetupButton().observe([this] { requestRender(); });
    blocks_.view = this;
    companion_.bridge().joinWindow.attach(&blocks_);
    companion_.ownerSetup().attach(&blocks_);
    remotes_ = companion_.remotes().observe([this] { requestRender(); });
    look_ = ThemeStore::shared().observe([this] { requestRender(); });
    folders_ = companion_.folders().observe([this] { requestRender(); });
    files_ = companion_.files().observe([this] { requestRender(); });
    feedback_ = companion_.feedback().observe([this] { requestRender(); });
    // Words that move with the time alone ("ends in 2 hours") are drawn again when they change.
    wordsTimer_.setSingleShot(true);
    wordsTimer_.setTimerType(Qt::CoarseTimer);
    QObject::connect(&wordsTimer_, &QTimer::timeout, &context_, [this] { requestRender(); });
    // Commands arrive whenever the event loop is free; an input that ends or was never there
    // leaves the program running, as under a service manager.
    if (options_.readInput && ::fcntl(STDIN_FILENO, F_GETFD) != -1) {
        input_ = std::make_unique<QSocketNotifier>(STDIN_FILENO, QSocketNotifier::Read);
        QObject::connect(input_.get(), &QSocketNotifier::activated, &context_, [this] { readInput(); });
    }
}

HeadlessView::~HeadlessView() {
    companion_.bridge().folded = nullptr;
    companion_.bridge().joinWindow.attach(nullptr);
    companion_.ownerSetup().attach(nullptr);
    echo(true);
}

void HeadlessView::Blocks::present(WindowId window) {
    // A window that comes forward is one the owner looks at afresh: Approve waits its second again.
    if (window == WindowId::join) view->companion_.joinView().appeared();
    view->requestRender();
}

void HeadlessView::appendWindows(ui::Node& tree) {
    Bridge* bridge = &companion_.bridge();
    if (bridge->joinWindow.shown()) {
        tree.children.push_back(
            ui::section(JoinWords::windowTitle,
                        {companion_.joinView().build(companion_.clock().now()),
                         ui::button("Close", [this, bridge] {
                             bridge->joinWindow.closedByOwner();
                             requestRender();
                         }).key("joinWindow.close")})
                .key("joinWindow"));
    }
    if (OwnerSetupModel* model = companion_.ownerSetup().model())
        tree.children.push_back(ui::section(OwnerSetupWords::title, {OwnerSetupView::build(*model, companion_.place())})
                                    .key("ownerSetupWindow"));
}

void HeadlessView::requestRender() {
    if (pending_) return;
    pending_ = true;
    QTimer::singleShot(0, &context_, [this] {
        if (!pending_) return; // drawn already, when the status was folded in
        pending_ = false;
        renderNow();
    });
}

void HeadlessView::renderNow() {
    auto tree = std::make_unique<ui::Node>(
        companion_.buildDesk(ThemeStore::shared(), [this] { requestRender(); }, &wordsTimer_));
    // With no window to float in, the sharing bar heads the frame, its Stop button numbered with the rest.
    const auto& bar = companion_.bridge().sharingBar;
    if (bar.view() && !bar.drawnInWindow())
        tree->children.insert(tree->children.begin(), ui::section("", {bar.view()->build()}).key("sharingBar"));
    // The feedback window prints as a block of its own at the head of the frame while it is open;
    // closed, the menu's way to it stands at the foot, after every other control.
    if (companion_.feedback().isOpen) {
        tree->children.insert(tree->children.begin(), FeedbackWindow::build(companion_.feedback()));
    } else {
        Companion* companion = &companion_;
        tree->children.push_back(ui::section("", {ui::button("Send feedback…", [companion] { companion->openFeedback(); })
                                                      .key("feedback.open")})
                                     .key("menu"));
    }
    appendWindows(*tree);
    fitForText(*tree);
    ui::TextFrame frame = ui::TextRenderer(terminalText(options_.width, options_.invert)).frame(*tree);
    // The controls point into the tree they came from, so the two are replaced together.
    tree_ = std::move(tree);
    controls_ = std::move(frame.controls);
    if (frame.text == last_) return;
    if (options_.quietFrames) printChanges(frame.text);
    else print(frameHeading + frame.text);
    last_ = std::move(frame.text);
}

void HeadlessView::print(const std::string& text) {
    std::fputs(text.c_str(), out_);
    std::fflush(out_);
}

// The lines that went ("- ") and came ("+ "), along the longest run the frames share.
void HeadlessView::printChanges(const std::string& frame) {
    const auto before = splitLines(last_);
    const auto after = splitLines(frame);
    const std::size_t n = before.size(), m = after.size();
    std::string out;
    if (n * m > 4'000'000) {
        for (const auto& line : after) out += "+ " + line + "\n";
        print(out);
        return;
    }
    std::vector<std::vector<std::uint32_t>> common(n + 1, std::vector<std::uint32_t>(m + 1, 0));
    for (std::size_t i = n; i-- > 0;)
        for (std::size_t j = m; j-- > 0;)
            common[i][j] = before[i] == after[j] ? common[i + 1][j + 1] + 1 : std::max(common[i + 1][j], common[i][j + 1]);
    std::size_t i = 0, j = 0;
    while (i < n || j < m) {
        if (i < n && j < m && before[i] == after[j]) {
            ++i;
            ++j;
        } else if (i < n && (j == m || common[i + 1][j] >= common[i][j + 1])) {
            out += "- " + before[i++] + "\n";
        } else {
            out += "+ " + after[j++] + "\n";
        }
    }
    print(out);
}

CommandAnswer HeadlessView::perform(const std::string& line, bool fromTerminal) {
    const Performed performed = performLine(line, controls_, last_);
    if (const ui::Node* field = performed.secretFor) {
        if (!fromTerminal || !::isatty(STDIN_FILENO)) return {false, secretRefused(*field)};
        secretField_ = field->identity.empty() ? ui::controlTitle(*field) : field->identity;
        echo(false);
        return {true, answer("Type the text for " + ui::controlTitle(*field) + " and press Return; it will not show.")};
    }
    // The model moved: draw now, so the next command of a script sees the controls it opened.
    if (performed.acted) renderNow();
    return performed.answer;
}

void HeadlessView::echo(bool on) {
    if (!on) {
        termios quiet{};
        if (::tcgetattr(STDIN_FILENO, &savedTerminal_) != 0) return;
        quiet = savedTerminal_;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        echoOff_ = ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet) == 0;
    } else if (echoOff_) {
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &savedTerminal_);
        echoOff_ = false;
    }
}

void HeadlessView::readInput() {
    char buffer[4096];
    const ssize_t n = ::read(STDIN_FILENO, buffer, sizeof buffer);
    if (n < 0 && (errno == EINTR || errno == EAGAIN)) return;
    if (n <= 0) {
        // The input ended: nothing more will come, but the program goes on.
        input_->setEnabled(false);
        echo(true);
        return;
    }
    partial_.append(buffer, static_cast<std::size_t>(n));
    std::size_t start = 0;
    for (auto end = partial_.find('\n'); end != std::string::npos; end = partial_.find('\n', start)) {
        std::string line = partial_.substr(start, end - start);
        start = end + 1;
        if (skippingLongLine_) {
            skippingLongLine_ = false;
            continue;
        }
        inputLine(line);
        std::fill(line.begin(), line.end(), '\0');
    }
    std::fill(partial_.begin(), partial_.begin() + static_cast<std::ptrdiff_t>(start), '\0');
    partial_.erase(0, start);
    if (partial_.size() > maxLine) {
        // Not kept: it could be a secret pasted into the wrong place.
        std::fill(partial_.begin(), partial_.end(), '\0');
        partial_.clear();
        skippingLongLine_ = true;
        print(answer("That line is too long; it was left out."));
    }
}

void HeadlessView::inputLine(const std::string& line) {
    if (!secretField_.empty()) {
        const std::string wanted = std::exchange(secretField_, {});
        echo(true);
        std::string secret = line;
        if (!secret.empty() && secret.back() == '\r') secret.pop_back();
        const ui::Node* field = nullptr;
        for (const auto& control : controls_) {
            const ui::Node& node = *control.node;
            if (node.kind == ui::Kind::SecureField && control.number &&
                (node.identity == wanted || ui::controlTitle(node) == wanted))
                field = &node;
        }
        // The terminal did not echo the Return either.
        print("\n");
        if (!field) {
            print(answer("That field is gone; nothing was typed."));
        } else {
            const ui::Outcome outcome = ui::typeInto(*field, secret);
            renderNow();
            print(answer(outcome.answer));
        }
        std::fill(secret.begin(), secret.end(), '\0');
        return;
    }
    if (line.find_first_not_of(" \t\r") == std::string::npos) return;
    print(perform(line, true).text);
}

} // namespace orvan::app
