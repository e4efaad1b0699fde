#include "app/AppInfo.h"

#include <cstdio>
#include <cstring>

// The application shell (tray, main window, headless text view) arrives with the views; until
// then the program only says what it is.
int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--version") == 0) {
            std::printf("Orvan Companion %s (%s)\n", orvan::AppInfo::shortVersion, orvan::AppInfo::buildNumber);
            return 0;
        }
    }
    std::printf("Orvan Companion %s (%s): the window and the headless view are not built yet.\n",
                orvan::AppInfo::shortVersion, orvan::AppInfo::buildNumber);
    return 0;
}
