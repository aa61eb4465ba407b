#pragma once

/// The converter with its protected members opened for tests.

#include <span>
#include <string_view>

#include "ImageConverterARMStub.h"

namespace Korvex2::Test {

class Probe : public ImageConverter {
 public:
  Probe() = default;
  /// A converter that believes its host to be of this byte order.
  explicit Probe(bool littleEndian) { m_LittleEndian = littleEndian; }

  bool IsLittleEndian() const { return m_LittleEndian; }

#define KORVEX2_KERNEL(routine, ...) using ImageConverter::routine;
#define KORVEX2_WRAPPER(routine, ...) using ImageConverter::routine;
#define KORVEX2_CHAIN(routine, ...) using ImageConverter::routine;
#define KORVEX2_DEMOSAIC(routine) using ImageConverter::routine;
#include "Routines.def"

  using ImageConverter::Clamp_8bit;
  using ImageConverter::ConvertToBGR;
  using ImageConverter::ConvertToBGR16;
  using ImageConverter::ConvertToBGRU;
  using ImageConverter::ConvertToBGRU16;
  using ImageConverter::ConvertToMono12;
  using ImageConverter::ConvertToMono16;
  using ImageConverter::ConvertToMono8;
  using ImageConverter::ConvertToRAW12;
  using ImageConverter::ConvertToRAW16;
  using ImageConverter::ConvertToRAW8;
  using ImageConverter::ConvertToRGB;
  using ImageConverter::ConvertToRGB16;
  using ImageConverter::ConvertToRGBU;
  using ImageConverter::ConvertToYUV411;
  using ImageConverter::ConvertToYUV422;
  using ImageConverter::ConvertToYUV444;
  using ImageConverter::GetNumberOfPixels;
  using ImageConverter::ProcessImage;
  using ImageConverter::TempImage;
  using ImageConverter::TranslateToBayerMethod;
  using ImageConverter::TranslateToBayerPattern;
  using ImageConverter::TranslateToBayerPixelFormat;

  using Member = Error (ImageConverter::*)(const Image*, Image*) const;

  struct NamedMember {
    std::string_view name;
    Member member;
  };

  /// Every conversion routine.
  static std::span<const NamedMember> Routines();

  using Target = Error (ImageConverter::*)(const Image*, Image*);

  struct TargetMember {
    PixelFormat target;
    Target member;
  };

  /// The ConvertTo<Target> members.
  static std::span<const TargetMember> Targets();

  Error Call(Member member, const Image* pSrc, Image* pDst) const {
    return (this->*member)(pSrc, pDst);
  }
  Error Call(Target member, const Image* pSrc, Image* pDst) {
    return (this->*member)(pSrc, pDst);
  }
  /// A routine by its name, which must exist.
  Error Call(std::string_view name, const Image* pSrc, Image* pDst) const;
};

}  // namespace Korvex2::Test
