#include "io/Pnm.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "io/Failure.h"

namespace Korvex2::Io {
namespace {

struct TupleType {
  std::string_view name;
  unsigned channels;
};

constexpr TupleType kTupleTypes[] = {
    {"GRAYSCALE", 1},
    {"GRAYSCALE_ALPHA", 2},
    {"RGB", 3},
    {"RGB_ALPHA", 4},
};

struct Header {
  char magic = 0;  // the digit after the P
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t channels = 0;
  std::uint32_t maximum = 0;

  bool IsText() const { return magic == '2' || magic == '3'; }
  unsigned bytesPerSample() const { return maximum > 255 ? 2 : 1; }
};

bool IsSpace(unsigned char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

class Parser {
 public:
  Parser(const Bytes& bytes, const std::string& path)
      : m_path(path), m_next(bytes.data.get()), m_end(m_next + bytes.size) {}

  std::size_t left() const { return static_cast<std::size_t>(m_end - m_next); }
  const unsigned char* next() const { return m_next; }

  [[noreturn]] void Fail(std::string_view what) const {
    throw Failure("{} is a damaged PNM file: {}", m_path, what);
  }

  Header ReadHeader() {
    Header header;
    const std::string_view magic = Word();
    if (magic.size() != 2 || magic[0] != 'P' || magic[1] < '1' || magic[1] > '7') {
      throw Failure("{} is not a PNM file", m_path);
    }
    header.magic = magic[1];
    if (header.magic == '1' || header.magic == '4') {
      throw Failure("{} is a bitmap (P{}); PGM, PPM and PAM files are read", m_path, header.magic);
    }
    header.magic == '7' ? ReadPamFields(header) : ReadPnmFields(header);
    Check(header);
    return header;
  }

  std::uint32_t Number() {
    const std::string_view word = Word();
    std::uint64_t value = 0;
    for (const char c : word) {
      if (c < '0' || c > '9') {
        Fail(fmt::format("'{}' stands where a number should", word.substr(0, 20)));
      }
      value = value * 10 + static_cast<std::uint64_t>(c - '0');
      if (value > 0xffffffffU) {
        Fail(fmt::format("the number {}... is too large", word.substr(0, 20)));
      }
    }
    if (word.empty()) {
      Fail("the file ends too early");
    }
    return static_cast<std::uint32_t>(value);
  }

 private:
  // The next word; blanks and comments before it are skipped.
  std::string_view Word() {
    while (m_next != m_end && (IsSpace(*m_next) || *m_next == '#')) {
      m_next = *m_next == '#' ? std::find(m_next, m_end, '\n') : m_next + 1;
    }
    const unsigned char* begin = m_next;
    m_next = std::find_if(m_next, m_end, [](unsigned char c) { return IsSpace(c) || c == '#'; });
    return {reinterpret_cast<const char*>(begin), static_cast<std::size_t>(m_next - begin)};
  }

  void SkipOne(bool (*expected)(unsigned char)) {
    if (m_next == m_end || !expected(*m_next)) {
      Fail("no blank ends the header");
    }
    ++m_next;
  }

  void ReadPnmFields(Header& header) {
    header.channels = header.magic == '2' || header.magic == '5' ? 1 : 3;
    header.width = Number();
    header.height = Number();
    header.maximum = Number();
    if (!header.IsText()) {
      SkipOne(IsSpace);
    }
  }

  void ReadPamFields(Header& header) {
    std::string_view tupleType;
    for (std::string_view field = Word(); field != "ENDHDR"; field = Word()) {
      if (field == "WIDTH") {
        header.width = Number();
      } else if (field == "HEIGHT") {
        header.height = Number();
      } else if (field == "DEPTH") {
        header.channels = Number();
      } else if (field == "MAXVAL") {
        header.maximum = Number();
      } else if (field == "TUPLTYPE") {
        tupleType = Word();
      } else {
        Fail(field.empty() ? "the header has no ENDHDR" : "a header field is unknown");
      }
    }
    SkipOne([](unsigned char c) { return c == '\n'; });
    for (const TupleType& known : kTupleTypes) {
      if (known.name == tupleType && known.channels != header.channels) {
        Fail(
            fmt::format("{} has {} channels, not {}", known.name, known.channels, header.channels));
      }
    }
  }

  void Check(const Header& header) {
    if (header.channels < 1 || header.channels > 4) {
      Fail(fmt::format("{} channels; 1 to 4 are read", header.channels));
    }
    if (header.maximum < 1 || header.maximum > 65535) {
      Fail(fmt::format("the largest sample is {}; 1 to 65535 are read", header.maximum));
    }
  }

  const std::string& m_path;
  const unsigned char* m_next;
  const unsigned char* m_end;
};

std::uint32_t Load(const unsigned char* sample, unsigned bytes) {
  return bytes == 1 ? sample[0] : static_cast<std::uint32_t>(sample[0] << 8 | sample[1]);
}

void Store(std::uint32_t value, unsigned char* sample, unsigned bytes) {
  sample[0] = static_cast<unsigned char>(bytes == 1 ? value : value >> 8);
  if (bytes == 2) {
    sample[1] = static_cast<unsigned char>(value);
  }
}

void ReadText(Parser& parser, const Header& header, Raster& raster) {
  unsigned char* sample = raster.Row(0);
  for (std::size_t left = raster.bytes.size; left > 0; left -= raster.bytesPerSample) {
    const std::uint32_t value = parser.Number();
    if (value > header.maximum) {
      parser.Fail(fmt::format("a sample is {}, above the largest, {}", value, header.maximum));
    }
    Store(value, sample, raster.bytesPerSample);
    sample += raster.bytesPerSample;
  }
}

void ScaleToFullRange(const Header& header, Raster& raster, const Parser& parser) {
  const std::uint32_t full = header.bytesPerSample() == 1 ? 255 : 65535;
  if (header.maximum == full) {
    return;
  }
  unsigned char* sample = raster.Row(0);
  for (std::size_t left = raster.bytes.size; left > 0; left -= raster.bytesPerSample) {
    const std::uint32_t value = Load(sample, raster.bytesPerSample);
    if (value > header.maximum) {
      parser.Fail(fmt::format("a sample is {}, above the largest, {}", value, header.maximum));
    }
    Store((value * full + header.maximum / 2) / header.maximum, sample, raster.bytesPerSample);
    sample += raster.bytesPerSample;
  }
}

// The memory that a header asks for is only taken when the file can fill it.
void RequireEnough(const Parser& parser, const Header& header, const std::string& path) {
  const std::uint64_t samples = std::uint64_t{header.width} * header.height;
  const std::uint64_t sampleSize = header.IsText() ? 1 : header.bytesPerSample();
  const std::uint64_t pixelSize = header.channels * sampleSize;
  if (samples > parser.left() / pixelSize) {
    throw Failure(
        "{} is truncated: {} x {} pixels of {} channels do not fit into the {} bytes after its "
        "header",
        path, header.width, header.height, header.channels, parser.left());
  }
}

void Write(std::string_view header, const Raster& raster, OutputFile& file) {
  file.Write(header.data(), header.size());
  file.Write(raster.Row(0), raster.bytes.size);
}

unsigned Maximum(const Raster& raster) {
  return raster.bytesPerSample == 1 ? 255 : 65535;
}

}  // namespace

Raster ReadPnm(const InputFile& file) {
  const Bytes& bytes = file.Read();
  Parser parser(bytes, file.path());
  const Header header = parser.ReadHeader();
  RequireEnough(parser, header, file.path());
  Raster raster =
      NewRaster(file.path(), header.width, header.height, header.channels, header.bytesPerSample());
  if (header.IsText()) {
    ReadText(parser, header, raster);
  } else {
    std::memcpy(raster.Row(0), parser.next(), raster.bytes.size);
  }
  ScaleToFullRange(header, raster, parser);
  return raster;
}

void WritePnm(const Raster& raster, OutputFile& file) {
  Write(fmt::format("P{}\n{} {}\n{}\n", raster.channels == 1 ? 5 : 6, raster.width, raster.height,
                    Maximum(raster)),
        raster, file);
}

void WritePam(const Raster& raster, OutputFile& file) {
  const auto* type = std::find_if(std::begin(kTupleTypes), std::end(kTupleTypes),
                                  [&](const auto& t) { return t.channels == raster.channels; });
  Write(fmt::format("P7\nWIDTH {}\nHEIGHT {}\nDEPTH {}\nMAXVAL {}\nTUPLTYPE {}\nENDHDR\n",
                    raster.width, raster.height, raster.channels, Maximum(raster), type->name),
        raster, file);
}

}  // namespace Korvex2::Io
