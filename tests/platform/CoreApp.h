#pragma once
// One QCoreApplication for the whole platform test program, made by whichever test needs it first.
#include <QCoreApplication>

namespace orvan::test {

inline QCoreApplication& coreApp() {
    static int argc = 1;
    static char name[] = "platform_tests";
    static char* argv[] = {name, nullptr};
    if (!QCoreApplication::instance()) new QCoreApplication(argc, argv);
    return *QCoreApplication::instance();
}

} // namespace orvan::test
