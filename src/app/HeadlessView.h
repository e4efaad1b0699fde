#pragma once
// The main window as text, for machines without a display: every time the rendering changes,
// a separator line and the new frame go to standard output.

#include "app/Companion.h"
#include "app/FrontEnd.h"
#include "foundation/Observable.h"

#include <QObject>
#include <QTimer>
#include <cstdio>
#include <string>

namespace orvan::app {

class HeadlessView final : public FrontEnd {
public:
    HeadlessView(Companion& companion, std::FILE* out);
    void launched(bool) override { renderNow(); }
    void requestRender();
    void renderNow();

private:
    Companion& companion_;
    std::FILE* out_;
    std::string last_;
    bool pending_ = false;
    QObject context_;
    QTimer tick_;
    Observable::Subscription subscription_;
    Observable::Subscription look_;
};

} // namespace orvan::app
