#pragma once
// The program's windows: each opens once, by its id.

namespace orvan::app::Scenes {

struct Scene {
    const char* id;
    const char* title;
    int minimumWidth, minimumHeight;
    int defaultWidth, defaultHeight;
};

inline constexpr Scene desk{"desk", "Remote control", 640, 780, 760, 920};
// Opened from the tray's "Send feedback…" once feedback can be sent.
inline constexpr Scene feedback{"feedback", "Send feedback", 520, 640, 640, 820};

} // namespace orvan::app::Scenes
