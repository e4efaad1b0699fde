// The compiled catalog against palettes.md, read here by a parser of its own: the generator and
// this test share no code, so a slip in either, or a hand edit of the generated table, shows.

#include "appearance/Colour.h"
#include "appearance/ThemeCatalog.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

using namespace orvan;

namespace {

using Cells = std::vector<std::string>;

// A table row's cells, without the quoting marks and the spaces around them.
Cells cellsOf(const std::string& line) {
    Cells cells;
    std::stringstream in(line);
    std::string cell;
    std::getline(in, cell, '|'); // before the first bar
    while (std::getline(in, cell, '|')) {
        std::string out;
        for (char c : cell)
            if (c != '`' && c != '"') out += c;
        const auto first = out.find_first_not_of(' ');
        cells.push_back(first == std::string::npos ? "" : out.substr(first, out.find_last_not_of(' ') - first + 1));
    }
    if (!cells.empty() && cells.back().empty()) cells.pop_back(); // after the last bar
    return cells;
}

// Each table by the first cells of its header, as lists of rows; the header is row 0.
std::map<std::string, std::vector<Cells>> readTables() {
    const auto file = std::filesystem::path(ORVAN_SOURCE_DIR) / "src/appearance/palettes.md";
    std::ifstream in(file);
    std::map<std::string, std::vector<Cells>> tables;
    std::vector<Cells>* current = nullptr;
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind("|", 0) != 0) {
            current = nullptr;
            continue;
        }
        if (line.rfind("|---", 0) == 0) continue;
        Cells cells = cellsOf(line);
        if (!current) current = &tables[cells.at(0) + "/" + cells.at(cells.size() > 2 ? 2 : 1)];
        current->push_back(std::move(cells));
    }
    return tables;
}

Rgb hexOf(const std::string& text) {
    EXPECT_EQ(text.size(), 6u) << text;
    EXPECT_EQ(text.find_first_not_of("0123456789abcdef"), std::string::npos) << text;
    return static_cast<Rgb>(std::stoul(text, nullptr, 16));
}

// Written out here rather than taken from the generator, so a swapped column can't agree with itself.
const std::map<std::string, Rgb ThemeTones::*>& fields() {
    static const std::map<std::string, Rgb ThemeTones::*> all = {
        {"bg", &ThemeTones::bg}, {"card", &ThemeTones::card}, {"well", &ThemeTones::well}, {"line", &ThemeTones::line},
        {"ink", &ThemeTones::ink}, {"dim", &ThemeTones::dim}, {"accent", &ThemeTones::accent}, {"steel", &ThemeTones::steel},
        {"good", &ThemeTones::good}, {"danger", &ThemeTones::danger}, {"onAccent", &ThemeTones::onAccent},
        {"surface2", &ThemeTones::surface2}, {"accentSoft", &ThemeTones::accentSoft}, {"dangerSoft", &ThemeTones::dangerSoft},
        {"codeBg", &ThemeTones::codeBg}, {"termBg", &ThemeTones::termBg}, {"termFg", &ThemeTones::termFg},
        {"termCursor", &ThemeTones::termCursor}, {"termSelection", &ThemeTones::termSelection},
        {"diffAdd", &ThemeTones::diffAdd}, {"diffDel", &ThemeTones::diffDel},
    };
    return all;
}

const ThemeTones& sideOf(const std::string& id, const std::string& side) {
    const ThemePalette* palette = ThemeCatalog::find(id);
    if (!palette) throw std::runtime_error("no palette " + id);
    if (side != "light" && side != "dark") throw std::runtime_error("no side " + side);
    return palette->side(side == "dark");
}

class Catalog : public ::testing::Test {
protected:
    std::map<std::string, std::vector<Cells>> tables = readTables();
};

TEST_F(Catalog, ListsThePalettesInTheTablesOrder) {
    const auto& order = tables["Order/name"];
    ASSERT_EQ(order.size(), 10u) << "a header and nine palettes";
    ASSERT_EQ(ThemeCatalog::all().size(), 9u);
    for (std::size_t i = 1; i < order.size(); ++i) {
        const auto& palette = ThemeCatalog::all()[i - 1];
        EXPECT_EQ(order[i][0], std::to_string(i));
        EXPECT_EQ(palette.id, order[i][1]);
        EXPECT_EQ(palette.name, order[i][2]);
        EXPECT_GT(palette.credit.size(), 10u) << palette.id << " needs a credit line";
    }
}

TEST_F(Catalog, EveryToneMatchesTheTable) {
    const auto& rows = tables["Palette/bg"];
    ASSERT_EQ(rows.size(), 19u) << "a header and two sides of nine palettes";
    const Cells& header = rows[0];
    ASSERT_EQ(header.size(), 23u);
    std::set<std::string> named;
    for (std::size_t c = 2; c < header.size(); ++c) {
        ASSERT_TRUE(fields().count(header[c])) << "unknown tone " << header[c];
        named.insert(header[c]);
    }
    EXPECT_EQ(named.size(), fields().size()) << "every tone has a column, once";

    std::set<std::string> sides;
    int compared = 0;
    for (std::size_t r = 1; r < rows.size(); ++r) {
        const Cells& row = rows[r];
        ASSERT_EQ(row.size(), header.size()) << row[0] << " " << row[1];
        EXPECT_TRUE(sides.insert(row[0] + "/" + row[1]).second) << "twice: " << row[0] << " " << row[1];
        const ThemeTones& tones = sideOf(row[0], row[1]);
        for (std::size_t c = 2; c < row.size(); ++c) {
            EXPECT_EQ(tones.*fields().at(header[c]), hexOf(row[c])) << row[0] << " " << row[1] << " " << header[c];
            ++compared;
        }
    }
    EXPECT_EQ(compared, 18 * 21);
}

TEST_F(Catalog, EveryTerminalColourMatchesTheTable) {
    const auto& rows = tables["Palette/ansi, colours 0 to 15"];
    ASSERT_EQ(rows.size(), 19u);
    std::set<std::string> sides;
    for (std::size_t r = 1; r < rows.size(); ++r) {
        const Cells& row = rows[r];
        ASSERT_EQ(row.size(), 3u);
        EXPECT_TRUE(sides.insert(row[0] + "/" + row[1]).second);
        std::stringstream in(row[2]);
        std::vector<Rgb> colours;
        for (std::string word; in >> word;) colours.push_back(hexOf(word));
        const ThemeTones& tones = sideOf(row[0], row[1]);
        ASSERT_EQ(colours.size(), 16u) << row[0] << " " << row[1];
        for (std::size_t i = 0; i < 16; ++i) EXPECT_EQ(tones.ansi[i], colours[i]) << row[0] << " " << row[1] << " #" << i;
    }
    EXPECT_EQ(sides.size(), 18u);
}

TEST(Contrast, MeasuresAsTheGuidelinesDo) {
    const struct {
        Rgb a, b;
        double ratio;
    } known[] = {
        {0x000000, 0xffffff, 21.0}, {0xffffff, 0x000000, 21.0}, {0x777777, 0x777777, 1.0}, {0x767676, 0xffffff, 4.54},
        {0x777777, 0xffffff, 4.48}, {0xff0000, 0xffffff, 4.00}, {0x0000ff, 0xffffff, 8.59}, {0x008000, 0xffffff, 5.14},
    };
    for (const auto& k : known)
        EXPECT_NEAR(Colour::contrast({k.a}, {k.b}), k.ratio, 0.01) << Colour{k.a}.hex() << " on " << Colour{k.b}.hex();
    EXPECT_EQ(Colour{0x0a0b0c}.hex(), "#0a0b0c");
}

} // namespace
