/// How close the methods come to the picture that the mosaic was made of.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

#include "TestPictures.h"

#if KORVEX2_TEST_PNG
#include <png.h>
#endif

namespace Korvex2::Bayer {
namespace {

// Squared errors of the three channels together.
class Error {
 public:
  void Add(const Rgb& a, const Rgb& b) {
    for (std::size_t c = 0; c < 3; ++c) {
      const double difference = static_cast<double>(a[c]) - static_cast<double>(b[c]);
      m_sum += difference * difference;
      ++m_count;
    }
  }
  double psnr() const { return 10 * std::log10(255.0 * 255.0 * m_count / m_sum); }

 private:
  double m_sum = 0;
  double m_count = 0;
};

// Pixels at each side that are the border; figures of quality commonly leave them out.
constexpr int kBorder = 10;

int DistanceToBorder(const Picture& picture, int y, int x) {
  return std::min(std::min(y, picture.rows - 1 - y), std::min(x, picture.cols - 1 - x));
}

double PsnrInside(const Picture& truth, const Picture& result) {
  Error error;
  for (int y = 0; y < truth.rows; ++y) {
    for (int x = 0; x < truth.cols; ++x) {
      if (DistanceToBorder(truth, y, x) >= kBorder) error.Add(truth.at(y, x), result.at(y, x));
    }
  }
  return error.psnr();
}

// Least mean CPSNR of the inside in dB, 8 bits, RGGB.
struct Floors {
  BayerMethod method;
  double scenes;
  double kodak;
};

constexpr Floors kFloors[] = {
    {BAYER_METHOD_NEAREST_NEIGHBOR, 30.4, 26.5},
    {BAYER_METHOD_EDGE_SENSING, 41.7, 37.0},
    {BAYER_METHOD_HQLINEAR, 41.2, 35.75},
    {BAYER_METHOD_DIRECTIONAL_FILTER, 43.0, 39.4},
    {BAYER_METHOD_WEIGHTED_DIRECTIONAL_FILTER, 43.8, 40.0},
    {BAYER_METHOD_RIGOROUS, 44.3, 40.8},
};

void PrintTo(const Floors& floors, std::ostream* out) {
  *out << MethodName(floors.method);
}

class QualityTest : public testing::TestWithParam<Floors> {
 protected:
  Picture Result(const Picture& truth) const {
    return Demosaiced(MosaicOf(truth, BAYER_PATTERN_RGGB), {.method = GetParam().method});
  }
};

TEST_P(QualityTest, Scenes) {
  constexpr int kScenes = 6;
  double sum = 0;
  for (std::uint32_t seed = 0; seed < kScenes; ++seed) {
    const Picture truth = Scene(160, 160, 61 + seed);
    sum += PsnrInside(truth, Result(truth));
  }
  std::cout << MethodName(GetParam().method) << ": " << sum / kScenes << " dB over scenes\n";
  EXPECT_GE(sum / kScenes, GetParam().scenes);
}

TEST_P(QualityTest, BordersAreAlmostAsGoodAsTheInside) {
  Error border;
  Error inside;
  for (std::uint32_t seed = 0; seed < 24; ++seed) {
    const Picture truth = Scene(96, 96, 100 + seed);
    const Picture picture = Result(truth);
    for (int y = 0; y < truth.rows; ++y) {
      for (int x = 0; x < truth.cols; ++x) {
        const bool atBorder = DistanceToBorder(truth, y, x) < kBorder;
        (atBorder ? border : inside).Add(truth.at(y, x), picture.at(y, x));
      }
    }
  }
  std::cout << MethodName(GetParam().method) << ": " << border.psnr() << " dB in the border, "
            << inside.psnr() << " dB inside\n";
  EXPECT_GE(border.psnr(), inside.psnr() - 1.5);
}

std::filesystem::path KodakFolder() {
  const char* const data = std::getenv("KORVEX2_DATA");
  return std::filesystem::path(data != nullptr ? data : KORVEX2_TEST_DATA) / "kodak";
}

#if KORVEX2_TEST_PNG
Picture ReadPng(const std::filesystem::path& path) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_file(&image, path.c_str())) {
    ADD_FAILURE() << path << ": " << image.message;
    return Picture(2, 2);
  }
  image.format = PNG_FORMAT_RGB;
  std::vector<unsigned char> bytes(PNG_IMAGE_SIZE(image));
  png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr);
  // Whole tiles only.
  Picture picture(static_cast<int>(image.height) & ~1, static_cast<int>(image.width) & ~1);
  for (int y = 0; y < picture.rows; ++y) {
    for (int x = 0; x < picture.cols; ++x) {
      const std::size_t at =
          (static_cast<std::size_t>(y) * image.width + static_cast<std::size_t>(x)) * 3;
      picture.at(y, x) = {bytes[at], bytes[at + 1], bytes[at + 2]};
    }
  }
  return picture;
}

TEST_P(QualityTest, Kodak) {
  double sum = 0;
  int count = 0;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(KodakFolder(), error)) {
    if (entry.path().extension() != ".png") continue;
    const Picture truth = ReadPng(entry.path());
    sum += PsnrInside(truth, Result(truth));
    ++count;
  }
  if (count == 0) {
    std::cerr << "SKIPPED: no pictures in " << KodakFolder()
              << "; set KORVEX2_DATA to the folder that holds kodak/\n";
    GTEST_SKIP() << "no pictures in " << KodakFolder();
  }
  std::cout << MethodName(GetParam().method) << ": " << sum / count << " dB over " << count
            << " pictures\n";
  EXPECT_GE(sum / count, GetParam().kodak);
}
#else
TEST_P(QualityTest, Kodak) {
  std::cerr << "SKIPPED: built without libpng, the Kodak pictures cannot be read\n";
  GTEST_SKIP() << "built without libpng";
}
#endif

INSTANTIATE_TEST_SUITE_P(Each, QualityTest, testing::ValuesIn(kFloors),
                         [](const auto& info) { return MethodName(info.param.method); });

}  // namespace
}  // namespace Korvex2::Bayer
