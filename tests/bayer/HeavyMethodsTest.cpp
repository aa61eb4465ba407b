/// The weighted directional filter and the directional filter against their formulas, written out
/// pixel by pixel over a mosaic that is mirrored without end.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "TestPictures.h"

namespace Korvex2::Bayer {
namespace {

int Mirrored(int i, int size) {
  const int period = 2 * (size - 1);
  const int within = ((i % period) + period) % period;
  return std::min(within, period - within);
}

class Reference {
 public:
  Reference(const Mosaic& mosaic, BayerPattern pattern, bool weighted)
      : m_mosaic(mosaic), m_pattern(pattern), m_weighted(weighted) {}

  Rgb Pixel(int y, int x) const {
    Rgb rgb{};
    for (std::size_t colour = 0; colour < 3; ++colour) {
      const double value =
          colour == 1 ? Green(y, x) : Green(y, x) - Full(y, x, static_cast<int>(colour));
      rgb[colour] = ColourAt(m_pattern, y & 1, x & 1) == static_cast<int>(colour)
                        ? m_mosaic.at(y, x)
                        : static_cast<std::uint16_t>(std::clamp(value, 0.0, 255.0) + 0.5);
    }
    return rgb;
  }

 private:
  double M(int y, int x) const {
    return m_mosaic.at(Mirrored(y, m_mosaic.rows), Mirrored(x, m_mosaic.cols));
  }
  int Colour(int y, int x) const { return ColourAt(m_pattern, y & 1, x & 1); }

  // Green minus colour along (dy, dx).
  double D(int y, int x, int dy, int dx) const {
    const double estimate = (2 * (M(y - dy, x - dx) + M(y + dy, x + dx)) - 2 * M(y, x) -
                             M(y - 2 * dy, x - 2 * dx) - M(y + 2 * dy, x + 2 * dx)) /
                            4;
    return Colour(y, x) == 1 ? -estimate : estimate;
  }
  double Changes(int y, int x, int dy, int dx, int reach) const {
    double sum = 0;
    for (int j = y - reach; j <= y + reach; ++j) {
      for (int i = x - reach; i <= x + reach; ++i) {
        sum += std::abs(D(j + dy, i + dx, dy, dx) - D(j - dy, i - dx, dy, dx));
      }
    }
    return sum;
  }
  // Weight of the neighbour at (dy, dx).
  double Weight(int y, int x, int dy, int dx) const {
    if (m_weighted) {
      return std::pow(1 + Changes(y + dy, x + dx, std::abs(dy), std::abs(dx), 1), -3);
    }
    const double along = Changes(y, x, 0, 1, 2);
    const double across = Changes(y, x, 1, 0, 2);
    if (along == across) return 0.25;
    return (along < across) == (dx != 0) ? 0.5 : 0;
  }
  // Green minus the sample's own colour, at red and blue.
  double Own(int y, int x) const {
    double sum = 0;
    double weights = 0;
    for (const auto& [dy, dx] : kSides) {
      const int ay = std::abs(dy);
      const int ax = std::abs(dx);
      const double far = D(y + 2 * dy, x + 2 * dx, ay, ax);
      const double near = D(y + dy, x + dx, ay, ax);
      const double arm = m_weighted ? 0.5 * D(y, x, ay, ax) + 0.4 * near + 0.1 * far
                                    : (0.5 * D(y, x, ay, ax) + 0.6 * near + 0.2 * far) / 1.3;
      const double w = Weight(y, x, dy, dx);
      sum += w * arm;
      weights += w;
    }
    return sum / weights;
  }
  double Green(int y, int x) const { return Colour(y, x) == 1 ? M(y, x) : M(y, x) + Own(y, x); }
  double Opposite(int y, int x) const {
    double sum = 0;
    double weights = 0;
    for (const int dy : {-1, 1}) {
      for (const int dx : {-1, 1}) {
        const double w = 1 / (1 + std::abs(Green(y, x) - Green(y + dy, x + dx)) +
                              std::abs(M(y + dy, x + dx) - M(y - dy, x - dx)));
        sum += w * Own(y + dy, x + dx);
        weights += w;
      }
    }
    return sum / weights;
  }
  // Green minus `wanted`, anywhere.
  double Full(int y, int x, int wanted) const {
    if (Colour(y, x) == wanted) return Own(y, x);
    if (Colour(y, x) != 1) return Opposite(y, x);
    double sum = 0;
    double weights = 0;
    for (const auto& [dy, dx] : kSides) {
      const double w = Weight(y, x, dy, dx);
      sum +=
          w * (Colour(y + dy, x + dx) == wanted ? Own(y + dy, x + dx) : Opposite(y + dy, x + dx));
      weights += w;
    }
    return sum / weights;
  }

  static constexpr int kSides[4][2] = {{-1, 0}, {1, 0}, {0, -1}, {0, 1}};
  const Mosaic& m_mosaic;
  BayerPattern m_pattern;
  bool m_weighted;
};

// The reference computes in doubles, so a value next to a half may be rounded the other way.
void ExpectAlike(const Mosaic& mosaic, BayerMethod method, BayerPattern pattern) {
  const Picture picture = Demosaiced(mosaic, {.method = method, .pattern = pattern});
  const Reference reference(mosaic, pattern, method == BAYER_METHOD_WEIGHTED_DIRECTIONAL_FILTER);
  int differing = 0;
  for (int y = 0; y < mosaic.rows; ++y) {
    for (int x = 0; x < mosaic.cols; ++x) {
      const Rgb wanted = reference.Pixel(y, x);
      for (std::size_t c = 0; c < 3; ++c) {
        const int off = std::abs(int{wanted[c]} - int{picture.at(y, x)[c]});
        EXPECT_LE(off, 1) << "row " << y << " column " << x << " colour " << c;
        differing += off;
      }
    }
  }
  EXPECT_LE(differing, mosaic.rows * mosaic.cols / 50);
}

class HeavyMethodsTest : public testing::TestWithParam<BayerMethod> {};

TEST_P(HeavyMethodsTest, FollowTheirFormula) {
  for (const BayerPattern pattern : kAllPatterns) {
    ExpectAlike(MosaicOf(Scene(18, 22, 7), pattern), GetParam(), pattern);
  }
  ExpectAlike(RandomMosaic(2, 2, 255, 3), GetParam(), BAYER_PATTERN_RGGB);
  ExpectAlike(RandomMosaic(12, 4, 255, 4), GetParam(), BAYER_PATTERN_GBRG);
}

INSTANTIATE_TEST_SUITE_P(Each, HeavyMethodsTest,
                         testing::Values(BAYER_METHOD_DIRECTIONAL_FILTER,
                                         BAYER_METHOD_WEIGHTED_DIRECTIONAL_FILTER),
                         [](const auto& info) { return MethodName(info.param); });

}  // namespace
}  // namespace Korvex2::Bayer
