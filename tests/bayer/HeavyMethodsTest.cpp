/// The weighted directional filter and the directional filter against their formulas, written out
/// pixel by pixel over a mosaic that is mirrored without end.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "TestPictures.h"

namespace Korvex2::Bayer {
namespace {

int mirrored(int i, int size) {
  const int period = 2 * (size - 1);
  const int within = ((i % period) + period) % period;
  return std::min(within, period - within);
}

class Reference {
 public:
  Reference(const Mosaic& mosaic, BayerPattern pattern, bool weighted)
      : mosaic_(mosaic), pattern_(pattern), weighted_(weighted) {}

  Rgb pixel(int y, int x) const {
    Rgb rgb{};
    for (std::size_t colour = 0; colour < 3; ++colour) {
      const double value =
          colour == 1 ? green(y, x) : green(y, x) - full(y, x, static_cast<int>(colour));
      rgb[colour] = colourAt(pattern_, y & 1, x & 1) == static_cast<int>(colour)
                        ? mosaic_.at(y, x)
                        : static_cast<std::uint16_t>(std::clamp(value, 0.0, 255.0) + 0.5);
    }
    return rgb;
  }

 private:
  double m(int y, int x) const {
    return mosaic_.at(mirrored(y, mosaic_.rows), mirrored(x, mosaic_.cols));
  }
  int colour(int y, int x) const { return colourAt(pattern_, y & 1, x & 1); }

  // Green minus colour along (dy, dx).
  double d(int y, int x, int dy, int dx) const {
    const double estimate = (2 * (m(y - dy, x - dx) + m(y + dy, x + dx)) - 2 * m(y, x) -
                             m(y - 2 * dy, x - 2 * dx) - m(y + 2 * dy, x + 2 * dx)) /
                            4;
    return colour(y, x) == 1 ? -estimate : estimate;
  }
  double changes(int y, int x, int dy, int dx, int reach) const {
    double sum = 0;
    for (int j = y - reach; j <= y + reach; ++j) {
      for (int i = x - reach; i <= x + reach; ++i) {
        sum += std::abs(d(j + dy, i + dx, dy, dx) - d(j - dy, i - dx, dy, dx));
      }
    }
    return sum;
  }
  // Weight of the neighbour at (dy, dx).
  double weight(int y, int x, int dy, int dx) const {
    if (weighted_) {
      return std::pow(1 + changes(y + dy, x + dx, std::abs(dy), std::abs(dx), 1), -3);
    }
    const double along = changes(y, x, 0, 1, 2);
    const double across = changes(y, x, 1, 0, 2);
    if (along == across) return 0.25;
    return (along < across) == (dx != 0) ? 0.5 : 0;
  }
  // Green minus the sample's own colour, at red and blue.
  double own(int y, int x) const {
    double sum = 0;
    double weights = 0;
    for (const auto& [dy, dx] : kSides) {
      const int ay = std::abs(dy);
      const int ax = std::abs(dx);
      const double far = d(y + 2 * dy, x + 2 * dx, ay, ax);
      const double near = d(y + dy, x + dx, ay, ax);
      const double arm = weighted_ ? 0.5 * d(y, x, ay, ax) + 0.4 * near + 0.1 * far
                                   : (0.5 * d(y, x, ay, ax) + 0.6 * near + 0.2 * far) / 1.3;
      const double w = weight(y, x, dy, dx);
      sum += w * arm;
      weights += w;
    }
    return sum / weights;
  }
  double green(int y, int x) const { return colour(y, x) == 1 ? m(y, x) : m(y, x) + own(y, x); }
  double opposite(int y, int x) const {
    double sum = 0;
    double weights = 0;
    for (const int dy : {-1, 1}) {
      for (const int dx : {-1, 1}) {
        const double w = 1 / (1 + std::abs(green(y, x) - green(y + dy, x + dx)) +
                              std::abs(m(y + dy, x + dx) - m(y - dy, x - dx)));
        sum += w * own(y + dy, x + dx);
        weights += w;
      }
    }
    return sum / weights;
  }
  // Green minus `wanted`, anywhere.
  double full(int y, int x, int wanted) const {
    if (colour(y, x) == wanted) return own(y, x);
    if (colour(y, x) != 1) return opposite(y, x);
    double sum = 0;
    double weights = 0;
    for (const auto& [dy, dx] : kSides) {
      const double w = weight(y, x, dy, dx);
      sum +=
          w * (colour(y + dy, x + dx) == wanted ? own(y + dy, x + dx) : opposite(y + dy, x + dx));
      weights += w;
    }
    return sum / weights;
  }

  static constexpr int kSides[4][2] = {{-1, 0}, {1, 0}, {0, -1}, {0, 1}};
  const Mosaic& mosaic_;
  BayerPattern pattern_;
  bool weighted_;
};

// The reference computes in doubles, so a value next to a half may be rounded the other way.
void expectAlike(const Mosaic& mosaic, BayerMethod method, BayerPattern pattern) {
  const Picture picture = demosaiced(mosaic, {.method = method, .pattern = pattern});
  const Reference reference(mosaic, pattern, method == BAYER_METHOD_WEIGHTED_DIRECTIONAL_FILTER);
  int differing = 0;
  for (int y = 0; y < mosaic.rows; ++y) {
    for (int x = 0; x < mosaic.cols; ++x) {
      const Rgb wanted = reference.pixel(y, x);
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
    expectAlike(mosaicOf(scene(18, 22, 7), pattern), GetParam(), pattern);
  }
  expectAlike(randomMosaic(2, 2, 255, 3), GetParam(), BAYER_PATTERN_RGGB);
  expectAlike(randomMosaic(12, 4, 255, 4), GetParam(), BAYER_PATTERN_GBRG);
}

INSTANTIATE_TEST_SUITE_P(Each, HeavyMethodsTest,
                         testing::Values(BAYER_METHOD_DIRECTIONAL_FILTER,
                                         BAYER_METHOD_WEIGHTED_DIRECTIONAL_FILTER),
                         [](const auto& info) { return methodName(info.param); });

}  // namespace
}  // namespace Korvex2::Bayer
