#include "CheckConversion.h"

#include <limits>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "InternalError.h"
#include "PixelFormats.h"
#include "Routes.h"

namespace Korvex2 {
namespace {

struct Reason {
  int line;
  ErrorType type;
  std::string sentence;
};

std::string NameOf(PixelFormat format) {
  const PixelFormatInfo* info = FindPixelFormat(format);
  return info == nullptr ? "an unknown format" : std::string(info->name);
}

std::string SizeOf(unsigned int rows, unsigned int cols) {
  return std::to_string(cols) + " x " + std::to_string(rows);
}

bool EngineKnows(ColorProcessingAlgorithm method) {
  return method >= NEAREST_NEIGHBOR && method <= DIRECTIONAL_FILTER && method != IPP;
}

// Follows the route of a pair and collects what will go wrong on it.
class Examination {
 public:
  Examination(const Image& source, PixelFormat target) : m_source(source), m_target(target) {
    source.GetDimensions(&m_rows, &m_cols, &m_stride, &m_format, &m_tile);
  }

  Error Run() {
    if (m_source.GetData() == nullptr) {
      Add(__LINE__, VORERROR_INVALID_PARAMETER, "The source image has no buffer.");
      return Result();
    }
    if (!Fits(m_target)) {
      Add(__LINE__, VORERROR_FAILED,
          "As " + NameOf(m_target) + ", " + SizeOf(m_rows, m_cols) + " pixels exceed 4 GiB - 1.");
    }
    if (m_format == m_target) {
      ExamineCopy();
    } else {
      FollowRoute();
    }
    return Result();
  }

 private:
  // A copy takes the source's stride along.
  void ExamineCopy() {
    if (Image::CheckDimensions(m_rows, m_cols, m_stride, m_format) != VORERROR_OK) {
      Add(__LINE__, VORERROR_INVALID_PARAMETER,
          "With a stride of " + std::to_string(m_stride) + " bytes, " + SizeOf(m_rows, m_cols) +
              " pixels exceed 4 GiB - 1.");
    }
  }

  void FollowRoute() {
    const RoutineInfo* routine = FindRoute(m_format, m_target);
    if (routine == nullptr) {
      Add(__LINE__, VORERROR_INVALID_PARAMETER,
          NameOf(m_format) + " cannot be converted to " + NameOf(m_target) + ".");
      return;
    }
    Follow(*routine, m_format, m_source.GetColorProcessing(), true);
  }

  // `reports`: whether a failure of the routine reaches the caller of Convert.
  void Follow(const RoutineInfo& info, PixelFormat format, ColorProcessingAlgorithm method,
              bool reports) {
    const bool lastReports = reports && info.result == RoutineInfo::Result::LastStep;
    switch (info.kind) {
      case RoutineInfo::Kind::Kernel:
        return;
      case RoutineInfo::Kind::Wrapper:
        return Follow(*info.lastStep, format, method, lastReports);
      case RoutineInfo::Kind::Chain:
        if (!Fits(info.temporary)) {
          Add(__LINE__, lastReports ? VORERROR_FAILED : VORERROR_IMAGE_CONVERSION_FAILED,
              "The way to " + NameOf(m_target) + " leads through " + NameOf(info.temporary) +
                  ", in which " + SizeOf(m_rows, m_cols) + " pixels exceed 4 GiB - 1.");
        }
        Follow(*info.firstStep, format, method, false);
        return Follow(*info.lastStep, info.temporary, DEFAULT, lastReports);
      case RoutineInfo::Kind::Demosaic:
        return ExamineMosaic(format, method, reports);
    }
  }

  void ExamineMosaic(PixelFormat format, ColorProcessingAlgorithm method, bool reports) {
    const auto failure = [reports](ErrorType reported) {
      return reports ? reported : VORERROR_IMAGE_CONVERSION_FAILED;
    };
    if (m_tile == NONE) {
      return ExamineGrey(format, "tile NONE");
    }
    if (m_tile < NONE || m_tile > BGGR) {
      Add(__LINE__, failure(VORERROR_INVALID_PARAMETER),
          "Bayer tile " + std::to_string(static_cast<int>(m_tile)) +
              " is unknown; it must be NONE, RGGB, GRBG, GBRG or BGGR.");
    }
    const ColorProcessingAlgorithm effective =
        method == DEFAULT ? Image::GetDefaultColorProcessing() : method;
    WarnOfIgnoredMethod(effective);
    if (effective == NO_COLOR_PROCESSING) {
      return ExamineGrey(format, "NO_COLOR_PROCESSING");
    }
    if (!EngineKnows(effective)) {
      Add(__LINE__, failure(VORERROR_INVALID_PARAMETER),
          "Color processing " + std::to_string(static_cast<int>(effective)) +
              " is not available; it must be NO_COLOR_PROCESSING, NEAREST_NEIGHBOR, EDGE_SENSING, "
              "HQ_LINEAR, DIRECTIONAL_FILTER or RIGOROUS.");
    }
    ExamineSides(failure(VORERROR_FAILED));
  }

  void ExamineSides(ErrorType failure) {
    for (const unsigned int side : {m_rows, m_cols}) {
      if (side > static_cast<unsigned int>(std::numeric_limits<int>::max())) {
        Add(__LINE__, failure,
            "A mosaic has 2147483647 rows and columns at most; this one has " +
                std::to_string(side) + ".");
      }
    }
    if (m_rows == 0 || m_cols == 0) {
      return;
    }
    if (m_rows % 2 != 0) {
      Add(__LINE__, failure,
          "A mosaic has an even number of rows; this one has " + std::to_string(m_rows) + ".");
    }
    if (m_cols % 2 != 0) {
      Add(__LINE__, failure,
          "A mosaic has an even number of columns; this one has " + std::to_string(m_cols) + ".");
    }
  }

  // Without colour processing, samples are copied byte by byte, which makes a picture of 8-bit ones
  // only.
  void ExamineGrey(PixelFormat format, const char* why) {
    const bool empty = m_rows == 0 || m_cols == 0;
    if (FindPixelFormat(format)->IsDeep() && !empty) {
      Add(__LINE__, VORERROR_IMAGE_CONVERSION_FAILED,
          "With " + std::string(why) + ", " + NameOf(m_format) +
              " is shown byte by byte, which is no picture. Grey frames are mono12 or mono16.");
    }
  }

  void WarnOfIgnoredMethod(ColorProcessingAlgorithm effective) {
    const ColorProcessingAlgorithm asked = m_source.GetColorProcessing();
    if (asked != DEFAULT && asked != effective) {
      Add(__LINE__, VORERROR_INVALID_SETTINGS,
          "The color processing of a " + NameOf(m_format) +
              " image is ignored in favour of the process default. Convert it to raw16, set the "
              "method there and convert that.");
    }
  }

  bool Fits(PixelFormat format) const {
    const unsigned int stride = PackedStride(m_cols, Image::DetermineBitsPerPixel(format));
    return Image::CheckDimensions(m_rows, m_cols, stride, format) == VORERROR_OK;
  }

  void Add(int line, ErrorType type, std::string sentence) {
    m_reasons.push_back({line, type, std::move(sentence)});
  }

  // Failures come before warnings, so that the code of the result is that of the worst.
  Error Result() const {
    Error error;
    for (const bool warnings : {true, false}) {
      for (auto reason = m_reasons.rbegin(); reason != m_reasons.rend(); ++reason) {
        if ((reason->type == VORERROR_INVALID_SETTINGS) == warnings) {
          error = InternalError(reason->line, "CheckConversion.cpp", __DATE__, __TIME__,
                                reason->type, InternalError(error), "%s", reason->sentence.c_str());
        }
      }
    }
    return error;
  }

  const Image& m_source;
  PixelFormat m_target;
  PixelFormat m_format = UNSPECIFIED_PIXEL_FORMAT;
  unsigned int m_rows = 0;
  unsigned int m_cols = 0;
  unsigned int m_stride = 0;
  BayerTileFormat m_tile = Korvex2::NONE;
  std::vector<Reason> m_reasons;
};

}  // namespace

Error CheckConversion(const Image& source, PixelFormat target) noexcept try {
  return Examination(source, target).Run();
} catch (const std::bad_alloc&) {
  return InternalError(__LINE__, "CheckConversion.cpp", __DATE__, __TIME__,
                       VORERROR_MEMORY_ALLOCATION_FAILED,
                       "There is no memory to examine the conversion.");
} catch (...) {
  return InternalError(__LINE__, "CheckConversion.cpp", __DATE__, __TIME__, VORERROR_FAILED,
                       "The source image threw an exception.");
}

}  // namespace Korvex2
