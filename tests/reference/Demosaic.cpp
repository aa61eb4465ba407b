#include "reference/Demosaic.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>

namespace Reference {
namespace {

// --- What the mosaic and the picture are, by the engine's numbers.

constexpr int kRaw16 = 1;

struct Layout {
  std::string_view channels;  // U: opaque
  int bytes;                  // of a channel
};

constexpr Layout kLayouts[] = {{"", 0},     {"", 0},    {"BGR", 1},  {"BGRU", 1}, {"BGR", 2},
                               {"BGRU", 2}, {"RGB", 1}, {"RGBU", 1}, {"RGB", 2},  {"RGBU", 2}};

// Row by row.
constexpr std::string_view kTiles[] = {"RGGB", "GRBG", "GBRG", "BGGR"};

/// A mosaic without end: mirrored about its edge samples, as often as it takes.
struct Mosaic {
  const std::uint8_t* bytes;
  int rows;
  int cols;
  std::string_view tile;
  bool words;  // low byte first
  int scale;
  double white;

  char Colour(int y, int x) const { return tile[static_cast<std::size_t>((y & 1) * 2 + (x & 1))]; }

  /// The sample, scaled to the depth of the work. Doubles, as quotients by powers of two stay
  /// exact.
  double At(int y, int x) const {
    const std::size_t i =
        static_cast<std::size_t>(Mirrored(y, rows)) * static_cast<std::size_t>(cols) +
        static_cast<std::size_t>(Mirrored(x, cols));
    return scale * (words ? bytes[2 * i] + 256 * bytes[2 * i + 1] : bytes[i]);
  }

  /// To the nearest, halves upwards; then into the range of the samples.
  double Rounded(double value) const { return std::clamp(std::floor(value + 0.5), 0.0, white); }

 private:
  static int Mirrored(int position, int size) {
    while (position < 0 || position >= size) {
      position = position < 0 ? -position : 2 * (size - 1) - position;
    }
    return position;
  }
};

// --- The methods: the value of a colour at a place of the picture, not yet rounded.

// The tile's red and blue; the green of the pixel's own row.
double NearestNeighbour(const Mosaic& mosaic, int y, int x, char wanted) {
  const int tileY = y / 2 * 2;
  const int tileX = x / 2 * 2;
  for (const int row : {y, tileY, tileY + 1}) {
    for (const int col : {tileX, tileX + 1}) {
      if (mosaic.Colour(row, col) == wanted) return mosaic.At(row, col);
    }
  }
  return -1;
}

// Green at red or blue from the samples along one direction, and how much they change.
struct Estimate {
  double green;
  double change;
};

Estimate Along(const Mosaic& mosaic, int y, int x, int dy, int dx) {
  const double c1 = mosaic.At(y - 2 * dy, x - 2 * dx);
  const double g1 = mosaic.At(y - dy, x - dx);
  const double c = mosaic.At(y, x);
  const double g2 = mosaic.At(y + dy, x + dx);
  const double c2 = mosaic.At(y + 2 * dy, x + 2 * dx);
  return {(g1 + g2) / 2 + (2 * c - c1 - c2) / 4, std::abs(g1 - g2) + std::abs(2 * c - c1 - c2)};
}

// Hamilton and Adams; rounded.
double Green(const Mosaic& mosaic, int y, int x) {
  if (mosaic.Colour(y, x) == 'G') return mosaic.At(y, x);
  const Estimate row = Along(mosaic, y, x, 0, 1);
  const Estimate column = Along(mosaic, y, x, 1, 0);
  const double green = row.change < column.change   ? row.green
                       : column.change < row.change ? column.green
                                                    : (row.green + column.green) / 2;
  return mosaic.Rounded(green);
}

// Red and blue: green plus the mean difference to green at the nearest places of the colour, the
// neighbours at sides or corners that have it.
double EdgeSensing(const Mosaic& mosaic, int y, int x, char wanted) {
  if (wanted == mosaic.Colour(y, x)) return mosaic.At(y, x);
  if (wanted == 'G') return Green(mosaic, y, x);
  double sum = 0;
  int count = 0;
  for (int j = y - 1; j <= y + 1; ++j) {
    for (int i = x - 1; i <= x + 1; ++i) {
      if (mosaic.Colour(j, i) != wanted) continue;
      sum += mosaic.At(j, i) - Green(mosaic, j, i);
      ++count;
    }
  }
  return Green(mosaic, y, x) + sum / count;
}

using Filter = double[5][5];

// The filters of Malvar, He and Cutler, in eighths as they published them.
constexpr Filter kGreenAtColour = {
    {0, 0, -1, 0, 0}, {0, 0, 2, 0, 0}, {-1, 2, 4, 2, -1}, {0, 0, 2, 0, 0}, {0, 0, -1, 0, 0}};
constexpr Filter kRowColourAtGreen = {
    {0, 0, 0.5, 0, 0}, {0, -1, 0, -1, 0}, {-1, 4, 5, 4, -1}, {0, -1, 0, -1, 0}, {0, 0, 0.5, 0, 0}};
constexpr Filter kColumnColourAtGreen = {
    {0, 0, -1, 0, 0}, {0, -1, 4, -1, 0}, {0.5, 0, 5, 0, 0.5}, {0, -1, 4, -1, 0}, {0, 0, -1, 0, 0}};
constexpr Filter kOppositeAtColour = {{0, 0, -1.5, 0, 0},
                                      {0, 2, 0, 2, 0},
                                      {-1.5, 0, 6, 0, -1.5},
                                      {0, 2, 0, 2, 0},
                                      {0, 0, -1.5, 0, 0}};

const Filter& FilterFor(const Mosaic& mosaic, int y, int x, char wanted) {
  if (mosaic.Colour(y, x) != 'G') return wanted == 'G' ? kGreenAtColour : kOppositeAtColour;
  return mosaic.Colour(y, x + 1) == wanted ? kRowColourAtGreen : kColumnColourAtGreen;
}

double HqLinear(const Mosaic& mosaic, int y, int x, char wanted) {
  if (wanted == mosaic.Colour(y, x)) return mosaic.At(y, x);
  const Filter& filter = FilterFor(mosaic, y, x, wanted);
  double sum = 0;
  for (int j = 0; j < 5; ++j) {
    for (int i = 0; i < 5; ++i) sum += filter[j][i] * mosaic.At(y + j - 2, x + i - 2);
  }
  return sum / 8;
}

using Method = double (*)(const Mosaic& mosaic, int y, int x, char wanted);
constexpr Method kMethods[] = {NearestNeighbour, EdgeSensing, HqLinear};

// In the order in which the engine promises to look for them.
enum Answer { kOk = 0, kOddRows = 2, kOddCols = 3, kInvalidPattern = 4, kFailed = 5 };

Answer AnswerTo(int inputFormat, const std::uint8_t* input, int rows, int cols, int outputFormat,
                const std::uint8_t* output, int pattern) {
  if (rows < 0 || cols < 0) return kFailed;
  if (inputFormat < 0 || inputFormat > kRaw16) return kInvalidPattern;
  if (outputFormat <= kRaw16 || outputFormat > 9) return kInvalidPattern;
  if (pattern < 0 || pattern > 3) return kInvalidPattern;
  if (rows == 0 || cols == 0) return kOk;
  if (rows % 2 != 0) return kOddRows;
  if (cols % 2 != 0) return kOddCols;
  return input == nullptr || output == nullptr ? kFailed : kOk;
}

}  // namespace

bool DefinesMethod(int method) {
  return method >= 0 && method < static_cast<int>(std::size(kMethods));
}

int DemosaicByDefinition(int inputFormat, const std::uint8_t* input, int rows, int cols,
                         int outputFormat, std::uint8_t* output, int method, int pattern) {
  if (!DefinesMethod(method)) return kFailed;
  const Answer answer = AnswerTo(inputFormat, input, rows, cols, outputFormat, output, pattern);
  if (answer != kOk || rows == 0 || cols == 0) return answer;

  // The work is done in 8 bits between 8 and 8 bits, else in 16.
  const Layout& layout = kLayouts[outputFormat];
  const bool words = inputFormat == kRaw16;
  const bool deep = words || layout.bytes == 2;
  const Mosaic mosaic = {.bytes = input,
                         .rows = rows,
                         .cols = cols,
                         .tile = kTiles[pattern],
                         .words = words,
                         .scale = deep && !words ? 257 : 1,
                         .white = deep ? 65535.0 : 255.0};
  for (int y = 0; y < rows; ++y) {
    for (int x = 0; x < cols; ++x) {
      for (const char channel : layout.channels) {
        const double value =
            channel == 'U' ? mosaic.white : mosaic.Rounded(kMethods[method](mosaic, y, x, channel));
        const auto word = static_cast<std::uint16_t>(value);
        if (layout.bytes == 2) {
          std::memcpy(output, &word, 2);  // a word of the host
        } else {
          *output = static_cast<std::uint8_t>(deep ? word / 256 : word);
        }
        output += layout.bytes;
      }
    }
  }
  return kOk;
}

}  // namespace Reference
