// The Qt Widgets renderer of view trees lives in this library.
namespace orvan::ui::qt {
int layerVersion() { return 1; }
} // namespace orvan::ui::qt
