#include "analysis/Quality.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <span>
#include <vector>

#include "PixelFormats.h"
#include "analysis/Planes.h"

namespace Korvex2::Tool {
namespace {

constexpr std::size_t kChannels = 3;

// Pictures are rgb8 or rgb16 here. Asked for each sample, so not of the table of formats.
bool HasWords(const Image& image) {
  return image.GetPixelFormat() == PIXEL_FORMAT_RGB16;
}

double PeakOf(const Image& image) {
  return HasWords(image) ? 65535 : 255;
}

unsigned SampleAt(const Image& image, std::size_t index) {
  if (!HasWords(image)) {
    return image.GetData()[index];
  }
  std::uint16_t word;
  std::memcpy(&word, image.GetData() + 2 * index, sizeof word);
  return word;
}

// Sum of the squared errors of a pixel's channels.
double ErrorAt(const Image& truth, const Image& picture, std::size_t pixel) {
  double sum = 0;
  for (std::size_t i = kChannels * pixel; i < kChannels * (pixel + 1); ++i) {
    const double difference =
        static_cast<double>(SampleAt(truth, i)) - static_cast<double>(SampleAt(picture, i));
    sum += difference * difference;
  }
  return sum;
}

// --- Structural similarity -----------------------------------------------------------------------

constexpr std::size_t kWindow = kSsimWindow;
constexpr double kSigma = 1.5;

using Weights = std::array<double, kWindow>;
using Line = std::vector<double>;

Weights GaussianWeights() {
  Weights weights;
  double sum = 0;
  for (std::size_t i = 0; i < kWindow; ++i) {
    const double distance = static_cast<double>(i) - (kWindow - 1) / 2.0;
    weights[i] = std::exp(-distance * distance / (2 * kSigma * kSigma));
    sum += weights[i];
  }
  for (double& weight : weights) {
    weight /= sum;
  }
  return weights;
}

// The part that counts of one channel of both pictures, of the rows around a window.
class Rows {
 public:
  explicit Rows(const ChannelPair& pair, std::size_t border)
      : m_pair(pair), m_border(border), m_width(pair.width - 2 * border) {}

  std::size_t width() const { return m_width; }

  // Row y of the part that counts; the last kWindow rows asked for are kept.
  void Load(std::size_t y) {
    const std::size_t first = (y + m_border) * m_pair.width + m_border;
    const auto copy = [&](std::span<const std::uint16_t> samples, Line& line) {
      const std::span<const std::uint16_t> row = samples.subspan(first, m_width);
      line.assign(row.begin(), row.end());
    };
    copy(m_pair.truth, m_lines[y % kWindow].truth);
    copy(m_pair.picture, m_lines[y % kWindow].picture);
  }

  const Line& truth(std::size_t y) const { return m_lines[y % kWindow].truth; }
  const Line& picture(std::size_t y) const { return m_lines[y % kWindow].picture; }

 private:
  struct Lines {
    Line truth, picture;
  };
  const ChannelPair& m_pair;
  std::size_t m_border;
  std::size_t m_width;
  std::array<Lines, kWindow> m_lines;
};

// Weighted means of a, b, a^2, b^2 and a b under the window.
struct Moments {
  Line a, b, aa, bb, ab;

  void Resize(std::size_t size) {
    for (Line* line : {&a, &b, &aa, &bb, &ab}) {
      line->assign(size, 0);
    }
  }
};

void WeighColumns(const Rows& rows, std::size_t top, const Weights& weights, Moments& moments) {
  moments.Resize(rows.width());
  for (std::size_t i = 0; i < kWindow; ++i) {
    const double* truth = rows.truth(top + i).data();
    const double* picture = rows.picture(top + i).data();
    for (std::size_t x = 0; x < rows.width(); ++x) {
      const double a = weights[i] * truth[x];
      const double b = weights[i] * picture[x];
      moments.a[x] += a;
      moments.b[x] += b;
      moments.aa[x] += a * truth[x];
      moments.bb[x] += b * picture[x];
      moments.ab[x] += a * picture[x];
    }
  }
}

double WeighRow(const Line& line, std::size_t x, const Weights& weights) {
  double sum = 0;
  for (std::size_t i = 0; i < kWindow; ++i) {
    sum += weights[i] * line[x + i];
  }
  return sum;
}

double SimilarityAt(const Moments& moments, std::size_t x, const Weights& weights, double peak) {
  const double c1 = 0.01 * peak * 0.01 * peak;
  const double c2 = 0.03 * peak * 0.03 * peak;
  const double a = WeighRow(moments.a, x, weights);
  const double b = WeighRow(moments.b, x, weights);
  const double varianceA = WeighRow(moments.aa, x, weights) - a * a;
  const double varianceB = WeighRow(moments.bb, x, weights) - b * b;
  const double covariance = WeighRow(moments.ab, x, weights) - a * b;
  return (2 * a * b + c1) * (2 * covariance + c2) /
         ((a * a + b * b + c1) * (varianceA + varianceB + c2));
}

double SsimInside(const ChannelPair& pair, std::size_t border) {
  const Weights weights = GaussianWeights();
  const std::size_t lastRow = pair.height - 2 * border;
  Rows rows(pair, border);
  Moments moments;
  double sum = 0;
  std::size_t count = 0;
  for (std::size_t y = 0; y < lastRow; ++y) {
    rows.Load(y);
    if (y + 1 < kWindow) {
      continue;
    }
    WeighColumns(rows, y + 1 - kWindow, weights, moments);
    for (std::size_t x = 0; x + kWindow <= rows.width(); ++x, ++count) {
      sum += SimilarityAt(moments, x, weights, pair.peak);
    }
  }
  return sum / static_cast<double>(count);
}

}  // namespace

double Psnr(double squaredErrors, double count, double peak) {
  return squaredErrors == 0 ? std::numeric_limits<double>::infinity()
                            : 10 * std::log10(peak * peak * count / squaredErrors);
}

std::string Decibels(double value) {
  return std::isinf(value) ? "inf" : fmt::format("{:.2f}", value);
}

double Cpsnr(const Image& truth, const Image& picture) {
  const std::size_t cols = truth.GetCols();
  double sum = 0;
  std::size_t count = 0;
  for (std::size_t y = kQualityBorder; y < truth.GetRows() - kQualityBorder; ++y) {
    for (std::size_t x = kQualityBorder; x < cols - kQualityBorder; ++x) {
      sum += ErrorAt(truth, picture, y * cols + x);
      count += kChannels;
    }
  }
  return Psnr(sum, static_cast<double>(count), PeakOf(truth));
}

double Ssim(const ChannelPair& pair) {
  return SsimInside(pair, 0);
}

double Ssim(const Image& truth, const Image& picture) {
  const std::vector<Plane> truths = PixelPlanesOf(truth);
  const std::vector<Plane> pictures = PixelPlanesOf(picture);
  double sum = 0;
  for (std::size_t i = 0; i < kChannels; ++i) {
    sum += SsimInside(
        {truths[i].samples, pictures[i].samples, truth.GetCols(), truth.GetRows(), PeakOf(truth)},
        kQualityBorder);
  }
  return sum / kChannels;
}

Area WorstArea(const Image& truth, const Image& picture, std::uint32_t side) {
  constexpr std::uint32_t kGrid = 8;
  const std::uint32_t width = std::min(side, truth.GetCols());
  const std::uint32_t height = std::min(side, truth.GetRows());
  const std::size_t columns = truth.GetCols() / kGrid;
  const std::size_t rows = truth.GetRows() / kGrid;
  Line cells(columns * rows, 0);
  for (std::size_t y = 0; y < rows * kGrid; ++y) {
    for (std::size_t x = 0; x < columns * kGrid; ++x) {
      cells[y / kGrid * columns + x / kGrid] += ErrorAt(truth, picture, y * truth.GetCols() + x);
    }
  }
  Area worst{0, 0, width, height};
  double most = -1;
  for (std::size_t top = 0; top + height / kGrid <= rows; ++top) {
    for (std::size_t left = 0; left + width / kGrid <= columns; ++left) {
      double sum = 0;
      for (std::size_t row = top; row < top + height / kGrid; ++row) {
        const auto begin = cells.begin() + static_cast<std::ptrdiff_t>(row * columns + left);
        sum = std::accumulate(begin, begin + width / kGrid, sum);
      }
      if (sum > most) {
        most = sum;
        worst.x = static_cast<std::uint32_t>(left) * kGrid;
        worst.y = static_cast<std::uint32_t>(top) * kGrid;
      }
    }
  }
  return worst;
}

}  // namespace Korvex2::Tool
