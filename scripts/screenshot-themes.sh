#!/bin/sh
# Draws sample rows of the main window and the Appearance section under three palettes, light and
# dark, on the offscreen platform, and saves the pictures for people to look at. The same run
# checks the ground, the cards, a primary button and a link in each picture.
# Usage: scripts/screenshot-themes.sh [build folder] [out folder]
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build/dev}
out=${2:-$build/screenshots}
cmake --build "$build" --target ui_qt_tests -j2
mkdir -p "$out"
QT_QPA_PLATFORM=offscreen ORVAN_SCREENSHOTS=$(cd "$out" && pwd) \
    "$build/tests/ui_qt_tests" --gtest_filter='Ink.WindowsShowTheGroundAndTheCardsOfEverySideDrawn'
ls "$out"/themes-*.png
