#include "processing/Grading.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

#include "PixelFormats.h"
#include "io/Raster.h"
#include "terminal/Failure.h"
#include "terminal/Names.h"

namespace Korvex2::Tool {
namespace {

// Numbers between commas; nothing unless all of the text is that.
template <typename Number>
std::optional<std::vector<Number>> Numbers(const std::string& text) {
  std::vector<Number> numbers;
  const char* next = text.data();
  const char* const end = next + text.size();
  for (;;) {
    Number number{};
    const auto parsed = std::from_chars(next, end, number);
    if (parsed.ec != std::errc()) {
      return std::nullopt;
    }
    numbers.push_back(number);
    if (parsed.ptr == end) {
      return numbers;
    }
    if (*parsed.ptr != ',') {
      return std::nullopt;
    }
    next = parsed.ptr + 1;
  }
}

// --- Crop ----------------------------------------------------------------------------------------

Image Cropped(const Image& image, const Area& area) {
  const PixelFormatInfo& format = *FindPixelFormat(image.GetPixelFormat());
  if (area.x >= image.GetCols() || area.width > image.GetCols() - area.x ||
      area.y >= image.GetRows() || area.height > image.GetRows() - area.y) {
    throw Failure("--crop {},{},{},{} reaches out of a frame of {} x {} pixels", area.x, area.y,
                  area.width, area.height, image.GetCols(), image.GetRows());
  }
  const unsigned group = format.pixelsPerGroup;
  if (image.GetCols() % group != 0 || area.x % group != 0 || area.width % group != 0) {
    throw Failure("--crop of {} needs x, width and the frame's width to be multiples of {}",
                  format.name, group);
  }
  if (IsRaw(format.format) && (area.x % 2 != 0 || area.y % 2 != 0)) {
    throw Failure("--crop of a mosaic needs even x and y, which keep its tile");
  }
  Image result = NewImage(area.width, area.height, format, image.GetBayerTileFormat());
  const auto bytes = [&](std::size_t pixels) { return pixels / group * format.bytesPerGroup; };
  const unsigned char* source =
      image.GetData() + bytes(std::size_t{area.y} * image.GetCols() + area.x);
  unsigned char* destination = result.GetData();
  for (std::uint32_t y = 0; y < area.height; ++y) {
    std::memcpy(destination, source, bytes(area.width));
    source += bytes(image.GetCols());
    destination += bytes(area.width);
  }
  return result;
}

// --- Samples -------------------------------------------------------------------------------------

struct Samples {
  const Raster& raster;

  unsigned Colours() const { return raster.channels == 1 ? 1 : 3; }
  std::size_t Count() const { return std::size_t{raster.width} * raster.height; }
  std::size_t Levels() const { return raster.bytesPerSample == 1 ? 256 : 65536; }
  unsigned operator()(std::size_t pixel, unsigned channel) const {
    const unsigned char* sample =
        raster.Row(0) + (pixel * raster.channels + channel) * raster.bytesPerSample;
    return raster.bytesPerSample == 1 ? *sample : unsigned{sample[0]} << 8 | sample[1];
  }
};

using Histogram = std::vector<std::uint64_t>;

Histogram Count(const Samples& samples, unsigned channel) {
  Histogram histogram(samples.Levels());
  for (std::size_t i = 0; i < samples.Count(); ++i) {
    ++histogram[samples(i, channel)];
  }
  return histogram;
}

double Mean(const Histogram& histogram) {
  double sum = 0;
  double count = 0;
  for (std::size_t level = 0; level < histogram.size(); ++level) {
    sum += static_cast<double>(level) * static_cast<double>(histogram[level]);
    count += static_cast<double>(histogram[level]);
  }
  return sum / count;
}

std::array<double, 3> Gains(const std::optional<WhiteBalance>& balance,
                            const std::vector<Histogram>& histograms) {
  if (!balance) {
    return {1, 1, 1};
  }
  if (!balance->grey) {
    return balance->gains;
  }
  const double green = Mean(histograms[1]);
  std::array<double, 3> gains{};
  for (std::size_t channel = 0; channel < gains.size(); ++channel) {
    const double mean = Mean(histograms[channel]);
    gains[channel] = mean > 0 ? green / mean : 1;
  }
  return gains;
}

// A level after white balance, from 0 to 1.
double Balanced(std::size_t level, double gain, std::size_t levels) {
  return std::min(1.0, static_cast<double>(level) * gain / static_cast<double>(levels - 1));
}

// The least value that at least so many percent of all samples do not exceed.
double Percentile(const std::vector<std::pair<double, std::uint64_t>>& sorted, double percent) {
  std::uint64_t all = 0;
  for (const auto& [value, count] : sorted) {
    all += count;
  }
  const double wanted = static_cast<double>(all) * percent / 100;
  std::uint64_t passed = 0;
  for (const auto& [value, count] : sorted) {
    passed += count;
    if (passed != 0 && static_cast<double>(passed) >= wanted) {
      return value;
    }
  }
  return sorted.back().first;
}

struct Range {
  double low = 0;
  double high = 1;
};

Range RangeOf(const Stretch& stretch, const std::vector<Histogram>& histograms,
              const std::array<double, 3>& gains) {
  std::vector<std::pair<double, std::uint64_t>> values;
  for (std::size_t channel = 0; channel < histograms.size(); ++channel) {
    const Histogram& histogram = histograms[channel];
    for (std::size_t level = 0; level < histogram.size(); ++level) {
      if (histogram[level] != 0) {
        values.emplace_back(Balanced(level, gains[channel], histogram.size()), histogram[level]);
      }
    }
  }
  std::ranges::sort(values);
  const Range range{Percentile(values, stretch.low), Percentile(values, stretch.high)};
  return range.high > range.low ? range : Range{};  // nothing to tell apart
}

// What each level of a channel becomes, from 0 to 1.
std::vector<double> Table(std::size_t levels, double gain, const Range& range, double gamma) {
  std::vector<double> table(levels);
  for (std::size_t level = 0; level < levels; ++level) {
    const double value = (Balanced(level, gain, levels) - range.low) / (range.high - range.low);
    table[level] = std::pow(std::clamp(value, 0.0, 1.0), 1 / gamma);
  }
  return table;
}

void Store(double value, unsigned size, unsigned char* destination) {
  const auto level = static_cast<unsigned>(value * (size == 1 ? 255 : 65535) + 0.5);
  if (size == 2) {
    *destination++ = static_cast<unsigned char>(level >> 8);
  }
  *destination = static_cast<unsigned char>(level);
}

Raster Adjusted(const Raster& raster, const Grade& grade, unsigned bytesPerSample) {
  const Samples samples{raster};
  std::vector<Histogram> histograms;
  for (unsigned channel = 0; channel < samples.Colours(); ++channel) {
    histograms.push_back(Count(samples, channel));
  }
  const std::array<double, 3> gains = Gains(grade.whiteBalance, histograms);
  const Range range = grade.stretch ? RangeOf(*grade.stretch, histograms, gains) : Range{};
  std::vector<std::vector<double>> tables;
  for (unsigned channel = 0; channel < samples.Colours(); ++channel) {
    tables.push_back(Table(samples.Levels(), gains[channel], range, grade.gamma.value_or(1)));
  }
  if (raster.channels == 4) {
    tables.push_back(Table(samples.Levels(), 1, {}, 1));
  }

  Raster result(raster.width, raster.height, raster.channels, bytesPerSample);
  unsigned char* destination = result.Row(0);
  for (std::size_t i = 0; i < samples.Count(); ++i) {
    for (unsigned channel = 0; channel < raster.channels; ++channel) {
      Store(tables[channel][samples(i, channel)], bytesPerSample, destination);
      destination += bytesPerSample;
    }
  }
  return result;
}

}  // namespace

std::optional<Area> ParseCrop(const std::string& text) {
  if (text.empty()) {
    return std::nullopt;
  }
  const auto numbers = Numbers<std::uint32_t>(text);
  if (!numbers || numbers->size() != 4 || (*numbers)[2] == 0 || (*numbers)[3] == 0) {
    throw UsageFailure("--crop '{}' is no x,y,width,height in pixels, such as 100,50,640,480",
                       text);
  }
  return Area{(*numbers)[0], (*numbers)[1], (*numbers)[2], (*numbers)[3]};
}

std::optional<WhiteBalance> ParseWhiteBalance(const std::string& text) {
  if (text.empty()) {
    return std::nullopt;
  }
  if (text == "grey" || text == "gray") {
    return WhiteBalance{true, {}};
  }
  const auto numbers = Numbers<double>(text);
  if (!numbers || numbers->size() != 3 ||
      !std::ranges::all_of(*numbers, [](double gain) { return gain > 0 && gain <= 1000; })) {
    throw UsageFailure("--white-balance '{}' is neither grey nor r,g,b, such as 1.9,1,1.4", text);
  }
  return WhiteBalance{false, {(*numbers)[0], (*numbers)[1], (*numbers)[2]}};
}

std::optional<Stretch> ParseStretch(const std::string& text) {
  if (text.empty()) {
    return std::nullopt;
  }
  const auto numbers = Numbers<double>(text);
  if (!numbers || numbers->size() != 2 || !((*numbers)[0] >= 0) || !((*numbers)[1] <= 100) ||
      !((*numbers)[0] < (*numbers)[1])) {
    throw UsageFailure("--stretch '{}' is no low,high in percent, such as 0.5,99.5", text);
  }
  return Stretch{(*numbers)[0], (*numbers)[1]};
}

void RequireAdjustable(const Grade& grade, PixelFormat target) {
  const unsigned channels = IsRaw(target) ? 0 : RasterChannels(target);
  if (grade.Adjusts() && channels == 0) {
    throw UsageFailure(
        "--white-balance, --stretch and --gamma are for grey and colour of 8 and 16 bits, not {}; "
        "convert --to rgb8",
        NameOf(target));
  }
  if (grade.whiteBalance && channels == 1) {
    throw UsageFailure("--white-balance is for colour, not {}; convert --to rgb8", NameOf(target));
  }
}

PixelFormat FormatBeforeGrading(const Grade& grade, PixelFormat source, PixelFormat target) {
  if (!grade.Adjusts() || !IsDeep(source) || IsDeep(target)) {
    return target;
  }
  const unsigned channels = RasterChannels(target);
  return channels == 1   ? PIXEL_FORMAT_MONO16
         : channels == 3 ? PIXEL_FORMAT_RGB16
                         : PIXEL_FORMAT_BGRU16;
}

Image Graded(Image image, const Grade& grade, PixelFormat target) {
  if (grade.crop) {
    image = Cropped(image, *grade.crop);
  }
  if (!grade.Adjusts()) {
    return image;
  }
  return ToImage(Adjusted(ToRaster(image), grade, IsDeep(target) ? 2 : 1), FindPixelFormat(target),
                 NONE, "the frame");
}

}  // namespace Korvex2::Tool
