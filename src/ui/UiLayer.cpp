// The view vocabulary and its text renderer live in this library; the layer exists from the
// start so that the dependency order of the libraries is fixed before views arrive.
namespace orvan::ui {
int layerVersion() { return 1; }
} // namespace orvan::ui
