// Memory runs out at every allocation of every conversion in turn: nothing crashes, nothing leaks,
// and the result is the one that is defined for a step that found no memory.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

#include "reference/Routes.h"
#include "support/Allocation.h"
#include "support/Comparison.h"

namespace Korvex2::Test {
namespace {

using Of = AllocationFault::Of;
using Extent = AllocationFault::Extent;

// Of a class of its own, so that chains make whole temporary images.
class Subclass : public Image {};

struct Conversion {
  Reference::Format source;
  Reference::Format target;
  unsigned tile = 1;
  unsigned method = 2;
  bool subclasses = false;
};

constexpr unsigned kRows = 6;
constexpr unsigned kCols = 10;

std::string Describe(const Conversion& c) {
  return std::string(Reference::FormatName(c.source)) + " -> " + Reference::FormatName(c.target) +
         ", tile " + std::to_string(c.tile) + ", method " + std::to_string(c.method) +
         (c.subclasses ? ", of a class of its own" : "");
}

template <typename Check>
void ForEachConversion(Check check) {
  for (const Reference::FormatRow& source : Reference::Formats()) {
    for (const Reference::FormatRow& target : Reference::Formats()) {
      for (const bool subclasses : {false, true}) {
        check(Conversion{source.value, target.value, 1, 2, subclasses});
        if (!Reference::IsRaw(source.value)) continue;
        check(Conversion{source.value, target.value, 0, 2, subclasses});
        check(Conversion{source.value, target.value, 5, 2, subclasses});
        for (const unsigned method : {1U, 3U, 4U, 5U, 6U, 7U}) {
          check(Conversion{source.value, target.value, 3, method, subclasses});
        }
      }
    }
  }
}

// Shaped with padding, so that a copy needs more than the packed destination has.
template <typename ImageType>
void Shape(const Conversion& c, ImageType& image) {
  const bool copy = c.source == c.target;
  const unsigned stride = Reference::RowBytes(kCols, Reference::BitsPerPixel(c.source)) + 3 * copy;
  ASSERT_EQ(image.SetDimensions(kRows, kCols, stride, static_cast<PixelFormat>(c.source),
                                static_cast<BayerTileFormat>(c.tile)),
            VORERROR_OK);
  image.SetColorProcessing(static_cast<ColorProcessingAlgorithm>(c.method));
  Fill(image.GetData(), image.GetDataSize(), Content::Random, c.source);
}

// One run of a conversion, into a new destination.
template <typename ImageType>
class Run {
 public:
  explicit Run(const Conversion& c) : m_conversion(c) { Shape(c, m_source); }

  // Without a fault; counts what is taken.
  void Plainly() {
    const std::size_t aligned = AlignedAllocations();
    const std::size_t ordinary = OrdinaryAllocations();
    m_error = Convert();
    pixelBuffers = AlignedAllocations() - aligned;
    otherAllocations = OrdinaryAllocations() - ordinary;
  }

  bool WithFault(Of kind, std::size_t which, Extent extent) {
    const AllocationFault fault(kind, which, extent);
    m_error = Convert();
    return fault.Happened();
  }

  // From the so manieth pixel buffer on, and for no error at all.
  bool WithoutAnyMemoryFrom(std::size_t which) {
    const AllocationFault buffers(Of::PixelBuffers, which, Extent::AllFollowing);
    const AllocationFault others(Of::AnythingElse, 1, Extent::AllFollowing);
    m_error = Convert();
    return buffers.Happened();
  }

  const Image& source() const { return m_source; }
  const Image& destination() const { return m_destination; }
  const Error& error() const { return m_error; }

  std::size_t pixelBuffers = 0;
  std::size_t otherAllocations = 0;

 private:
  Error Convert() {
    return m_converter.Convert(&m_source, static_cast<PixelFormat>(m_conversion.target),
                               &m_destination);
  }

  Conversion m_conversion;
  ImageConverter m_converter;
  ImageType m_source;
  ImageType m_destination;
  Error m_error;
};

// --- What the oracle says of the same lack.

// Temporaries and the engine's line buffers, in the order in which the oracle asks for them.
struct OracleMemory {
  std::size_t asked = 0;
  std::size_t first = SIZE_MAX;
  std::size_t last = SIZE_MAX;

  bool Grant() {
    ++asked;
    return asked < first || asked > last;
  }
};

OracleMemory* engineMemory = nullptr;

int EngineThatTakesMemory(int inputFormat, const std::uint8_t* input, int rows, int cols,
                          int outputFormat, std::uint8_t* output, int method, int pattern) {
  constexpr int kNoMemory = 5;
  return engineMemory->Grant()
             ? OracleEngine(inputFormat, input, rows, cols, outputFormat, output, method, pattern)
             : kNoMemory;
}

struct Expected {
  Reference::Outcome outcome;
  Reference::Frame frame;
  std::size_t asked = 0;
};

Expected Oracle(const Conversion& c, const Image& source, std::size_t first, Extent extent,
                const Image& destination = Image()) {
  OracleMemory memory{0, first, extent == Extent::One ? first : SIZE_MAX};
  engineMemory = &memory;
  Reference::Converter oracle;
  oracle.defaultMethod = static_cast<std::uint32_t>(Image::GetDefaultColorProcessing());
  oracle.engine = EngineThatTakesMemory;
  oracle.hasMemory = [&memory] { return memory.Grant(); };
  oracle.littleEndian = Probe().IsLittleEndian();
  const Reference::Frame frame = FrameOf(source);
  Expected expected;
  expected.frame = FrameOf(destination);
  expected.outcome = oracle.Convert(&frame, c.target, &expected.frame);
  expected.asked = memory.asked;
  return expected;
}

// Whether there is memory to say why: without it an error has its code alone.
enum class Words { Told, Lost };

Reference::Outcome Answered(const Reference::Outcome& outcome, Words words) {
  return words == Words::Told ? outcome : Reference::Outcome{outcome.code, "", false, 0};
}

// The image that was to be written could not be shaped: nothing is there, and the reason is told.
testing::AssertionResult TellsRefusal(const Error& error, const Image& destination, Words words) {
  const Reference::Outcome refusal{Reference::kFailed, Reference::kRefusedShape, true,
                                   VORERROR_MEMORY_ALLOCATION_FAILED};
  if (!(OutcomeOf(error) == Answered(refusal, words))) {
    return testing::AssertionFailure() << "answers " << error.GetTrace();
  }
  return destination.GetData() == nullptr ? testing::AssertionSuccess()
                                          : testing::AssertionFailure() << "has a buffer";
}

// A walked chain asks for fewer temporaries than the oracle: then any one of them may be missing.
template <typename ImageType>
testing::AssertionResult IsDefined(const Conversion& c, const Run<ImageType>& run,
                                   std::size_t which, std::size_t taken, Extent extent,
                                   Words words = Words::Told) {
  if (which == 1) return TellsRefusal(run.error(), run.destination(), words);
  if (c.source == c.target) {
    return run.error() == VORERROR_MEMORY_ALLOCATION_FAILED
               ? testing::AssertionSuccess()
               : testing::AssertionFailure() << "a copy answers " << run.error();
  }
  const std::size_t asked = Oracle(c, run.source(), SIZE_MAX, extent).asked;
  if (taken > asked + 1) {
    return testing::AssertionFailure() << taken << " buffers taken, at most " << asked + 1;
  }
  const bool exactly = taken == asked + 1;
  testing::AssertionResult result = testing::AssertionFailure() << "no temporary";
  for (std::size_t missing = exactly ? which - 1 : 1; missing <= asked; ++missing) {
    const Expected expected = Oracle(c, run.source(), missing, extent);
    result = SameResult(Answered(expected.outcome, words), expected.frame, run.error(),
                        run.destination());
    if (result || exactly) return result;
  }
  return result;
}

int injected = 0;

template <typename ImageType>
void FailEachPixelBuffer(const Conversion& c) {
  Run<ImageType> plain(c);
  plain.Plainly();
  for (const Extent extent : {Extent::One, Extent::AllFollowing}) {
    for (std::size_t which = 1; which <= plain.pixelBuffers; ++which) {
      const std::ptrdiff_t outstanding = OutstandingAllocations();
      {
        Run<ImageType> run(c);
        ASSERT_TRUE(run.WithFault(Of::PixelBuffers, which, extent));
        ASSERT_TRUE(IsDefined(c, run, which, plain.pixelBuffers, extent))
            << "buffer " << which << " of " << plain.pixelBuffers;
      }
      ASSERT_EQ(OutstandingAllocations(), outstanding) << "leaked";
      ++injected;
    }
  }
}

// Only errors take memory besides pixels: without it they lose their words and keep their code.
template <typename ImageType>
void FailEachOtherAllocation(const Conversion& c) {
  Run<ImageType> plain(c);
  plain.Plainly();
  for (const Extent extent : {Extent::One, Extent::AllFollowing}) {
    for (std::size_t which = 1; which <= plain.otherAllocations; ++which) {
      const std::ptrdiff_t outstanding = OutstandingAllocations();
      {
        Run<ImageType> run(c);
        ASSERT_TRUE(run.WithFault(Of::AnythingElse, which, extent));
        ASSERT_EQ(run.error().GetType(), plain.error().GetType());
        const std::string_view message = run.error().GetMessage();
        ASSERT_TRUE(message.empty() || message == plain.error().GetMessage()) << message;
        ASSERT_EQ(run.destination().GetDataSize(), plain.destination().GetDataSize());
        ASSERT_EQ(std::memcmp(run.destination().GetData(), plain.destination().GetData(),
                              plain.destination().GetDataSize()),
                  0);
      }
      ASSERT_EQ(OutstandingAllocations(), outstanding) << "leaked";
      ++injected;
    }
  }
}

template <typename ImageType>
void FailEverythingFromEachPixelBufferOn(const Conversion& c) {
  Run<ImageType> plain(c);
  plain.Plainly();
  for (std::size_t which = 1; which <= plain.pixelBuffers; ++which) {
    const std::ptrdiff_t outstanding = OutstandingAllocations();
    {
      Run<ImageType> run(c);
      ASSERT_TRUE(run.WithoutAnyMemoryFrom(which));
      ASSERT_TRUE(IsDefined(c, run, which, plain.pixelBuffers, Extent::AllFollowing, Words::Lost))
          << "buffer " << which << " of " << plain.pixelBuffers;
      ASSERT_STREQ(run.error().GetMessage(), "");
    }
    ASSERT_EQ(OutstandingAllocations(), outstanding) << "leaked";
    ++injected;
  }
}

class Faults : public testing::Test {
 protected:
  void SetUp() override { injected = 0; }
  void TearDown() override { RecordProperty("faults", injected); }
};

TEST_F(Faults, AtEachPixelBufferGiveTheDefinedResult) {
  ForEachConversion([](const Conversion& c) {
    if (HasFatalFailure()) return;
    SCOPED_TRACE(Describe(c));
    c.subclasses ? FailEachPixelBuffer<Subclass>(c) : FailEachPixelBuffer<Image>(c);
  });
  EXPECT_GT(injected, 1000);
}

TEST_F(Faults, AtEachOtherAllocationTakeNoMoreThanTheWords) {
  ForEachConversion([](const Conversion& c) {
    if (HasFatalFailure()) return;
    SCOPED_TRACE(Describe(c));
    c.subclasses ? FailEachOtherAllocation<Subclass>(c) : FailEachOtherAllocation<Image>(c);
  });
  EXPECT_GT(injected, 1000);
}

TEST_F(Faults, OfAllMemoryFromAnyBufferOnGiveTheDefinedCode) {
  ForEachConversion([](const Conversion& c) {
    if (HasFatalFailure()) return;
    SCOPED_TRACE(Describe(c));
    c.subclasses ? FailEverythingFromEachPixelBufferOn<Subclass>(c)
                 : FailEverythingFromEachPixelBufferOn<Image>(c);
  });
  EXPECT_GT(injected, 1000);
}

// The step that finds no memory writes nothing, and nobody clears what the destination held.
TEST_F(Faults, LeaveAnEarlierFrameWhereNoStepWrites) {
  int kept = 0;
  ForEachConversion([&kept](const Conversion& c) {
    const char* routine = Reference::Dispatch(c.source, c.target);
    if (HasFatalFailure() || routine == nullptr || *routine == 0) return;
    SCOPED_TRACE(Describe(c));
    for (std::size_t which = 1;; ++which) {
      Subclass source;
      Shape(c, source);
      Image destination;
      ASSERT_EQ(destination.SetDimensions(
                    kRows, kCols, Reference::RowBytes(kCols, Reference::BitsPerPixel(c.target)),
                    static_cast<PixelFormat>(c.target), NONE),
                VORERROR_OK);
      std::memset(destination.GetData(), 0x55, destination.GetDataSize());
      const Image before = destination;
      Error error;
      {
        const AllocationFault fault(Of::PixelBuffers, which);
        error = ImageConverter().Convert(&source, static_cast<PixelFormat>(c.target), &destination);
        if (!fault.Happened()) return;
      }
      const std::size_t asked = Oracle(c, source, SIZE_MAX, Extent::One).asked;
      testing::AssertionResult result = testing::AssertionFailure() << "no temporary";
      for (std::size_t missing = 1; missing <= asked && !result; ++missing) {
        const Expected expected = Oracle(c, source, missing, Extent::One, before);
        result = SameResult(expected.outcome, expected.frame, error, destination);
      }
      ASSERT_TRUE(result) << "buffer " << which;
      kept += std::memcmp(before.GetData(), destination.GetData(), before.GetDataSize()) == 0;
      ++injected;
    }
  });
  EXPECT_GT(injected, 100);
  EXPECT_GT(kept, 100);
}

TEST_F(Faults, AtTheSharedInstanceGiveNullAndCountNoUser) {
  {
    const AllocationFault fault(Of::AnythingElse, 1);
    ASSERT_EQ(ImageConverter::getInstance(), nullptr);
    ASSERT_TRUE(fault.Happened());
  }
  ImageConverter* const instance = ImageConverter::getInstance();
  ASSERT_NE(instance, nullptr);
  ImageConverter::releaseInstance();
}

}  // namespace
}  // namespace Korvex2::Test
