#pragma once
// The "Send feedback" window: the draft, its pictures, the preview of exactly what goes, and the
// ways it can go.

#include "feedback/FeedbackView.h"
#include "ui/Node.h"

#include <functional>

namespace orvan::FeedbackWindow {

ui::Node build(FeedbackView& view);

} // namespace orvan::FeedbackWindow
