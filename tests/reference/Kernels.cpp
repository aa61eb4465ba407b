#include "reference/Kernels.h"

#include <cstring>

namespace Reference {
namespace {

// Words of the host, wherever they lie.
std::uint16_t Load16(const std::uint8_t* p) {
  std::uint16_t word;
  std::memcpy(&word, p, sizeof word);
  return word;
}

std::uint32_t Load32(const std::uint8_t* p) {
  std::uint32_t word;
  std::memcpy(&word, p, sizeof word);
  return word;
}

void Store16(std::uint8_t* p, unsigned value) {
  const auto word = static_cast<std::uint16_t>(value);
  std::memcpy(p, &word, sizeof word);
}

std::uint8_t Low8(std::uint32_t value) {
  return static_cast<std::uint8_t>(value & 0xFF);
}

// --- Channel layout: each channel is read immediately before it is written.

void AddAlphaChannel_8bit(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 1) {
    d[0] = s[0];
    d[1] = s[1];
    d[2] = s[2];
    d[3] = 255;
    s += 3;
    d += 4;
  }
}

void AddAlphaChannel_16bit(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 1) {
    Store16(d + 0, Load16(s + 0));
    Store16(d + 2, Load16(s + 2));
    Store16(d + 4, Load16(s + 4));
    Store16(d + 6, 65535);
    s += 6;
    d += 8;
  }
}

void DropAlphaChannel_8bit(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 1) {
    d[0] = s[0];
    d[1] = s[1];
    d[2] = s[2];
    s += 4;
    d += 3;
  }
}

void DropAlphaChannel_16bit(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 1) {
    Store16(d + 0, Load16(s + 0));
    Store16(d + 2, Load16(s + 2));
    Store16(d + 4, Load16(s + 4));
    s += 8;
    d += 6;
  }
}

void Truncate(const Run& run, unsigned channels) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 1) {
    for (unsigned c = 0; c < channels; ++c) d[c] = Low8(Load16(s + 2 * c) >> 8U);
    s += 2 * channels;
    d += channels;
  }
}

void Truncate_16To8_3Channel(const Run& run) {
  Truncate(run, 3);
}

void Truncate_16To8_4Channel(const Run& run) {
  Truncate(run, 4);
}

void Pad(const Run& run, unsigned channels) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 1) {
    for (unsigned c = 0; c < channels; ++c) {
      const unsigned v = s[c];
      Store16(d + 2 * c, (v << 8) | v);
    }
    s += channels;
    d += 2 * channels;
  }
}

void Pad_8To16_3Channel(const Run& run) {
  Pad(run, 3);
}

void Pad_8To16_4Channel(const Run& run) {
  Pad(run, 4);
}

void Swap_C1C3_3Channel_8bit(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 1) {
    d[0] = s[2];
    d[1] = s[1];
    d[2] = s[0];
    s += 3;
    d += 3;
  }
}

void Swap_C1C3_3Channel_16bit(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 1) {
    Store16(d + 0, Load16(s + 4));
    Store16(d + 2, Load16(s + 2));
    Store16(d + 4, Load16(s + 0));
    s += 6;
    d += 6;
  }
}

void Swap_C1C3_4Channel_8bit(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  if (run.littleEndian) {
    for (std::uint32_t i = 0; i < run.pixels; i += 1) {
      const std::uint32_t w = Load32(s);
      d[0] = Low8(w >> 16);
      d[1] = Low8(w >> 8);
      d[2] = Low8(w);
      d[3] = Low8(w >> 24);
      s += 4;
      d += 4;
    }
  } else {
    for (std::uint32_t i = 0; i < run.pixels; i += 1) {
      const std::uint32_t w = Load32(s);
      d[0] = Low8(w >> 8);
      d[1] = Low8(w >> 16);
      d[2] = Low8(w >> 24);
      d[3] = Low8(w);
      s += 4;
      d += 4;
    }
  }
}

void Swap_C1C3_4Channel_16bit(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 1) {
    const std::uint32_t w1 = Load32(s);
    const std::uint32_t w2 = Load32(s + 4);
    Store16(d + 4, w1 >> 16);
    Store16(d + 2, w1 & 0xFFFF);
    Store16(d + 0, w2 >> 16);
    Store16(d + 6, w2 & 0xFFFF);
    s += 8;
    d += 8;
  }
}

// --- Depth of single channels: a group is read, then written.

void ConvertY8ToY12(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 2) {
    const unsigned a = s[0];
    const unsigned b = s[1];
    d[0] = Low8(a);
    d[2] = Low8(b);
    d[1] = Low8((b << 4) | (a & 0x0F));
    s += 2;
    d += 3;
  }
}

void ConvertY8ToY16(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 1) {
    const unsigned v = s[0];
    const unsigned sample = (v << 8) | v;
    d[0] = Low8(sample);
    d[1] = Low8(sample >> 8);
    s += 1;
    d += 2;
  }
}

void ConvertY12ToY8(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::size_t i = 0; i < run.destinationSize; ++i) d[i] = 0;
  for (std::uint32_t i = 0; i < run.pixels; i += 2) {
    const std::uint8_t first = s[0];
    const std::uint8_t second = s[2];
    d[0] = first;
    d[1] = second;
    s += 3;
    d += 2;
  }
}

void ConvertY12ToY16(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 2) {
    const unsigned b0 = s[0];
    const unsigned b1 = s[1];
    const unsigned b2 = s[2];
    if (run.littleEndian) {
      d[0] = Low8(b1 & 0xF0);
      d[1] = Low8(b0);
      d[2] = Low8(b1 << 4);
      d[3] = Low8(b2);
    } else {
      d[0] = Low8((b1 & 0x0F) << 4);
      d[1] = Low8(b0);
      d[2] = Low8(b1 & 0xF0);
      d[3] = Low8(b2);
    }
    s += 3;
    d += 4;
  }
}

void ConvertY16ToY8(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 1) {
    d[0] = s[1];
    s += 2;
    d += 1;
  }
}

void ConvertY16ToY12(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 2) {
    const unsigned s0 = s[0];
    const unsigned s1 = s[1];
    const unsigned s2 = s[2];
    const unsigned s3 = s[3];
    d[0] = Low8(s1);
    d[2] = Low8(s3);
    d[1] = Low8((s0 >> 4) | (s2 & 0xF0));
    s += 4;
    d += 3;
  }
}

// --- Grey and colour, 8 and 16 bits.

double Luma(double r, double g, double b) {
  const double red = r * 0.299;
  const double green = g * 0.587;
  const double blue = b * 0.114;
  const double redAndGreen = red + green;
  return redAndGreen + blue;
}

void ConvertY8ToRGB(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 1) {
    const std::uint8_t y = s[0];
    d[0] = y;
    d[1] = y;
    d[2] = y;
    s += 1;
    d += 3;
  }
}

void SpreadY16(const Run& run, bool alpha) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 1) {
    const std::uint8_t b0 = s[0];
    const std::uint8_t b1 = s[1];
    for (unsigned c = 0; c < 3; ++c) {
      d[2 * c] = run.littleEndian ? b0 : b1;
      d[2 * c + 1] = run.littleEndian ? b1 : b0;
    }
    if (alpha) {
      d[6] = 0xFF;
      d[7] = 0xFF;
    }
    s += 2;
    d += alpha ? 8 : 6;
  }
}

void ConvertY16ToRGB16(const Run& run) {
  SpreadY16(run, false);
}

void ConvertY16ToRGBU16(const Run& run) {
  SpreadY16(run, true);
}

void ConvertRGBToY8(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 1) {
    const double y = Luma(s[0], s[1], s[2]);
    d[0] = Low8(static_cast<unsigned>(y));
    s += 3;
    d += 1;
  }
}

void ConvertRGBToRGB16(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 1) {
    for (unsigned c = 0; c < 3; ++c) {
      const std::uint8_t v = s[c];
      d[2 * c] = v;
      d[2 * c + 1] = v;
    }
    s += 3;
    d += 6;
  }
}

void ConvertRGB16ToY16(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 1) {
    const float r = Load16(s + 0);
    const float g = Load16(s + 2);
    const float b = Load16(s + 4);
    const double y = Luma(static_cast<double>(r), static_cast<double>(g), static_cast<double>(b));
    Store16(d, static_cast<unsigned>(y) & 0xFFFF);
    s += 6;
    d += 2;
  }
}

void ConvertRGB16ToRGB(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  const unsigned high = run.littleEndian ? 1 : 0;
  for (std::uint32_t i = 0; i < run.pixels; i += 1) {
    d[0] = s[0 + high];
    d[1] = s[2 + high];
    d[2] = s[4 + high];
    s += 6;
    d += 3;
  }
}

// --- RGB and packed YUV.

struct Yuv {
  std::uint8_t y, u, v;
};

Yuv Encode(const std::uint8_t* rgb) {
  const double r = rgb[0];
  const double g = rgb[1];
  const double b = rgb[2];
  const double y = Luma(r, g, b);
  const double u = ((r * -0.169 + g * -0.331) + b * 0.5) + 128.0;
  const double v = ((r * 0.5 + g * -0.419) + b * -0.081) + 128.0;
  return {Low8(static_cast<unsigned>(y)), Low8(static_cast<unsigned>(u)),
          Low8(static_cast<unsigned>(v))};
}

void ConvertRGBToYUV444(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 1) {
    const Yuv p = Encode(s);
    d[0] = p.u;
    d[1] = p.y;
    d[2] = p.v;
    s += 3;
    d += 3;
  }
}

std::uint8_t MeanOfTwo(std::uint8_t a, std::uint8_t b) {
  const auto sum = static_cast<float>(a) + static_cast<float>(b);
  return Low8(static_cast<unsigned>(static_cast<double>(sum) / 2.0));
}

void ConvertRGBToYUV422(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 2) {
    const Yuv p0 = Encode(s);
    const Yuv p1 = Encode(s + 3);
    d[0] = MeanOfTwo(p0.u, p1.u);
    d[1] = p0.y;
    d[2] = MeanOfTwo(p0.v, p1.v);
    d[3] = p1.y;
    s += 6;
    d += 4;
  }
}

std::uint8_t MeanOfFour(int a, int b, int c, int e) {
  const auto sum = static_cast<float>(a + b + c + e);
  return Low8(static_cast<unsigned>(static_cast<double>(sum) / 4.0));
}

void ConvertRGBToYUV411(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 4) {
    const Yuv p0 = Encode(s);
    const Yuv p1 = Encode(s + 3);
    const Yuv p2 = Encode(s + 6);
    const Yuv p3 = Encode(s + 9);
    d[0] = MeanOfFour(p0.u, p1.u, p2.u, p3.u);
    d[1] = p0.y;
    d[2] = p1.y;
    d[3] = MeanOfFour(p0.v, p1.v, p2.v, p3.v);
    d[4] = p2.y;
    d[5] = p3.y;
    s += 12;
    d += 6;
  }
}

struct Chroma {
  std::int16_t rv, guv, bu;
};

Chroma ChromaTerms(std::uint8_t u, std::uint8_t v) {
  const double du = static_cast<int>(u) - 128;
  const double dv = static_cast<int>(v) - 128;
  const double rv = dv * 1.402;
  const double guv = (du * 0.344) + (dv * 0.714);
  const double bu = du * 1.772;
  return {static_cast<std::int16_t>(rv), static_cast<std::int16_t>(guv),
          static_cast<std::int16_t>(bu)};
}

void Decode(std::uint8_t y, const Chroma& c, std::uint8_t* rgb) {
  const int luma = y;
  rgb[0] = Clamp(static_cast<std::int16_t>(luma + c.rv));
  rgb[1] = Clamp(static_cast<std::int16_t>(luma - c.guv));
  rgb[2] = Clamp(static_cast<std::int16_t>(luma + c.bu));
}

void ConvertYUV444ToRGB(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 1) {
    const std::uint8_t u = s[0];
    const std::uint8_t y = s[1];
    const std::uint8_t v = s[2];
    Decode(y, ChromaTerms(u, v), d);
    s += 3;
    d += 3;
  }
}

void ConvertYUV422ToRGB(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 2) {
    const std::uint8_t u = s[0];
    const std::uint8_t y0 = s[1];
    const std::uint8_t v = s[2];
    const std::uint8_t y1 = s[3];
    const Chroma c = ChromaTerms(u, v);
    Decode(y0, c, d);
    Decode(y1, c, d + 3);
    s += 4;
    d += 6;
  }
}

void ConvertYUV411ToRGB(const Run& run) {
  const std::uint8_t* s = run.source;
  std::uint8_t* d = run.destination;
  for (std::uint32_t i = 0; i < run.pixels; i += 4) {
    const std::uint8_t u = s[0];
    const std::uint8_t y0 = s[1];
    const std::uint8_t y1 = s[2];
    const std::uint8_t v = s[3];
    const std::uint8_t y2 = s[4];
    const std::uint8_t y3 = s[5];
    const Chroma c = ChromaTerms(u, v);
    Decode(y0, c, d);
    Decode(y1, c, d + 3);
    Decode(y2, c, d + 6);
    Decode(y3, c, d + 9);
    s += 6;
    d += 12;
  }
}

// clang-format off
constexpr KernelRow kKernels[] = {
    // name                      loop                      pixels source destination
    {"AddAlphaChannel_8bit",     AddAlphaChannel_8bit,     1,     3,     4},
    {"AddAlphaChannel_16bit",    AddAlphaChannel_16bit,    1,     6,     8},
    {"DropAlphaChannel_8bit",    DropAlphaChannel_8bit,    1,     4,     3},
    {"DropAlphaChannel_16bit",   DropAlphaChannel_16bit,   1,     8,     6},
    {"Truncate_16To8_3Channel",  Truncate_16To8_3Channel,  1,     6,     3},
    {"Truncate_16To8_4Channel",  Truncate_16To8_4Channel,  1,     8,     4},
    {"Pad_8To16_3Channel",       Pad_8To16_3Channel,       1,     3,     6},
    {"Pad_8To16_4Channel",       Pad_8To16_4Channel,       1,     4,     8},
    {"Swap_C1C3_3Channel_8bit",  Swap_C1C3_3Channel_8bit,  1,     3,     3},
    {"Swap_C1C3_4Channel_8bit",  Swap_C1C3_4Channel_8bit,  1,     4,     4},
    {"Swap_C1C3_3Channel_16bit", Swap_C1C3_3Channel_16bit, 1,     6,     6},
    {"Swap_C1C3_4Channel_16bit", Swap_C1C3_4Channel_16bit, 1,     8,     8},
    {"ConvertY8ToY12",           ConvertY8ToY12,           2,     2,     3},
    {"ConvertY8ToY16",           ConvertY8ToY16,           1,     1,     2},
    {"ConvertY12ToY8",           ConvertY12ToY8,           2,     3,     2},
    {"ConvertY12ToY16",          ConvertY12ToY16,          2,     3,     4},
    {"ConvertY16ToY8",           ConvertY16ToY8,           1,     2,     1},
    {"ConvertY16ToY12",          ConvertY16ToY12,          2,     4,     3},
    {"ConvertY8ToRGB",           ConvertY8ToRGB,           1,     1,     3},
    {"ConvertY16ToRGB16",        ConvertY16ToRGB16,        1,     2,     6},
    {"ConvertY16ToRGBU16",       ConvertY16ToRGBU16,       1,     2,     8},
    {"ConvertRGBToY8",           ConvertRGBToY8,           1,     3,     1},
    {"ConvertRGBToRGB16",        ConvertRGBToRGB16,        1,     3,     6},
    {"ConvertRGB16ToY16",        ConvertRGB16ToY16,        1,     6,     2},
    {"ConvertRGB16ToRGB",        ConvertRGB16ToRGB,        1,     6,     3},
    {"ConvertRGBToYUV444",       ConvertRGBToYUV444,       1,     3,     3},
    {"ConvertRGBToYUV422",       ConvertRGBToYUV422,       2,     6,     4},
    {"ConvertRGBToYUV411",       ConvertRGBToYUV411,       4,     12,    6},
    {"ConvertYUV444ToRGB",       ConvertYUV444ToRGB,       1,     3,     3},
    {"ConvertYUV422ToRGB",       ConvertYUV422ToRGB,       2,     4,     6},
    {"ConvertYUV411ToRGB",       ConvertYUV411ToRGB,       4,     6,     12},
};
// clang-format on

std::size_t Steps(const KernelRow& kernel, std::uint32_t pixels) {
  return (static_cast<std::size_t>(pixels) + kernel.pixels - 1) / kernel.pixels;
}

}  // namespace

std::span<const KernelRow> Kernels() {
  return kKernels;
}

const KernelRow* FindKernel(const char* name) {
  for (const KernelRow& row : kKernels) {
    if (std::strcmp(row.name, name) == 0) return &row;
  }
  return nullptr;
}

std::size_t BytesRead(const KernelRow& kernel, std::uint32_t pixels) {
  return Steps(kernel, pixels) * kernel.sourceBytes;
}

std::size_t BytesWritten(const KernelRow& kernel, std::uint32_t pixels) {
  return Steps(kernel, pixels) * kernel.destinationBytes;
}

std::uint8_t Clamp(std::int16_t value) {
  if (value > 255) return 255;
  if (value < 0) return 0;
  return static_cast<std::uint8_t>(value);
}

}  // namespace Reference
