// The demosaic engine on any arguments: the error that the header promises, nothing written where
// it fails and everything where it succeeds, buffers of exactly their size, and the same picture on
// every instruction set and with every size of blocks: that of the method's definition, where the
// reference has one.

#include "Demosaic.h"

#include <sstream>

#include "CallFromC.h"
#include "Fuzz.h"
#include "reference/Demosaic.h"

namespace Korvex2::Fuzz {
namespace {

using namespace Bayer;

// The arguments that are not the numbers of a picture, a bit each.
enum Wild : std::uint8_t {
  kWildInput = 1,
  kWildOutput = 2,
  kWildMethod = 4,
  kWildPattern = 8,
  kWildRows = 16,
  kWildCols = 32,
  kNullInput = 64,
  kNullOutput = 128
};

struct Header {
  std::int32_t word;  // what a wild argument is
  std::uint16_t rows;
  std::uint16_t cols;
  std::uint8_t input;
  std::uint8_t output;
  std::uint8_t method;
  std::uint8_t pattern;
  std::uint8_t wild;
  std::uint8_t inputOffset;
  std::uint8_t outputOffset;
  std::uint8_t blockRows;
  std::uint8_t blockCols;
  std::uint8_t content;
  std::uint8_t garbage;
  std::uint8_t instructionSet;  // of the run with blocks of another size
};

// By method: under sanitizers the last one takes up to 0.1 ms for a pixel.
constexpr int kMostPixels[] = {4096, 4096, 4096, 1024, 1024, 256};
constexpr int kSmallestBlock = 16;
constexpr int kBytesPerPixel[] = {1, 2, 3, 4, 6, 8, 3, 4, 6, 8};  // by format

struct Plan {
  explicit Plan(const Header& h)
      : input((h.wild & kWildInput) != 0 ? h.word : h.input % 2),
        rows((h.wild & kWildRows) != 0 ? h.word : h.rows),
        cols((h.wild & kWildCols) != 0 ? h.word : h.cols),
        output((h.wild & kWildOutput) != 0 ? h.word : 2 + h.output % 8),
        method((h.wild & kWildMethod) != 0 ? h.word : h.method % 6),
        pattern((h.wild & kWildPattern) != 0 ? h.word : h.pattern % 4),
        nullInput((h.wild & kNullInput) != 0),
        nullOutput((h.wild & kNullOutput) != 0) {
    const int most = Error() == beOK ? kMostPixels[method] : 0;
    if (Error() == beOK && Pixels() > most) {
      cols = std::max(2, cols % most / 2 * 2);
      rows = std::max(2, std::min(rows, most / cols / 2 * 2));
    }
  }

  std::int64_t Pixels() const { return std::int64_t{rows} * cols; }

  // In the order in which the header looks for them.
  BayerError Error() const {
    const std::int64_t largest = std::int64_t{1} << 60;
    if (method < 0 || method > 5 || rows < 0 || cols < 0) return beFAILED;
    if (input < 0 || input > 1 || output < 2 || output > 9) return beINVALID_PATTERN;
    if (pattern < 0 || pattern > 3) return beINVALID_PATTERN;
    if (rows == 0 || cols == 0) return beOK;
    if (rows % 2 != 0) return beODD_ROWS;
    if (cols % 2 != 0) return beODD_COLS;
    if (nullInput || nullOutput || Pixels() >= largest) return beFAILED;
    return beOK;
  }

  std::size_t InputBytes() const { return Bytes(input); }
  std::size_t OutputBytes() const { return Bytes(output); }

  int input, rows, cols, output, method, pattern;
  bool nullInput, nullOutput;

 private:
  std::size_t Bytes(int format) const {
    return Error() != beOK ? 0 : static_cast<std::size_t>(Pixels() * kBytesPerPixel[format]);
  }
};

std::string Describe(const Plan& plan) {
  std::ostringstream text;
  text << "input " << plan.input << ", " << plan.rows << " rows x " << plan.cols << " cols, output "
       << plan.output << ", method " << plan.method << ", pattern " << plan.pattern << ": ";
  return text.str();
}

void FillFrom(const Case<Header>& c, std::uint8_t* bytes, std::size_t size) {
  std::uint32_t state = static_cast<std::uint32_t>(c.header.word) | 1U;
  for (std::size_t i = 0; i < size; ++i) {
    state = state * 1664525U + 1013904223U;
    const auto noise = static_cast<std::uint8_t>(state >> 24);
    switch (c.header.content % 4) {
      case 0:
        bytes[i] = c.rest.empty() ? 0 : c.rest[i % c.rest.size()];
        break;
      case 1:
        bytes[i] = noise;
        break;
      case 2:
        bytes[i] = noise < 128 ? 0 : 255;
        break;
      default:
        bytes[i] = static_cast<std::uint8_t>(i / 5);
    }
  }
}

// A picture on bytes of exactly its size, at any address.
class Picture {
 public:
  Picture(std::size_t size, std::size_t offset, std::uint8_t garbage)
      : m_block(offset + size), m_offset(offset) {
    std::memset(m_block.data(), garbage, m_block.size());
  }

  std::uint8_t* data() { return m_block.data() + m_offset; }
  bool operator==(const Picture& other) const {
    return std::equal(m_block.data() + m_offset, m_block.data() + m_block.size(),
                      other.m_block.data() + other.m_offset);
  }
  bool IsAll(std::uint8_t byte) const {
    return std::all_of(m_block.data(), m_block.data() + m_block.size(),
                       [byte](std::uint8_t b) { return b == byte; });
  }

 private:
  Block m_block;
  std::size_t m_offset;
};

void Run(const Case<Header>& c) {
  const Header& h = c.header;
  const Plan plan(h);
  const auto require = [&plan](bool holds, const std::string& what) {
    if (!holds) Fail(Describe(plan) + what);
  };
  Picture mosaic(plan.InputBytes(), h.inputOffset % 64, 0);
  FillFrom(c, mosaic.data(), plan.InputBytes());
  Picture picture(plan.OutputBytes(), h.outputOffset % 64, h.garbage);
  const unsigned char* const input = plan.nullInput ? nullptr : mosaic.data();

  const int error =
      bayerToColorByNumbers(plan.input, input, plan.rows, plan.cols, plan.output,
                            plan.nullOutput ? nullptr : picture.data(), plan.method, plan.pattern);
  require(error == plan.Error(),
          "error " + std::to_string(error) + ", expected " + std::to_string(plan.Error()));
  if (error != beOK) {
    return require(picture.IsAll(h.garbage), "a failure wrote something");
  }

  if (Reference::DefinesMethod(plan.method)) {
    Picture defined(plan.OutputBytes(), 0, static_cast<std::uint8_t>(~h.garbage));
    Reference::DemosaicByDefinition(plan.input, input, plan.rows, plan.cols, plan.output,
                                    defined.data(), plan.method, plan.pattern);
    require(defined == picture, "not what the method is defined to make");
  }

  const auto requireSame = [&](const Settings& settings, std::size_t offset) {
    Picture again(plan.OutputBytes(), offset, static_cast<std::uint8_t>(~h.garbage));
    const Request request = {plan.input,  input,       plan.rows,
                             plan.cols,   plan.output, plan.nullOutput ? nullptr : again.data(),
                             plan.method, plan.pattern};
    const std::string how = std::string(InstructionSetName(settings.instructionSet)) +
                            ", blocks of " + std::to_string(settings.blockRows) + " x " +
                            std::to_string(settings.blockCols);
    require(Demosaic(request, settings) == beOK, how + " fails");
    require(again == picture, how + " makes another picture");
  };
  requireSame({.instructionSet = InstructionSet::Plain}, 0);
  requireSame({.instructionSet = Pick(AvailableInstructionSets(), h.instructionSet),
               .blockRows = kSmallestBlock + h.blockRows % 64 / 2 * 2,
               .blockCols = kSmallestBlock + h.blockCols / 2 * 2},
              h.outputOffset % 64);
}

constexpr Header kPlainCase = {.word = 0x12345,
                               .rows = 12,
                               .cols = 34,
                               .input = 0,
                               .output = 0,
                               .method = 0,
                               .pattern = 0,
                               .wild = 0,
                               .inputOffset = 0,
                               .outputOffset = 0,
                               .blockRows = 4,
                               .blockCols = 16,
                               .content = 1,
                               .garbage = 0xA5,
                               .instructionSet = 1};

template <typename Change>
void Add(std::vector<Seed>& seeds, const std::string& name, Change change) {
  Header header = kPlainCase;
  change(header);
  seeds.push_back({name, Encode(header, Bytes{0, 255, 128, 127, 3, 200})});
}

}  // namespace

std::vector<Seed> Seeds() {
  std::vector<Seed> seeds;
  for (std::uint8_t method = 0; method < 6; ++method) {
    for (std::uint8_t kind = 0; kind < 16; ++kind) {
      Add(seeds, "method-" + std::to_string(method) + "-kind-" + std::to_string(kind),
          [&](Header& h) {
            h.method = method;
            h.input = kind % 2;
            h.output = static_cast<std::uint8_t>(kind / 2 + method);
            h.pattern = static_cast<std::uint8_t>(kind + method);
            h.cols = static_cast<std::uint16_t>(2 + kind * kind / 2 * 2);
            h.rows = static_cast<std::uint16_t>(32 - 2 * kind);
            h.instructionSet = kind;
            h.content = kind;
            h.inputOffset = static_cast<std::uint8_t>(kind % 3);
            h.outputOffset = static_cast<std::uint8_t>(kind % 5);
          });
    }
  }
  constexpr std::uint8_t kWild[] = {1, 2, 4, 8, 16, 32, 48, 64, 128, 192, 255};
  for (const std::uint8_t wild : kWild) {
    for (const std::int32_t word : {-1, 0, 1, 6, 10, 2147483647, 2147483646, -2147483647 - 1}) {
      Add(seeds, "wild-" + std::to_string(wild) + "-" + std::to_string(word), [&](Header& h) {
        h.wild = wild;
        h.word = word;
      });
    }
  }
  return seeds;
}

}  // namespace Korvex2::Fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Korvex2::Fuzz::Run({data, size});
  return 0;
}
