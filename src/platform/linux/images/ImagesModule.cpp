// The pictures module's one entry. The programs load it the first time the owner hands them a
// picture, so a machine that never sends one never maps Qt Gui and the libraries it brings.

#include "platform/linux/images/QtImages.h"

extern "C" __attribute__((visibility("default"))) orvan::Images* orvan_images_make() { return new orvan::QtImages(); }
