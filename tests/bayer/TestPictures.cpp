#include "TestPictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace Korvex2::Bayer {

const char* MethodName(BayerMethod method) {
  constexpr const char* kNames[] = {"NearestNeighbor",   "EdgeSensing",         "HqLinear",
                                    "DirectionalFilter", "WeightedDirectional", "Rigorous"};
  return kNames[method];
}

int ChannelsOf(BayerPixelFormat format) {
  switch (format) {
    case BAYER_PIXEL_FORMAT_BGRU8:
    case BAYER_PIXEL_FORMAT_RGBU8:
    case BAYER_PIXEL_FORMAT_BGRU16:
    case BAYER_PIXEL_FORMAT_RGBU16:
      return 4;
    default:
      return 3;
  }
}

int ChannelBytesOf(BayerPixelFormat format) {
  switch (format) {
    case BAYER_PIXEL_FORMAT_BGR16:
    case BAYER_PIXEL_FORMAT_BGRU16:
    case BAYER_PIXEL_FORMAT_RGB16:
    case BAYER_PIXEL_FORMAT_RGBU16:
      return 2;
    default:
      return 1;
  }
}

bool BlueFirstIn(BayerPixelFormat format) {
  return format < BAYER_PIXEL_FORMAT_RGB8;
}

int ColourAt(BayerPattern pattern, int y, int x) {
  constexpr const char* kTiles[] = {"\0\1\1\2", "\1\0\2\1", "\1\2\0\1", "\2\1\1\0"};
  return kTiles[pattern][(y & 1) * 2 + (x & 1)];
}

Mosaic MosaicOf(const Picture& picture, BayerPattern pattern) {
  Mosaic mosaic(picture.rows, picture.cols);
  for (int y = 0; y < picture.rows; ++y) {
    for (int x = 0; x < picture.cols; ++x) {
      mosaic.at(y, x) = picture.at(y, x)[static_cast<std::size_t>(ColourAt(pattern, y, x))];
    }
  }
  return mosaic;
}

Bytes Encoded(const Mosaic& mosaic, BayerPixelFormat format) {
  const std::size_t bytesPerSample = format == BAYER_PIXEL_FORMAT_RAW16 ? 2 : 1;
  Bytes bytes(mosaic.samples.size() * bytesPerSample);
  unsigned char* out = bytes.data();
  for (const std::uint16_t sample : mosaic.samples) {
    *out++ = static_cast<unsigned char>(sample & 0xFF);
    if (bytesPerSample == 2) *out++ = static_cast<unsigned char>(sample >> 8);
  }
  return bytes;
}

std::size_t PictureBytes(int rows, int cols, BayerPixelFormat format) {
  return static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols) *
         static_cast<std::size_t>(ChannelsOf(format) * ChannelBytesOf(format));
}

Picture Decoded(const Bytes& bytes, int rows, int cols, BayerPixelFormat format) {
  Picture picture(rows, cols);
  const int channelBytes = ChannelBytesOf(format);
  const std::uint16_t opaque = channelBytes == 1 ? 0xFF : 0xFFFF;
  const unsigned char* in = bytes.data();
  for (Rgb& pixel : picture.pixels) {
    std::array<std::uint16_t, 4> channels = {0, 0, 0, opaque};
    for (int c = 0; c < ChannelsOf(format); ++c, in += channelBytes) {
      auto& channel = channels[static_cast<std::size_t>(c)];
      if (channelBytes == 1) {
        channel = *in;
      } else {
        std::memcpy(&channel, in, 2);
      }
    }
    pixel = {channels[0], channels[1], channels[2]};
    if (BlueFirstIn(format)) std::swap(pixel[0], pixel[2]);
    if (channels[3] != opaque) {
      ADD_FAILURE() << "alpha is " << channels[3];
      break;
    }
  }
  return picture;
}

Bytes DemosaicedBytes(const Mosaic& mosaic, const Call& call, unsigned char fill) {
  const Bytes in = Encoded(mosaic, call.input);
  Bytes out(PictureBytes(mosaic.rows, mosaic.cols, call.output), fill);
  const BayerError error = Demosaic({.inputFormat = call.input,
                                     .input = in.data(),
                                     .rows = mosaic.rows,
                                     .cols = mosaic.cols,
                                     .outputFormat = call.output,
                                     .output = out.data(),
                                     .method = call.method,
                                     .pattern = call.pattern},
                                    call.settings);
  EXPECT_EQ(error, beOK);
  return out;
}

Picture Demosaiced(const Mosaic& mosaic, const Call& call) {
  return Decoded(DemosaicedBytes(mosaic, call), mosaic.rows, mosaic.cols, call.output);
}

Mosaic RandomMosaic(int rows, int cols, std::uint16_t most, std::uint32_t seed) {
  std::mt19937 random(seed);
  Mosaic mosaic(rows, cols);
  for (auto& sample : mosaic.samples) {
    sample = static_cast<std::uint16_t>(random() % (unsigned{most} + 1));
  }
  return mosaic;
}

Mosaic ExtremeMosaic(int rows, int cols, std::uint16_t most, std::uint32_t seed) {
  std::mt19937 random(seed);
  Mosaic mosaic(rows, cols);
  for (auto& sample : mosaic.samples) sample = (random() & 1) ? most : 0;
  return mosaic;
}

namespace {

// Numbers from the bare generator, as the library's distributions differ between platforms.
class Dice {
 public:
  explicit Dice(std::uint32_t seed) : m_random(seed) {}
  double Between(double low, double high) {
    return low + (high - low) * (static_cast<double>(m_random()) / 4294967295.0);
  }

 private:
  std::mt19937 m_random;
};

struct Wave {
  double fy, fx, phase, amplitude;
  explicit Wave(Dice& dice, double frequency, double amplitude)
      : fy(frequency * std::sin(AngleOf(dice))),
        fx(0),
        phase(dice.Between(0, 6.2832)),
        amplitude(amplitude) {
    fx = std::sqrt(std::max(0.0, frequency * frequency - fy * fy));
  }
  static double AngleOf(Dice& dice) { return dice.Between(-1.5708, 1.5708); }
  double at(double y, double x) const {
    return amplitude * std::sin(6.2832 * (fy * y + fx * x) + phase);
  }
};

struct Disc {
  double y, x, radius, step;
  std::array<double, 3> tint;
  double Coverage(double py, double px) const {
    const double distance = std::sqrt((py - y) * (py - y) + (px - x) * (px - x));
    return std::clamp(0.5 + (radius - distance) / 1.2, 0.0, 1.0);
  }
};

}  // namespace

Picture Scene(int rows, int cols, std::uint32_t seed) {
  Dice dice(seed);
  std::vector<Wave> light;
  for (const double frequency : {0.01, 0.03, 0.06, 0.1, 0.16, 0.22, 0.28}) {
    light.emplace_back(dice, frequency, 0.6 / (0.03 + frequency));
  }
  std::vector<Wave> tints;
  for (int i = 0; i < 3; ++i) tints.emplace_back(dice, 0.02, 12.0);
  std::vector<Disc> discs;
  const double count = 0.006 * (rows + 20) * (cols + 20);
  for (int i = 0; i < static_cast<int>(count); ++i) {
    discs.push_back({.y = dice.Between(-10, rows + 10),
                     .x = dice.Between(-10, cols + 10),
                     .radius = dice.Between(1.5, 8),
                     .step = dice.Between(-45, 45),
                     .tint = {dice.Between(-15, 15), 0, dice.Between(-15, 15)}});
  }
  // Fine texture: noise, softened by averaging neighbours.
  const auto width = static_cast<std::size_t>(cols) + 1;
  std::vector<double> grain((static_cast<std::size_t>(rows) + 1) * width);
  for (double& value : grain) value = dice.Between(-14, 14);
  Picture picture(rows, cols);
  for (int y = 0; y < rows; ++y) {
    for (int x = 0; x < cols; ++x) {
      const std::size_t at = static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x);
      double luma =
          125 + (grain[at] + grain[at + 1] + grain[at + width] + grain[at + width + 1]) / 4;
      for (const Wave& wave : light) luma += wave.at(y, x);
      std::array<double, 3> colour{};
      for (const Disc& disc : discs) {
        const double part = disc.Coverage(y, x);
        luma += disc.step * part;
        for (std::size_t c = 0; c < 3; ++c) colour[c] += disc.tint[c] * part;
      }
      for (std::size_t c = 0; c < 3; ++c) {
        const double value = luma + colour[c] + tints[c].at(y, x);
        picture.at(y, x)[c] = static_cast<std::uint16_t>(std::clamp(value + 0.5, 0.0, 255.0));
      }
    }
  }
  return picture;
}

}  // namespace Korvex2::Bayer
