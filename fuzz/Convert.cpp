// ImageConverter against the literal reference: any shape, format, tile, method, stride, content,
// target, destination, byte order and instruction set; code, message, shape and every byte.

#include <sstream>

#include "CheckConversion.h"
#include "Fuzz.h"
#include "InstructionSets.h"
#include "reference/Routes.h"
#include "support/Comparison.h"
#include "support/LentImage.h"

namespace Korvex2::Fuzz {
namespace {

using namespace Test;

enum Entry : std::uint8_t {
  kConvert,
  kConvertTo,  // the target's own member, on a destination in shape
  kOverlap,    // the same, source and destination in one buffer
  kNullSource,
  kNullSourceBuffer,
  kNullDestination,
  kEntries
};
enum ShapeKind : std::uint8_t { kOrdinary, kNoRows, kNoColumns, kLongRow, kHuge, kShapeKinds };
enum SourceKind : std::uint8_t { kOwnSource, kLentSource, kSubclassSource, kSourceKinds };
enum DestinationKind : std::uint8_t {
  kNew,
  kSameShape,
  kOtherShape,
  kLentExact,
  kLentLarger,
  kLentTooSmall,
  kSourceItself,
  kSubclass,
  kDestinationKinds
};
constexpr std::uint8_t kRestOfTheCase = std::size(kContents);  // as content: the bytes that follow

struct Header {
  std::uint32_t word;  // stands for a choice that is out of range, and for large numbers
  std::uint16_t rows;
  std::uint16_t cols;
  std::uint8_t source;
  std::uint8_t target;
  std::uint8_t tile;
  std::uint8_t method;
  std::uint8_t defaultMethod;
  std::int8_t padding;  // a stride shorter than the row is as good as any
  std::uint8_t shapeKind;
  std::uint8_t sourceKind;
  std::uint8_t destinationKind;
  std::uint8_t entry;
  std::uint8_t bigEndian;
  std::uint8_t instructionSet;
  std::uint8_t content;
  std::uint8_t garbage;
  std::uint8_t oldFormat;
  std::int8_t distance;
};

constexpr std::uint32_t kMostPixels = 8192;
constexpr std::uint32_t kMostPixelsOfMosaics = 256;  // some methods take long
constexpr std::uint64_t kMostBytes = std::uint64_t{1} << 20;
constexpr std::uint64_t kLargestImage = 0xFFFFFFFF;

Reference::Format FormatOf(std::uint8_t choice, std::uint32_t word) {
  const auto formats = Reference::Formats();
  const std::size_t which = choice % (formats.size() + 2);
  return which < formats.size()    ? formats[which].value
         : which == formats.size() ? Reference::UNSPECIFIED
                                   : word;
}

// Enumerators that fix a width admit no negative values.
std::uint32_t NumberOf(std::uint8_t choice, std::uint32_t known, std::uint32_t word) {
  return choice % (known + 1) < known ? choice % (known + 1) : word & 0x7FFFFFFF;
}

// What a header says, in range.
struct Plan {
  explicit Plan(const Header& h)
      : source(FormatOf(h.source, h.word)),
        target(FormatOf(h.target, h.word)),
        tile(NumberOf(h.tile, 6, h.word)),
        method(NumberOf(h.method, 10, h.word)),
        defaultMethod(NumberOf(h.defaultMethod, 10, h.word)),
        sourceKind(static_cast<SourceKind>(h.sourceKind % kSourceKinds)),
        destinationKind(static_cast<DestinationKind>(h.destinationKind % kDestinationKinds)),
        entry(static_cast<Entry>(h.entry % kEntries)),
        littleEndian(h.bigEndian % 2 == 0),
        instructionSet(Pick(kSets, h.instructionSet)),
        oldFormat(FormatOf(h.oldFormat, h.word)),
        word(h.word) {
    Shape(h);
    if (destinationKind == kSourceItself) {
      sourceKind = kOwnSource;
    }
  }

  void Shape(const Header& h) {
    const auto kind = static_cast<ShapeKind>(h.shapeKind % kShapeKinds);
    huge = kind == kHuge;
    rows = kind == kNoRows ? 0 : kind == kLongRow ? 1 : huge || kind == kNoColumns ? word : h.rows;
    cols = kind == kNoColumns ? 0
           : kind == kNoRows  ? word
           : kind == kLongRow ? word % (1 << 16)
           : huge             ? ~word
                              : h.cols;
    huge = huge && rows != 0 && cols != 0;
    if (kind == kOrdinary) {
      const std::uint32_t most = Reference::IsRaw(source) ? kMostPixelsOfMosaics : kMostPixels;
      cols %= most + 1;
      rows = std::min(rows, most / std::max(1U, cols));
    }
    const std::uint32_t packed = Reference::RowBytes(cols, Reference::BitsPerPixel(source));
    stride =
        packed + static_cast<std::uint32_t>(std::max<std::int64_t>(h.padding, -int64_t{packed}));
    // The library copies the pixels whatever the stride, the reference what the stride spans.
    const bool tooShort = stride < packed && source == target;
    if (tooShort || (!huge && std::uint64_t{rows} * stride > kMostBytes)) {
      stride = packed;
    }
  }

  std::uint32_t TargetStride() const {
    return Reference::RowBytes(cols, Reference::BitsPerPixel(target));
  }
  // What an image owes, and with it what a kernel may touch besides.
  std::uint64_t TargetRows() const { return std::uint64_t{rows} * TargetStride(); }
  std::uint64_t TargetBytes() const {
    return Reference::BufferBytes(rows, cols, TargetStride(), target);
  }
  std::uint64_t SourceRows() const { return std::uint64_t{rows} * stride; }
  std::uint64_t SourceBytes() const { return Reference::BufferBytes(rows, cols, stride, source); }
  bool IsCopy() const { return source == target; }

  static inline const std::span<const std::string_view> kSets = InstructionSets();

  Reference::Format source;
  Reference::Format target;
  std::uint32_t tile;
  std::uint32_t method;
  std::uint32_t defaultMethod;
  SourceKind sourceKind;
  DestinationKind destinationKind;
  Entry entry;
  bool littleEndian;
  std::string_view instructionSet;
  Reference::Format oldFormat;
  std::uint32_t word;
  std::uint32_t rows = 0;
  std::uint32_t cols = 0;
  std::uint32_t stride = 0;
  bool huge = false;
};

std::string Describe(const Plan& plan) {
  std::ostringstream text;
  text << Reference::FormatName(plan.source) << " (" << plan.source << ") -> "
       << Reference::FormatName(plan.target) << " (" << plan.target << "), " << plan.rows
       << " rows x " << plan.cols << " cols, stride " << plan.stride << ", tile " << plan.tile
       << ", method " << plan.method << ", default " << plan.defaultMethod << ", source kind "
       << int{plan.sourceKind} << ", destination kind " << int{plan.destinationKind} << ", entry "
       << int{plan.entry} << ", " << (plan.littleEndian ? "little" : "big") << " endian, "
       << plan.instructionSet;
  return text.str();
}

void Require(const testing::AssertionResult& result, const Plan& plan) {
  if (!result) {
    Fail(Describe(plan) + ": " + result.message());
  }
}

void Require(bool holds, const char* what, const Plan& plan) {
  if (!holds) {
    Fail(Describe(plan) + ": " + what);
  }
}

void FillFrom(const Case<Header>& c, std::uint8_t* bytes, std::size_t size) {
  const std::uint8_t content = c.header.content % (kRestOfTheCase + 1);
  if (content < kRestOfTheCase) {
    Test::Fill(bytes, size, kContents[content], c.header.word);
    return;
  }
  for (std::size_t i = 0; i < size; ++i) {
    bytes[i] = c.rest.empty() ? 0 : c.rest[i % c.rest.size()];
  }
}

// --- The source: the library's image, or one of a class of its own, on memory of exactly its rows.

class Source {
 public:
  Source(const Plan& plan, const Case<Header>& c)
      : m_block(plan.huge ? 1 : plan.SourceRows()),
        m_lent(m_block.data(), m_block.size()),
        m_subclass(plan.rows, plan.cols, static_cast<PixelFormat>(plan.source), m_block.data(),
                   m_block.size()) {
    const auto format = static_cast<PixelFormat>(plan.source);
    const auto tile = static_cast<BayerTileFormat>(plan.tile);
    const auto method = static_cast<ColorProcessingAlgorithm>(plan.method);
    m_subclass.stride = plan.stride;
    m_subclass.dataSize = plan.rows * plan.stride;
    m_subclass.tile = tile;
    m_subclass.method = method;
    if (plan.huge || plan.sourceKind == kSubclassSource) {
      Fill(plan, c, m_block.data(), m_block.size());
      m_image = &m_subclass;
      return;
    }
    const bool lent = plan.sourceKind == kLentSource;
    Image& plain = lent ? m_lent : m_own;
    const Error shaped = plain.SetDimensions(plan.rows, plan.cols, plan.stride, format, tile);
    Require(shaped == VORERROR_OK, "the source does not take its shape", plan);
    plain.SetColorProcessing(method);
    m_held = lent ? m_block.size() : plan.SourceBytes();
    Fill(plan, c, plain.GetData(), m_held);
    m_image = &plain;
  }

  Image& AsImage() { return *m_image; }
  bool IsPlain() const { return m_image != &m_subclass; }
  Reference::Frame Frame() const { return FrameOf(*m_image, m_held); }

 private:
  // Past its rows a copy may have the rest of a begun group or zeros; conversions may read that.
  static void Fill(const Plan& plan, const Case<Header>& c, std::uint8_t* bytes, std::size_t size) {
    std::memset(bytes, 0, size);
    FillFrom(c, bytes, plan.IsCopy() ? std::min<std::size_t>(size, plan.SourceRows()) : size);
  }

  Block m_block;
  std::size_t m_held = m_block.size();
  Image m_own;
  Image m_lent;
  LentImage m_subclass;
  Image* m_image = nullptr;
};

// --- The destination of Convert.

std::size_t LentSize(const Plan& plan) {
  const std::size_t exact = plan.TargetRows();
  return plan.destinationKind == kLentLarger     ? exact + plan.word % 64
         : plan.destinationKind == kLentTooSmall ? plan.word % std::max<std::size_t>(1, exact)
                                                 : exact;
}

class Destination {
 public:
  Destination(const Plan& plan, std::uint8_t garbage)
      : m_block(IsLent(plan) ? LentSize(plan) : 1), m_lent(m_block.data(), m_block.size()) {
    std::memset(m_block.data(), garbage, m_block.size());
    if (plan.destinationKind == kSameShape) {
      Reuse(plan.rows, plan.cols, plan.target, garbage);
    } else if (plan.destinationKind == kOtherShape) {
      Reuse(plan.cols, plan.rows, plan.oldFormat, garbage);
    }
    m_image = IsLent(plan) ? &m_lent : &m_own;
    if (IsLent(plan)) {
      m_frame.lentByte = garbage;
    } else {
      m_frame = FrameOf(m_own);
    }
  }

  static bool IsLent(const Plan& plan) {
    return !plan.huge &&
           (plan.destinationKind == kLentExact || plan.destinationKind == kLentLarger ||
            plan.destinationKind == kLentTooSmall);
  }

  Image& AsImage() { return *m_image; }
  /// What the oracle is to write into.
  Reference::Frame& AsFrame() { return m_frame; }

 private:
  void Reuse(std::uint32_t rows, std::uint32_t cols, Reference::Format format, int garbage) {
    const std::uint32_t stride = Reference::RowBytes(cols, Reference::BitsPerPixel(format));
    if (std::uint64_t{rows} * cols > kMostPixels || std::uint64_t{rows} * stride > kMostBytes) {
      return;
    }
    (void)m_own.SetDimensions(rows, cols, stride, static_cast<PixelFormat>(format), GRBG);
    if (m_own.GetDataSize() > 0) {
      std::memset(m_own.GetData(), garbage, m_own.GetDataSize());
    }
  }

  Block m_block;
  Image m_own;
  Image m_lent;
  Image* m_image = nullptr;
  Reference::Frame m_frame;
};

// --- What must come of it.

Reference::Converter OracleOf(const Plan& plan) {
  Reference::Converter oracle;
  oracle.littleEndian = plan.littleEndian;
  oracle.defaultMethod = plan.defaultMethod;
  oracle.engine = OracleEngine;
  return oracle;
}

Reference::Outcome Refusal(ErrorType cause) {
  return {Reference::kFailed, Reference::kRefusedShape, true, cause};
}

// CheckConversion predicts what Convert answers.
void RequirePredicted(const Plan& plan, ErrorType predicted, const Error& error) {
  switch (predicted) {
    case VORERROR_OK:
    case VORERROR_INVALID_SETTINGS:
    case VORERROR_IMAGE_CONVERSION_FAILED:
      return Require(error == VORERROR_OK, "CheckConversion predicted success", plan);
    default:
      return Require(error == predicted, "CheckConversion predicted another failure", plan);
  }
}

void RunConvert(const Plan& plan, const Case<Header>& c) {
  const auto target = static_cast<PixelFormat>(plan.target);
  const bool tooLarge = plan.TargetBytes() > kLargestImage;
  if (plan.huge && !tooLarge && (plan.TargetBytes() > kMostBytes || plan.IsCopy())) {
    return;  // would take the memory that it asks for
  }
  Source source(plan, c);
  Destination given(plan, c.header.garbage);
  const bool itself = plan.destinationKind == kSourceItself && source.IsPlain();
  Image& destination = itself ? source.AsImage() : given.AsImage();
  Reference::Frame frame;
  if (!plan.huge) {
    frame = source.Frame();
  }
  const Error predicted = CheckConversion(source.AsImage(), target);
  const Error error = Probe(plan.littleEndian).Convert(&source.AsImage(), target, &destination);

  if (tooLarge) {
    return Require(OutcomeOf(error) == Refusal(VORERROR_INVALID_PARAMETER), "too large", plan);
  }
  if (plan.huge) {
    return Require(error == VORERROR_INVALID_PARAMETER, "no such target", plan);
  }
  const std::size_t capacity = Destination::IsLent(plan) ? LentSize(plan) : kLargestImage;
  if (capacity < plan.TargetRows()) {
    return Require(OutcomeOf(error) == Refusal(VORERROR_BUFFER_TOO_SMALL), "too small", plan);
  }
  if (plan.IsCopy() && capacity < plan.SourceRows()) {
    return Require(error == VORERROR_BUFFER_TOO_SMALL, "too small for the copy", plan);
  }
  if (source.IsPlain() && !itself) {
    RequirePredicted(plan, predicted.GetType(), error);
  }
  Reference::Frame* const to = itself ? &frame : &given.AsFrame();
  const Reference::Outcome outcome = OracleOf(plan).Convert(&frame, plan.target, to);
  Require(SameResult(outcome, *to, error, destination, capacity), plan);
}

// --- The members of the targets, on destinations in shape.

Probe::Target MemberOf(Reference::Format target) {
  for (const Probe::TargetMember& row : Probe::Targets()) {
    if (row.target == target) {
      return row.member;
    }
  }
  return nullptr;
}

// A destination as the library sees it, on lent bytes: an Image, or one of another class, which
// tells of its rows alone.
class Shaped {
 public:
  Shaped(const Plan& plan, std::uint32_t stride, std::uint8_t* bytes, std::size_t size)
      : m_plain(bytes, size),
        m_subclass(plan.rows, plan.cols, static_cast<PixelFormat>(plan.target), bytes,
                   std::size_t{plan.rows} * stride) {
    const auto tile = static_cast<BayerTileFormat>(plan.tile);
    m_subclass.stride = stride;
    m_subclass.tile = tile;
    (void)m_plain.SetDimensions(plan.rows, plan.cols, stride, static_cast<PixelFormat>(plan.target),
                                tile);
    m_image = plan.destinationKind == kSubclass ? &m_subclass : &m_plain;
  }

  Image& AsImage() { return *m_image; }

 private:
  Image m_plain;
  LentImage m_subclass;
  Image* m_image = nullptr;
};

Reference::Frame FrameOn(std::uint8_t* bytes, const Plan& plan, Reference::Format format,
                         std::uint32_t stride) {
  Reference::Frame frame;
  frame.rows = plan.rows;
  frame.cols = plan.cols;
  frame.stride = stride;
  frame.format = format;
  frame.tile = plan.tile;
  frame.method = plan.method;
  frame.data = bytes;
  frame.dataSize = plan.rows * stride;
  return frame;
}

void RequireSame(const Plan& plan, const Reference::Outcome& outcome, const Error& error,
                 const Block& expected, const Block& actual) {
  Require(OutcomeOf(error) == outcome, "another result", plan);
  const auto* const differs =
      std::mismatch(actual.data(), actual.data() + actual.size(), expected.data()).first;
  if (differs != actual.data() + actual.size()) {
    Fail(Describe(plan) + ": byte " + std::to_string(differs - actual.data()) + " differs");
  }
}

void RunConvertTo(const Plan& plan, const Case<Header>& c) {
  const Probe::Target member = MemberOf(plan.target);
  if (member == nullptr || plan.huge) {
    return;
  }
  Source source(plan, c);
  const Reference::Frame frame = source.Frame();
  const bool exact = plan.destinationKind == kSubclass || plan.word % 2 == 0;
  Block actual(exact ? plan.TargetRows() : plan.TargetBytes());
  Block expected(plan.TargetBytes());
  Shaped destination(plan, plan.TargetStride(), actual.data(), actual.size());
  std::memset(actual.data(), c.header.garbage, actual.size());
  std::memset(expected.data(), c.header.garbage, expected.size());
  Reference::Frame to = FrameOn(expected.data(), plan, plan.target, plan.TargetStride());

  const Error error =
      Probe(plan.littleEndian).Call(member, &source.AsImage(), &destination.AsImage());
  const Reference::Outcome outcome = OracleOf(plan).ConvertTo(plan.target, &frame, &to);
  RequireSame(plan, outcome, error, expected, actual);
}

// A stride with which the rows hold all bytes that a kernel may touch: what one of two images that
// overlap lacks, the other might have.
std::uint32_t WholeStride(const Plan& plan, std::uint32_t stride, std::uint64_t bytes) {
  const std::uint64_t rows = std::max(1U, plan.rows);
  return std::max(stride, static_cast<std::uint32_t>((bytes + rows - 1) / rows));
}

void RunOverlap(const Plan& plan, const Case<Header>& c) {
  const Probe::Target member = MemberOf(plan.target);
  const bool demosaics = Reference::IsRaw(plan.source) && !Reference::IsRaw(plan.target);
  if (member == nullptr || plan.huge || demosaics) {
    return;  // the engine takes no overlapping buffers
  }
  const std::ptrdiff_t distance = c.header.distance;
  const auto from = static_cast<std::size_t>(std::max<std::ptrdiff_t>(0, -distance));
  const auto to = static_cast<std::size_t>(std::max<std::ptrdiff_t>(0, distance));
  const std::uint32_t sourceStride = WholeStride(plan, plan.stride, plan.SourceBytes());
  const std::uint32_t targetStride = WholeStride(plan, plan.TargetStride(), plan.TargetBytes());
  const std::size_t sourceSize = std::size_t{plan.rows} * sourceStride;
  const std::size_t targetSize = std::size_t{plan.rows} * targetStride;
  Block actual(std::max(from + sourceSize, to + targetSize));
  Block expected(actual.size());

  LentImage subclass(plan.rows, plan.cols, static_cast<PixelFormat>(plan.source),
                     actual.data() + from, sourceSize);
  Image plain(actual.data() + from, sourceSize);
  (void)plain.SetDimensions(plan.rows, plan.cols, sourceStride,
                            static_cast<PixelFormat>(plan.source), NONE);
  Image* const source = plan.sourceKind == kSubclassSource ? &subclass : &plain;
  Shaped destination(plan, targetStride, actual.data() + to, targetSize);
  FillFrom(c, actual.data(), actual.size());
  std::memcpy(expected.data(), actual.data(), actual.size());
  const Reference::Frame sourceFrame =
      FrameOn(expected.data() + from, plan, plan.source, sourceStride);
  Reference::Frame destinationFrame =
      FrameOn(expected.data() + to, plan, plan.target, targetStride);

  const Error error = Probe(plan.littleEndian).Call(member, source, &destination.AsImage());
  const Reference::Outcome outcome =
      OracleOf(plan).ConvertTo(plan.target, &sourceFrame, &destinationFrame);
  RequireSame(plan, outcome, error, expected, actual);
}

void RunNull(const Plan& plan, const Case<Header>& c) {
  const Image empty;
  Image destination;
  Source source(plan, c);
  const Image* const from = plan.entry == kNullSource         ? nullptr
                            : plan.entry == kNullSourceBuffer ? &empty
                                                              : &source.AsImage();
  // A missing destination comes with every kind of source, and a missing source is found first.
  Image* const to = plan.entry == kNullDestination || plan.word % 2 == 0 ? nullptr : &destination;
  const Error error = Probe().Convert(from, static_cast<PixelFormat>(plan.target), to);
  const char* const message =
      plan.entry == kNullDestination ? Reference::kDestinationNull : Reference::kSourceNull;
  Require(OutcomeOf(error) == Reference::Outcome{Reference::kInvalidParameter, message, false, 0},
          "a null is refused with its message", plan);
  Require(destination.GetData() == nullptr, "a refused destination is untouched", plan);
}

void Run(const Plan& plan, const Case<Header>& c) {
  switch (plan.entry) {
    case kConvert:
      return RunConvert(plan, c);
    case kConvertTo:
      return RunConvertTo(plan, c);
    case kOverlap:
      return RunOverlap(plan, c);
    default:
      return RunNull(plan, c);
  }
}

// --- The cases to begin with.

constexpr Header kPlainCase = {.word = 0x9E3779B9,
                               .rows = 4,
                               .cols = 6,
                               .source = 0,
                               .target = 0,
                               .tile = 1,
                               .method = 2,
                               .defaultMethod = 2,
                               .padding = 0,
                               .shapeKind = kOrdinary,
                               .sourceKind = kOwnSource,
                               .destinationKind = kNew,
                               .entry = kConvert,
                               .bigEndian = 0,
                               .instructionSet = 1,
                               .content = 0,
                               .garbage = 0xA5,
                               .oldFormat = 0,
                               .distance = 3};

template <typename Change>
void Add(std::vector<Seed>& seeds, const std::string& name, Change change) {
  Header header = kPlainCase;
  change(header);
  seeds.push_back({name, Encode(header, Bytes{0, 255, 128, 127, 16, 235, 1, 254})});
}

}  // namespace

std::vector<Seed> Seeds() {
  std::vector<Seed> seeds;
  const auto formats = static_cast<std::uint8_t>(Reference::Formats().size());
  for (std::uint8_t source = 0; source < formats + 2; ++source) {
    for (std::uint8_t target = 0; target < formats + 2; ++target) {
      const std::string pair = std::to_string(source) + "-" + std::to_string(target);
      Add(seeds, "pair-" + pair, [&](Header& h) {
        h.source = source;
        h.target = target;
        h.cols = static_cast<std::uint16_t>(40 + 2 * target);
        h.tile = static_cast<std::uint8_t>(source + target);
        h.method = target;
        h.entry = static_cast<std::uint8_t>((source + target) % 3);
        h.sourceKind = target;
        h.destinationKind = static_cast<std::uint8_t>(source + 3 * target);
        h.content = target;
        h.oldFormat = static_cast<std::uint8_t>(source + 1);
      });
    }
  }
  for (std::uint8_t kind = 0; kind < kShapeKinds; ++kind) {
    for (std::uint8_t entry = 0; entry < kEntries; ++entry) {
      Add(seeds, "shape-" + std::to_string(kind) + "-entry-" + std::to_string(entry),
          [&](Header& h) {
            h.shapeKind = kind;
            h.entry = entry;
            h.source = static_cast<std::uint8_t>(3 + kind);
            h.target = static_cast<std::uint8_t>(10 + entry);
            h.padding = static_cast<std::int8_t>(entry - 2);
            h.bigEndian = entry;
          });
    }
  }
  // A compressed stream has no groups that a lent buffer would have to have room for.
  Add(seeds, "found-lent-stream", [](Header& h) {
    const auto known = Reference::Formats();
    const auto stream =
        std::ranges::find(known, Reference::YUV422_JPEG, &Reference::FormatRow::value);
    h.source = h.target = static_cast<std::uint8_t>(stream - known.begin());
    h.rows = 3;
    h.cols = 5;
    h.destinationKind = kLentExact;
  });
  // Words at odd addresses, some of which are converted one by one.
  Add(seeds, "found-odd-words", [](Header& h) {
    h.rows = 4;
    h.cols = 50;
    h.source = 5;
    h.target = 1;
    h.tile = 0x3C;
    h.method = 6;
    h.defaultMethod = 2;
    h.sourceKind = 6;
    h.destinationKind = 0x17;
    h.entry = 2;
    h.instructionSet = 0x88;
    h.content = 0x40;
    h.garbage = 0x79;
    h.oldFormat = 6;
    h.distance = -0x5B;
  });
  return seeds;
}

}  // namespace Korvex2::Fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Korvex2;
  const Fuzz::Case<Fuzz::Header> c(data, size);
  const Fuzz::Plan plan(c.header);
  (void)SetInstructionSet(plan.instructionSet);
  (void)Image::SetDefaultColorProcessing(static_cast<ColorProcessingAlgorithm>(plan.defaultMethod));
  Fuzz::Run(plan, c);
  return 0;
}
