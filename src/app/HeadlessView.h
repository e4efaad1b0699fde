#pragma once
// The main window as text, for machines without a display: every time the rendering changes,
// a separator line and the new frame go to standard output, with a number before every control.
// Commands on standard input (or handed over by `--send`) work those controls, so everything the
// window can do can be done over SSH or from a script.

#include "app/Companion.h"
#include "app/FrontEnd.h"
#include "foundation/Observable.h"
#include "platform/Presenter.h"
#include "ui/TextRenderer.h"

#include <QCoreApplication>
#include <QObject>
#include <QSocketNotifier>
#include <QStringList>
#include <QTimer>
#include <cstdio>
#include <memory>
#include <string>
#include <termios.h>
#include <vector>

namespace orvan::app {

struct HeadlessOptions {
    bool quietFrames = false; // only the lines that changed, for logs
    bool invert = false;      // codes for terminals with light text on a dark background
    int width = 80;
    bool readInput = true;

    static HeadlessOptions from(const QStringList& arguments);
};

class HeadlessView final : public FrontEnd {
public:
    HeadlessView(Companion& companion, std::FILE* out,
                 HeadlessOptions options = HeadlessOptions::from(QCoreApplication::arguments()));
    ~HeadlessView() override;
    void launched(bool) override { renderNow(); }
    CommandAnswer command(const std::string& line) override { return perform(line, false); }
    void requestRender();
    void renderNow();

private:
    CommandAnswer perform(const std::string& line, bool fromTerminal);
    void readInput();
    void inputLine(const std::string& line);
    void print(const std::string& text);
    void printChanges(const std::string& frame);
    void echo(bool on);

    Companion& companion_;
    std::FILE* out_;
    HeadlessOptions options_;
    std::string last_;
    std::unique_ptr<ui::Node> tree_;
    ui::Controls controls_;
    bool pending_ = false;
    QObject context_;
    QTimer wordsTimer_;
    Observable::Subscription subscription_;
    Observable::Subscription accounts_;
    Observable::Subscription sandboxes_;
    Observable::Subscription tunnel_;
    Observable::Subscription hosts_;
    // The join and owner setup windows print as blocks of their own after the main window.
    struct Blocks final : Presenter {
        HeadlessView* view = nullptr;
        void present(WindowId window) override;
        void dismiss(WindowId) override { view->requestRender(); }
    } blocks_;
    void appendWindows(ui::Node& tree);
    Observable::Subscription joinView_;
    Observable::Subscription ownerSetup_;
    Observable::Subscription ownerSetupButton_;
    Observable::Subscription remotes_;
    Observable::Subscription look_;
    Observable::Subscription folders_;
    Observable::Subscription files_;
    Observable::Subscription feedback_;

    std::unique_ptr<QSocketNotifier> input_;
    std::string partial_;
    bool skippingLongLine_ = false;
    // The secure field whose text the next line is, typed with echo off.
    std::string secretField_;
    bool echoOff_ = false;
    termios savedTerminal_{};
};

} // namespace orvan::app
