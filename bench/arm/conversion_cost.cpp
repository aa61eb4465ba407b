// Runs one conversion a number of times, by us or by libyuv, for count_instructions.c to count.
//   conversion_cost                          the rows: name, pixels of a frame, libyuv's calls
//   conversion_cost ours|libyuv ROW TIMES

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string_view>
#include <vector>

#include "Korvex2.h"

#if KORVEX2_BENCH_LIBYUV
#include <libyuv.h>
#endif

namespace {

using namespace Korvex2;

constexpr int kRows = 64;
constexpr int kCols = 1920;
constexpr int kPixels = kRows * kCols;

struct Buffers {
  const std::uint8_t* from;
  std::uint8_t* between;  // room for four bytes a pixel
  std::uint8_t* to;
};

using Call = void (*)(const Buffers& b);

#if KORVEX2_BENCH_LIBYUV

template <auto Function, int From, int To>
void Packed(const Buffers& b) {
  Function(b.from, From * kCols, b.to, To * kCols, kCols, kRows);
}

// RGB of ours is libyuv's RAW, BGR its RGB24, BGRU its ARGB.
void UyvyToRgb(const Buffers& b) {
  libyuv::UYVYToARGB(b.from, 2 * kCols, b.between, 4 * kCols, kCols, kRows);
  libyuv::ARGBToRAW(b.between, 4 * kCols, b.to, 3 * kCols, kCols, kRows);
}

void RgbToUyvy(const Buffers& b) {
  libyuv::RAWToARGB(b.from, 3 * kCols, b.between, 4 * kCols, kCols, kRows);
  libyuv::ARGBToUYVY(b.between, 4 * kCols, b.to, 2 * kCols, kCols, kRows);
}

void Yuv444ToRgb(const Buffers& b) {
  std::uint8_t* const u = b.between;
  std::uint8_t* const y = u + kPixels;
  std::uint8_t* const v = y + kPixels;
  libyuv::SplitRGBPlane(b.from, 3 * kCols, u, kCols, y, kCols, v, kCols, kCols, kRows);
  // U and V changed about, with the constants for that: red comes first.
  libyuv::I444ToRGB24Matrix(y, kCols, v, kCols, u, kCols, b.to, 3 * kCols,
                            &libyuv::kYvuJPEGConstants, kCols, kRows);
}

// MergeRGBPlane would do it in one call, but in a plain loop.
void GreyToRgb(const Buffers& b) {
  libyuv::J400ToARGB(b.from, kCols, b.between, 4 * kCols, kCols, kRows);
  libyuv::ARGBToRAW(b.between, 4 * kCols, b.to, 3 * kCols, kCols, kRows);
}

constexpr int kScale16To8 = 256;    // of 24 bits: the high byte
constexpr int kScale8To16 = 65536;  // the byte in both halves

template <int Channels>
void Narrow(const Buffers& b) {
  libyuv::Convert16To8Plane(reinterpret_cast<const std::uint16_t*>(b.from), Channels * kCols, b.to,
                            Channels * kCols, kScale16To8, Channels * kCols, kRows);
}

template <int Channels>
void Widen(const Buffers& b) {
  libyuv::Convert8To16Plane(b.from, Channels * kCols, reinterpret_cast<std::uint16_t*>(b.to),
                            Channels * kCols, kScale8To16, Channels * kCols, kRows);
}

#define PEER(CALL, NAME) CALL, NAME
#else
#define PEER(CALL, NAME) nullptr, nullptr
#endif

struct Row {
  const char* name;
  PixelFormat from, to;
  Call peer;
  const char* peerName;
};

// clang-format off
constexpr Row kTable[] = {
    {"YUV422-RGB",   PIXEL_FORMAT_422YUV8, PIXEL_FORMAT_RGB8,    PEER(UyvyToRgb, "UYVYToARGB, ARGBToRAW")},
    {"YUV422-BGRU",  PIXEL_FORMAT_422YUV8, PIXEL_FORMAT_BGRU,    PEER((Packed<libyuv::UYVYToARGB, 2, 4>), "UYVYToARGB")},
    {"RGB-YUV422",   PIXEL_FORMAT_RGB8,    PIXEL_FORMAT_422YUV8, PEER(RgbToUyvy, "RAWToARGB, ARGBToUYVY")},
    {"YUV411-RGB",   PIXEL_FORMAT_411YUV8, PIXEL_FORMAT_RGB8,    nullptr, nullptr},
    {"YUV444-RGB",   PIXEL_FORMAT_444YUV8, PIXEL_FORMAT_RGB8,    PEER(Yuv444ToRgb, "SplitRGBPlane, I444ToRGB24Matrix")},
    {"RGB-BGR",      PIXEL_FORMAT_RGB8,    PIXEL_FORMAT_BGR,     PEER((Packed<libyuv::RAWToRGB24, 3, 3>), "RAWToRGB24")},
    {"RGB-BGRU",     PIXEL_FORMAT_RGB8,    PIXEL_FORMAT_BGRU,    PEER((Packed<libyuv::RAWToARGB, 3, 4>), "RAWToARGB")},
    {"BGRU-BGR",     PIXEL_FORMAT_BGRU,    PIXEL_FORMAT_BGR,     PEER((Packed<libyuv::ARGBToRGB24, 4, 3>), "ARGBToRGB24")},
    {"RGB-MONO8",    PIXEL_FORMAT_RGB8,    PIXEL_FORMAT_MONO8,   PEER((Packed<libyuv::RAWToJ400, 3, 1>), "RAWToJ400")},
    {"BGRU-MONO8",   PIXEL_FORMAT_BGRU,    PIXEL_FORMAT_MONO8,   PEER((Packed<libyuv::ARGBToJ400, 4, 1>), "ARGBToJ400")},
    {"MONO8-RGB",    PIXEL_FORMAT_MONO8,   PIXEL_FORMAT_RGB8,    PEER(GreyToRgb, "J400ToARGB, ARGBToRAW")},
    {"MONO8-BGRU",   PIXEL_FORMAT_MONO8,   PIXEL_FORMAT_BGRU,    PEER((Packed<libyuv::J400ToARGB, 1, 4>), "J400ToARGB")},
    {"RGB16-RGB",    PIXEL_FORMAT_RGB16,   PIXEL_FORMAT_RGB8,    PEER(Narrow<3>, "Convert16To8Plane")},
    {"RGB-RGB16",    PIXEL_FORMAT_RGB8,    PIXEL_FORMAT_RGB16,   PEER(Widen<3>, "Convert8To16Plane (plain loop)")},
    {"MONO16-MONO8", PIXEL_FORMAT_MONO16,  PIXEL_FORMAT_MONO8,   PEER(Narrow<1>, "Convert16To8Plane")},
    {"MONO8-MONO16", PIXEL_FORMAT_MONO8,   PIXEL_FORMAT_MONO16,  PEER(Widen<1>, "Convert8To16Plane (plain loop)")},
    {"RGB16-MONO16", PIXEL_FORMAT_RGB16,   PIXEL_FORMAT_MONO16,  nullptr, nullptr},
    {"MONO12-MONO16", PIXEL_FORMAT_MONO12, PIXEL_FORMAT_MONO16,  nullptr, nullptr},
    {"MONO12-MONO8", PIXEL_FORMAT_MONO12,  PIXEL_FORMAT_MONO8,   nullptr, nullptr},
};
// clang-format on

const Row* Find(std::string_view name) {
  for (const Row& row : kTable) {
    if (name == row.name) return &row;
  }
  return nullptr;
}

// Shaped for a format and filled with noise, which holds no runs of equal pixels.
Image Frame(PixelFormat format) {
  Image image;
  const unsigned bits = Image::DetermineBitsPerPixel(format);
  if (image.SetDimensions(kRows, kCols, kCols * bits / 8, format, NONE) != VORERROR_OK)
    std::abort();
  std::uint32_t state = 1;
  for (unsigned i = 0; i < image.GetDataSize(); ++i) {
    state = state * 1664525 + 1013904223;
    image.GetData()[i] = static_cast<unsigned char>(state >> 24);
  }
  return image;
}

int Run(const Row& row, bool ours, int times) {
  const Image from = Frame(row.from);
  Image to = Frame(row.to);
  std::vector<std::uint8_t> between(4UL * kPixels);
  const Buffers buffers = {from.GetData(), between.data(), to.GetData()};
  ImageConverter converter;
  for (int i = 0; i < times; ++i) {
    if (ours) {
      if (converter.Convert(&from, row.to, &to) != VORERROR_OK) return 1;
    } else {
      row.peer(buffers);
    }
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 1) {
    for (const Row& row : kTable) {
      std::printf("%s\t%d\t%s\n", row.name, kPixels, row.peerName == nullptr ? "" : row.peerName);
    }
    return 0;
  }
  const std::string_view whose = argv[1];
  const Row* const row = argc == 4 ? Find(argv[2]) : nullptr;
  const bool ours = whose == "ours";
  if (row == nullptr || (!ours && (whose != "libyuv" || row->peer == nullptr))) {
    std::cerr << "usage: conversion_cost [ours|libyuv ROW TIMES]\n";
    return 2;
  }
  return Run(*row, ours, std::atoi(argv[3]));
}
