#include "BayerNames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <string>

#include "PixelFormats.h"

namespace Korvex2::Test {
namespace {

TEST(BayerNames, EveryTileAndMethodIsFoundByItsNameInAnyCase) {
  std::set<BayerTileFormat> tiles;
  for (const BayerTileInfo& row : BayerTiles()) {
    std::string shouted(row.name);
    for (char& c : shouted) c = static_cast<char>(std::toupper(c));
    EXPECT_EQ(FindBayerTile(row.name), row.tile);
    EXPECT_EQ(FindBayerTile(shouted), row.tile);
    tiles.insert(row.tile);
  }
  EXPECT_EQ(tiles, (std::set{NONE, RGGB, GRBG, GBRG, BGGR}));

  std::set<ColorProcessingAlgorithm> methods;
  for (const ColorProcessingInfo& row : ColorProcessings()) {
    EXPECT_EQ(FindColorProcessing(row.name), row.method);
    methods.insert(row.method);
  }
  EXPECT_EQ(methods, (std::set{DEFAULT, NO_COLOR_PROCESSING, NEAREST_NEIGHBOR, EDGE_SENSING,
                               HQ_LINEAR, RIGOROUS, DIRECTIONAL_FILTER}));
}

TEST(BayerNames, OtherNamesAreNotFound) {
  for (const char* name : {"", "rgg", "rggbx", "RGBG", " none"}) {
    EXPECT_FALSE(FindBayerTile(name)) << name;
    EXPECT_FALSE(FindColorProcessing(name)) << name;
  }
}

TEST(BayerNames, AliasesOfRawFormatsSayTheTile) {
  EXPECT_EQ(TileInFormatName("BayerRG8"), RGGB);
  EXPECT_EQ(TileInFormatName("BAYERGR12PACKED"), GRBG);
  EXPECT_EQ(TileInFormatName("bayer_gbrg16le"), GBRG);
  EXPECT_EQ(TileInFormatName("BA81"), BGGR);
  EXPECT_EQ(TileInFormatName("raw8"), std::nullopt);
  EXPECT_EQ(TileInFormatName("bayer8"), std::nullopt);
  EXPECT_EQ(TileInFormatName(""), std::nullopt);
}

TEST(BayerNames, NoNameOfAnotherFormatSaysATile) {
  for (const PixelFormatInfo& format : PixelFormats()) {
    const bool raw = format.name.starts_with("raw");
    std::string_view names = format.aliases;
    while (!raw && !names.empty()) {
      const std::string_view name = names.substr(0, names.find(' '));
      EXPECT_EQ(TileInFormatName(name), std::nullopt) << name;
      names.remove_prefix(std::min(name.size() + 1, names.size()));
    }
  }
}

}  // namespace
}  // namespace Korvex2::Test
