#include "analysis/Candidates.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <numeric>
#include <span>
#include <utility>

#include "analysis/CodeLength.h"
#include "analysis/Planes.h"
#include "io/Headerless.h"
#include "terminal/Names.h"

namespace Korvex2::Tool {
namespace {

// By a number, equal ones as they came. (The standard library's stable sort allots memory in a way
// that clang calls deprecated.)
template <typename Row, typename Number>
std::vector<Row> Ascending(std::vector<Row> rows, Number number) {
  std::vector<std::pair<double, std::size_t>> order;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    order.emplace_back(number(rows[i]), i);
  }
  std::ranges::sort(order);
  std::vector<Row> sorted;
  for (const auto& [value, at] : order) {
    sorted.push_back(std::move(rows[at]));
  }
  return sorted;
}

// --- What is looked at
// -----------------------------------------------------------------------------

struct Piece {
  const unsigned char* data;
  std::size_t first;  // its place in the file
  std::size_t size;
};

// The whole file, or pieces spread over it that begin with a whole group of every format.
std::vector<Piece> PiecesOf(const Bytes& file) {
  constexpr std::size_t kPieces = 4;
  constexpr std::size_t kPieceSize = 1U << 18;
  constexpr std::size_t kGroup = 24;
  if (file.size <= kPieces * kPieceSize) {
    return {{file.data.get(), 0, file.size}};
  }
  std::vector<Piece> pieces;
  for (std::size_t i = 0; i < kPieces; ++i) {
    const std::size_t first = (file.size - kPieceSize) / (kPieces - 1) * i / kGroup * kGroup;
    pieces.push_back({file.data.get() + first, first, kPieceSize});
  }
  return pieces;
}

struct Channel {
  char name;
  std::uint32_t pixelsPerSample;
  Samples samples;
};

std::vector<Channel> ChannelsOf(const PixelFormatInfo& format, std::span<const Piece> pieces) {
  std::vector<Channel> channels;
  for (const Piece& piece : pieces) {
    std::vector<Plane> planes = PlanesOf(format, piece.data, piece.size / format.bytesPerGroup);
    channels.resize(planes.size());
    for (std::size_t i = 0; i < planes.size(); ++i) {
      channels[i].name = planes[i].channel;
      channels[i].pixelsPerSample = planes[i].pixelsPerSample;
      channels[i].samples.depth = format.bitsPerSample;
      channels[i].samples.pieces.push_back(std::move(planes[i].samples));
    }
  }
  return channels;
}

// Red and blue as what they differ from green by, with no difference in the middle of the range.
void SubtractGreen(std::vector<Channel>& channels) {
  const auto green = std::ranges::find(channels, 'G', &Channel::name);
  if (green == channels.end()) {
    return;
  }
  const unsigned middle = 1U << (green->samples.depth - 1);
  for (Channel& channel : channels) {
    if (channel.name != 'R' && channel.name != 'B') {
      continue;
    }
    for (std::size_t n = 0; n < channel.samples.pieces.size(); ++n) {
      const std::vector<std::uint16_t>& greens = green->samples.pieces[n];
      std::vector<std::uint16_t>& samples = channel.samples.pieces[n];
      for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] =
            static_cast<std::uint16_t>((samples[i] - greens[i] + middle) & (2 * middle - 1));
      }
    }
  }
}

// --- How well a width explains it
// --------------------------------------------------------------------

// The channels as they are to be coded: without low bits that say nothing, such as those of 8 or 12
// bits in a word.
std::vector<Channel> ToCode(std::vector<Channel> channels) {
  const unsigned low = channels.front().samples.depth - 8;
  const bool drop = low > 0 && std::ranges::all_of(channels, [low](const Channel& channel) {
                      return LowBitsFollow(channel.samples, low);
                    });
  if (drop) {
    for (Channel& channel : channels) {
      channel.samples.depth = 8;
      for (std::vector<std::uint16_t>& piece : channel.samples.pieces) {
        for (std::uint16_t& sample : piece) {
          sample = static_cast<std::uint16_t>(sample >> low);
        }
      }
    }
  }
  SubtractGreen(channels);
  return channels;
}

Neighbours NeighboursOf(const PixelFormatInfo& format) {
  return IsRaw(format.format) ? Neighbours::Mosaic : Neighbours::Adjacent;
}

// Where the groups of chroma of one row do not lie below those of the row above, a row further up
// may predict them better.
double BitsPerSampleOf(const Channel& channel, Neighbours neighbours, std::uint32_t width) {
  const std::uint32_t group = channel.pixelsPerSample;
  const std::size_t nearest = std::max(1U, (width + group / 2) / group);
  const double bits = BitsPerSample(channel.samples, neighbours, nearest);
  const std::uint32_t aligned = width / std::gcd(width, group);
  return width % group == 0 ? bits
                            : std::min(bits, BitsPerSample(channel.samples, neighbours, aligned));
}

double BitsPerPixel(const std::vector<Channel>& channels, Neighbours neighbours,
                    std::uint32_t width) {
  double bits = 0;
  for (const Channel& channel : channels) {
    bits += BitsPerSampleOf(channel, neighbours, width) / channel.pixelsPerSample;
  }
  return bits;
}

// --- Shapes that fit
// ---------------------------------------------------------------------------------

struct Shape {
  std::uint32_t width;
  std::uint32_t height;
  bool isWhole;  // ends with a whole group of pixels
  bool isCommon;
};

// Longer side by shorter one.
double Elongation(const Shape& shape) {
  const double ratio = static_cast<double>(shape.width) / shape.height;
  return std::max(ratio, 1 / ratio);
}

void AddShape(std::uint64_t width, std::uint64_t height, bool isWhole, const Known& known,
              std::vector<Shape>& shapes) {
  constexpr std::uint64_t kMost = 0xffffffff;
  if (width > kMost || height > kMost || known.width.value_or(width) != width ||
      known.height.value_or(height) != height) {
    return;
  }
  const auto columns = static_cast<std::uint32_t>(width);
  const auto rows = static_cast<std::uint32_t>(height);
  shapes.push_back({columns, rows, isWhole, IsCommonSize(columns, rows)});
}

// Every width and height whose frame has the size of the file.
std::vector<Shape> ShapesOf(const PixelFormatInfo& format, std::uint64_t size, const Known& known) {
  std::vector<Shape> shapes;
  const std::uint64_t about = size * 8 / format.bitsPerPixel;
  const std::uint64_t group = format.pixelsPerGroup;
  for (std::uint64_t pixels = about - std::min(about, group); pixels <= about + group; ++pixels) {
    if (pixels == 0 ||
        (GroupedSize(format, pixels) != size && PackedSize(format, pixels) != size)) {
      continue;
    }
    for (std::uint64_t side = 1; side * side <= pixels; ++side) {
      if (pixels % side == 0) {
        AddShape(side, pixels / side, pixels % group == 0, known, shapes);
        if (side != pixels / side) {
          AddShape(pixels / side, side, pixels % group == 0, known, shapes);
        }
      }
    }
  }
  return shapes;
}

// Strips are left out where there is anything else.
void DropStrips(std::vector<Shape>& shapes) {
  constexpr double kMost = 12;
  const auto isStrip = [](const Shape& shape) { return Elongation(shape) > kMost; };
  if (!std::ranges::all_of(shapes, isStrip)) {
    std::erase_if(shapes, isStrip);
  }
}

// The widths whose rows resemble each other most, and all of common sizes.
std::vector<Shape> MostAlike(std::vector<Shape> shapes, const std::vector<Channel>& channels,
                             Neighbours neighbours) {
  constexpr std::size_t kKept = 8;
  const auto full = std::ranges::find(channels, 1U, &Channel::pixelsPerSample);
  std::vector<std::pair<double, Shape>> ranked;
  for (const Shape& shape : shapes) {
    ranked.emplace_back(RowDifference(full->samples, neighbours, shape.width), shape);
  }
  ranked = Ascending(std::move(ranked), [](const auto& row) { return row.first; });
  shapes.clear();
  for (std::size_t i = 0; i < ranked.size(); ++i) {
    if (i < kKept || ranked[i].second.isCommon) {
      shapes.push_back(ranked[i].second);
    }
  }
  return shapes;
}

// What makes a shape less likely than the samples say, as a part of the score.
double Unlikelihood(const Shape& shape, const PixelFormatInfo& format) {
  constexpr double kWidest = 2;  // of usual pictures
  const double excess = std::max(0.0, std::log2(Elongation(shape) / kWidest));
  const bool isOddMosaic = IsRaw(format.format) && (shape.width % 2 != 0 || shape.height % 2 != 0);
  return (shape.isCommon ? 0 : 0.02) + (shape.isWhole ? 0 : 0.01) + (isOddMosaic ? 0.02 : 0) +
         (shape.width < shape.height ? 0.01 : 0) + 0.02 * excess;
}

// --- Tiles and the order of colours
// ------------------------------------------------------------------

// Sums over the 2 x 2 blocks that lie in the pieces.
struct Blocks {
  std::array<double, 4> sums{};  // of each place, in reading order
  double diagonal = 0;           // differences between the first and the last place
  double antidiagonal = 0;       // differences between the two others
};

Blocks BlocksOf(const Samples& samples, std::span<const Piece> pieces,
                const PixelFormatInfo& format, std::size_t width) {
  Blocks blocks;
  for (std::size_t n = 0; n < pieces.size(); ++n) {
    const std::vector<std::uint16_t>& piece = samples.pieces[n];
    const std::size_t first = pieces[n].first / format.bytesPerGroup * format.pixelsPerGroup;
    for (std::size_t i = 0; i + width + 1 < piece.size(); ++i) {
      const std::size_t x = (first + i) % width;
      if (x % 2 != 0 || x + 1 == width || (first + i) / width % 2 != 0) {
        continue;
      }
      const std::array<int, 4> block = {piece[i], piece[i + 1], piece[i + width],
                                        piece[i + width + 1]};
      for (std::size_t k = 0; k < 4; ++k) {
        blocks.sums[k] += block[k];
      }
      blocks.diagonal += std::abs(block[0] - block[3]);
      blocks.antidiagonal += std::abs(block[1] - block[2]);
    }
  }
  return blocks;
}

// The likeliest first: green is where two places of a tile resemble each other.
std::array<BayerTileFormat, 4> TilesOf(const Blocks& blocks) {
  const bool redFirst = blocks.sums[0] >= blocks.sums[3];
  const bool redRight = blocks.sums[1] >= blocks.sums[2];
  const std::array<BayerTileFormat, 2> greenBeside = {redFirst ? RGGB : BGGR,
                                                      redFirst ? BGGR : RGGB};
  const std::array<BayerTileFormat, 2> greenFirst = {redRight ? GRBG : GBRG,
                                                     redRight ? GBRG : GRBG};
  const bool beside = blocks.antidiagonal <= blocks.diagonal;
  const auto& likely = beside ? greenBeside : greenFirst;
  const auto& other = beside ? greenFirst : greenBeside;
  return {likely[0], likely[1], other[0], other[1]};
}

double MeanOf(const std::vector<Channel>& channels, char name) {
  const auto channel = std::ranges::find(channels, name, &Channel::name);
  double sum = 0;
  for (const std::vector<std::uint16_t>& piece : channel->samples.pieces) {
    for (const std::uint16_t sample : piece) {
      sum += sample;
    }
  }
  return sum;
}

// --- Candidates
// ----------------------------------------------------------------------------------------

// Whether a format differs from another in the place of red and blue alone.
bool HasSwap(const PixelFormatInfo& format) {
  return std::ranges::any_of(PixelFormats(), [&](const PixelFormatInfo& other) {
    return format.family == PixelFamily::Rgb && other.family == PixelFamily::Rgb &&
           other.convertible && other.bitsPerSample == format.bitsPerSample &&
           other.samples.size() == format.samples.size() &&
           other.IsBlueFirst() != format.IsBlueFirst();
  });
}

// What a less likely order of colours or tile adds to the score, as a part of it.
constexpr double kSwapped = 1e-6;
constexpr double kOtherGreen = 0.05;

double OrderUnlikelihood(const PixelFormatInfo& format, const std::vector<Channel>& channels) {
  return HasSwap(format) && MeanOf(channels, 'R') < MeanOf(channels, 'B') ? kSwapped : 0;
}

double Score(double bitsPerByte, double unlikelihood) {
  constexpr double kFlat = 0.05;  // bits a byte, so that shapes count where samples say nothing
  return (bitsPerByte + kFlat) * (1 + unlikelihood);
}

void AddMosaicCandidates(Candidate candidate, double unlikelihood, const Blocks& blocks,
                         std::vector<Candidate>& candidates) {
  const std::array<BayerTileFormat, 4> tiles = TilesOf(blocks);
  for (std::size_t i = 0; i < tiles.size(); ++i) {
    candidate.tile = tiles[i];
    const double tile = (i % 2 == 0 ? 0 : kSwapped) + (i < 2 ? 0 : kOtherGreen);
    candidate.score = Score(candidate.bitsPerByte, unlikelihood + tile);
    candidates.push_back(candidate);
  }
}

void AddCandidates(const PixelFormatInfo& format, const Bytes& file, std::span<const Piece> pieces,
                   const Known& known, std::vector<Candidate>& candidates) {
  std::vector<Shape> shapes = ShapesOf(format, file.size, known);
  if (shapes.empty()) {
    return;
  }
  DropStrips(shapes);
  const std::vector<Channel> channels = ChannelsOf(format, pieces);
  const std::vector<Channel> coded = ToCode(channels);
  const Neighbours neighbours = NeighboursOf(format);
  const double order = OrderUnlikelihood(format, channels);
  for (const Shape& shape : MostAlike(std::move(shapes), channels, neighbours)) {
    const double bits = BitsPerPixel(coded, neighbours, shape.width) * 8 / format.bitsPerPixel;
    const double unlikelihood = Unlikelihood(shape, format) + order;
    const Candidate candidate{
        &format, shape.width, shape.height, NONE, bits, Score(bits, unlikelihood), shape.isCommon};
    if (neighbours == Neighbours::Mosaic) {
      const Samples& samples = channels.front().samples;
      AddMosaicCandidates(candidate, unlikelihood, BlocksOf(samples, pieces, format, shape.width),
                          candidates);
    } else {
      candidates.push_back(candidate);
    }
  }
}

}  // namespace

std::vector<Candidate> FindCandidates(const Bytes& file, const Known& known) {
  const std::vector<Piece> pieces = PiecesOf(file);
  std::vector<Candidate> candidates;
  for (const PixelFormatInfo& format : PixelFormats()) {
    if (format.convertible && (known.format == nullptr || known.format == &format)) {
      AddCandidates(format, file, pieces, known, candidates);
    }
  }
  return Ascending(std::move(candidates),
                   [](const Candidate& candidate) { return candidate.score; });
}

}  // namespace Korvex2::Tool
