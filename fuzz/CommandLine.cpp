// The command line: any arguments, with anything on standard input, end in one of the exit codes, a
// failure in one line that says what was wrong and in a folder as it was before.

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <map>

#include "CommandLine.h"
#include "Folder.h"
#include "Fuzz.h"
#include "LimitedMemory.h"
#include "PixelFormats.h"
#include "io/Containers.h"
#include "terminal/Failure.h"

namespace Korvex2::Fuzz {
namespace {

using namespace Tool;

constexpr std::size_t kLargestBlock = std::size_t{1} << 20;
constexpr std::size_t kMostArguments = 40;

// A byte of the case from kFirstWord on stands for one of these.
constexpr unsigned kFirstWord = 0x80;
constexpr std::string_view kWords[] = {
    // clang-format off
    "convert", "chart", "mosaic", "demosaic-compare", "formats", "routes", "info",
    "guess", "diff", "bench", "completions", "man", "bash", "zsh", "fish",
    "--to", "--from", "--width", "--height", "--tile", "--method", "--json", "--quiet", "-q",
    "--help", "--version", "--out", "--sheet", "--picture", "--", "-h",
    "in.png", "in.pgm", "in.ppm", "in.pam", "in.raw", "in.tif", "in.dng", "missing.png",
    "out.png", "out.pgm", "out.ppm", "out.pam", "out.raw", "out.bin", "out", ".", "..",
    "mono8", "mono12", "mono16", "rgb8", "rgbu", "rgb16", "bgr", "bgru", "bgr16", "bgru16",
    "yuv411", "yuv422", "yuv444", "raw8", "raw12", "raw16", "BayerRG8", "Mono12Packed", "UYVY",
    "rggb", "grbg", "gbrg", "bggr", "none", "nearest", "edge", "hq_linear", "directional",
    "rigorous", "default", "16", "12", "0", "1", "-1", "4294967295", "4294967296", "=", "all",
    "--frames", "--skip", "--every", "--header-bytes", "--frame-bytes", "--resume", "--fail-fast",
    "--jobs", "--json-progress", "--format", "--best", "--amplify",
    "--crop", "--white-balance", "--stretch", "--gamma", "--black-level", "--scale", "file", "grey",
    "{index}.pgm", "{name}.raw", "in*.p?m", "in.npy", "out.npy", "out.tif", "out.y4m", "-", "y4m:-",
    "--size", "16x12", "--cpu", "plain", "--fps", "30000/1001",
    // clang-format on
};
static_assert(kFirstWord + std::size(kWords) <= 256);

// Arguments stand in lines, up to the first zero byte. None of them leads out of the folder.
std::vector<std::string> ArgumentsOf(std::span<const std::uint8_t> bytes) {
  std::vector<std::string> arguments = {"korvex2", ""};
  for (const std::uint8_t byte : bytes) {
    if (byte == '\n') {
      if (arguments.size() == kMostArguments) break;
      arguments.emplace_back();
    } else if (byte >= kFirstWord && byte - kFirstWord < std::size(kWords)) {
      arguments.back() += kWords[byte - kFirstWord];
    } else {
      arguments.back() += byte == '/' ? '_' : static_cast<char>(byte);
    }
  }
  return arguments;
}

// Puts bytes, as many as go through a pipe at once, on the standard input of the process.
void PutOnStandardInput(std::span<const std::uint8_t> bytes) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) Fail("cannot make a pipe");
  const std::size_t size = std::min<std::size_t>(bytes.size(), PIPE_BUF);
  if (write(ends[1], bytes.data(), size) != static_cast<ssize_t>(size)) Fail("a full pipe");
  close(ends[1]);
  dup2(ends[0], STDIN_FILENO);
  close(ends[0]);
  std::clearerr(stdin);
}

// What the process writes to a file descriptor while one lives.
class Captured {
 public:
  explicit Captured(int fd)
      : m_fd(fd), m_saved(dup(fd)), m_memory(memfd_create("captured", MFD_CLOEXEC)) {
    dup2(m_memory, m_fd);
  }
  Captured(const Captured&) = delete;
  Captured& operator=(const Captured&) = delete;
  ~Captured() {
    Restore();
    close(m_saved);
    close(m_memory);
  }

  void Restore() const { dup2(m_saved, m_fd); }
  std::string Text() const {
    std::string text(4096, '\0');
    const ssize_t size = pread(m_memory, text.data(), text.size(), 0);
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    return text;
  }

 private:
  int m_fd;
  int m_saved;
  int m_memory;
};

// The folder that the tool works in, with an input of each kind.
class Workplace {
 public:
  Workplace() {
    const Image picture = NewImage(18, 16, *FindPixelFormat(PIXEL_FORMAT_RGB8), NONE);
    const Image grey = NewImage(18, 16, *FindPixelFormat(PIXEL_FORMAT_MONO8), NONE);
    for (const char* name : {"in.png", "in.ppm", "in.pam", "in.npy", "in.raw"}) {
      WriteImage(picture, m_folder.Path(name));
    }
    WriteImage(grey, m_folder.Path("in.pgm"));
    m_folder.Write("in.tif", Bytes{'I', 'I', '*', 0});
    m_folder.Write("in.dng", Bytes{'M', 'M', 0, '*'});
    for (const std::string& name : m_folder.Names()) m_files[name] = m_folder.Read(name);
    std::setvbuf(stdin, nullptr, _IONBF, 0);  // so that nothing is left to the next case
  }

  const std::string& Path() const { return m_folder.Path(); }

  bool IsUntouched() const {
    const std::vector<std::string> names = m_folder.Names();
    return names.size() == m_files.size() &&
           std::all_of(names.begin(), names.end(), [this](const std::string& name) {
             const auto file = m_files.find(name);
             return file != m_files.end() && file->second == m_folder.Read(name);
           });
  }

  void Restore() const {
    for (const std::string& name : m_folder.Names()) m_folder.Remove(name);
    for (const auto& [name, bytes] : m_files) m_folder.Write(name, bytes);
  }

 private:
  Folder m_folder;
  std::map<std::string, Bytes> m_files;
};

// The process works in a folder while one lives.
class Inside {
 public:
  explicit Inside(const std::string& path)
      : m_before(open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (m_before < 0 || chdir(path.c_str()) != 0) Fail("cannot enter " + path);
  }
  Inside(const Inside&) = delete;
  Inside& operator=(const Inside&) = delete;
  ~Inside() {
    if (fchdir(m_before) != 0) Fail("cannot go back");
    close(m_before);
  }

 private:
  int m_before;
};

bool HasControls(std::string_view line) {
  return std::any_of(line.begin(), line.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; });
}

// How many failures were told. Warnings and the progress of --json-progress may precede them; each
// is a line.
std::size_t Failures(const std::string& said, const std::string& called) {
  std::size_t failures = 0;
  for (std::size_t begin = 0; begin < said.size();) {
    const std::size_t end = said.find('\n', begin);
    if (end == std::string::npos) Fail(called + "no newline: " + said);
    const std::string_view line = std::string_view(said).substr(begin, end - begin);
    const bool isProgress = line.starts_with(R"({"frames":)");
    if (!(isProgress || line.starts_with("korvex2: ")) || HasControls(line)) {
      Fail(called + "odd line: " + said);
    }
    failures += isProgress || line.starts_with("korvex2: warning: ") ? 0 : 1;
    begin = end + 1;
  }
  return failures;
}

void Run(std::span<const std::uint8_t> bytes) {
  static const Workplace workplace;
  const auto end = std::find(bytes.begin(), bytes.end(), 0);
  std::vector<std::string> arguments = ArgumentsOf({bytes.begin(), end});
  PutOnStandardInput({end == bytes.end() ? end : end + 1, bytes.end()});
  std::vector<char*> argv;
  std::string called;
  for (std::string& argument : arguments) {
    argv.push_back(argument.data());
    called += "'" + argument + "' ";
  }
  argv.push_back(nullptr);
  called += ": ";

  const Captured out(STDOUT_FILENO);
  const Captured err(STDERR_FILENO);
  int code = 0;
  {
    const Inside inside(workplace.Path());
    const LimitedMemory limit(kLargestBlock);
    code = RunCommandLine(static_cast<int>(arguments.size()), argv.data());
  }
  std::fflush(stdout);
  const std::string said = err.Text();
  err.Restore();
  if (code < 0 || code > 2) Fail(called + "exit code " + std::to_string(code));
  const bool untouched = workplace.IsUntouched();
  // Of many frames each may fail, and the others are there.
  const bool ofMany = said.size() == 4096 || said.find(" frames failed") != std::string::npos;
  // To `diff`, 1 means that the pictures differ, which is no failure.
  const bool isDiff = std::find(arguments.begin(), arguments.end(), "diff") != arguments.end();
  const bool isVerdict = code == 1 && isDiff && !ofMany && Failures(said, called) == 0;
  if (code != 0 && !ofMany && !isVerdict) {
    if (Failures(said, called) != 1) Fail(called + "not one failure: " + said);
    if (!out.Text().empty()) Fail(called + "printed something and failed");
    if (!untouched) Fail(called + "failed and touched the folder");
  }
  if (!untouched) workplace.Restore();
}

struct Piped {
  std::string_view line;
  std::string_view input;
};

}  // namespace

std::vector<Seed> Seeds() {
  constexpr std::string_view kLines[] = {
      "",
      "--help",
      "--version",
      "formats",
      "formats\n--json",
      "info\n--json",
      "routes\n--from\nyuv422\n--to\nbgr",
      "routes\n--from\nraw8\n--json",
      "chart\nout.png\n--width\n16\n--height\n12",
      "chart\nout.raw\n--to\nraw12\n--tile\nbggr\n--width=16\n--height=12",
      "chart\nout.png\n--width\n4294967295\n--height\n4294967295",
      "convert\nin.png\nout.pgm\n--to\nmono8",
      "convert\nin.raw\nout.png\n--from\nrgb8\n--width\n18\n--height\n16\n--to\nbgr16",
      "convert\nin.pgm\nout.pam\n--from\nraw8\n--tile\nrggb\n--method\nhq_linear\n--to\nbgru",
      "convert\nin.pgm\nout.raw\n--from\nBayerRG8\n--to\nyuv411\n-q",
      "convert\nin.png\nin.png\n--to\nrgb16",
      "convert\nin.tif\nout.png\n--to\nrgb8",
      "convert\nin.dng\nout.png\n--to\nrgb8",
      "convert\n--\n-in.png\n--to\n--from",
      "convert\nin.raw\n{index:03}.png\n--from\nmono8\n--width\n18\n--height=16\n--frames=2"
      "\n--to=mono16",
      "convert\nin.p?m\nmissing.png\n{name}{index}.npy\n--to\nrgb8\n--jobs\n2\n--resume",
      "convert\nin.png\ny4m:-\n--to\nyuv444\n--crop\n2,2,8,8",
      "convert\nin.png\nout.tif\n--to\nrgb16\n--white-balance\ngrey\n--stretch\n1,99\n--gamma\n2",
      "convert\nin.pgm\nout.png\n--to\nrgb8\n--black-level\n3\n--scale\nfile",
      "mosaic\nin.png\nout.png\n--tile\nrggb\n--to\nraw16",
      "demosaic-compare\nin.png\n--out\nout.png\n--tile\ngbrg\n--json",
      "demosaic-compare\nin.ppm\n--detail\n0\n0",
      "diff\nin.png\nin.png",
      "diff\nin.pgm\nout.pgm\n--json",
      "diff\nin.pgm\nin.raw\n--from\nmono8\n--width\n18\n--height\n16\n--picture\nout.png"
      "\n--amplify\n65535",
      "diff\nin.raw\nin.ppm\n--from\nBayerRG8\n-q",
      "guess\nin.raw",
      "guess\nin.png\n--best\n1000\n--json\n--width\n16",
      "guess\nin.raw\n--format\nrgb8\n--height\n16\n--sheet\nout.png",
      "guess\n.",
      "completions\nbash",
      "completions\nzsh",
      "completions\nfish",
      "completions\nfish\nbash",
      "man",
      "convert\nin.npy\nout.npy\n--from\nrgb8\n--to\nbgru16\n--json-progress",
      "convert\nin*.p?m\nin.npy\n{index}.y4m\n--to\nyuv422\n--json-progress\n--fail-fast\n--"
      "jobs\n16",
      "bench\n--size\n16x12\n--from\nrgb8\n--to\nmono8\n--json",
      "bench\n--size\n4294967295x4294967295\n--cpu\nplain",
      "convert\nin.png\nout.y4m\n--to\nyuv444\n--fps\n30000/1001",
  };
  std::vector<Seed> seeds;
  for (const std::string_view line : kLines) {
    seeds.push_back({"line-" + std::to_string(seeds.size()), Bytes(line.begin(), line.end())});
  }
  constexpr std::string_view kProgress =
      "convert\nin*.p?m\nin.npyg\n"
      "{inde\x8b\xf9\xf9\xf9\xf9\xf9\xff\xff\xff\x10\xf9\xf9\xf9\xf9}.y4m"
      "\n--to\nyuv422\n--json-progress\n--fail-fast\n--jobs\n16";
  seeds.push_back({"found-progress-before-a-failure", Bytes(kProgress.begin(), kProgress.end())});
  constexpr Piped kPiped[] = {
      {"convert\n-\nout.png\n--from\nmono8\n--width\n4\n--height\n3\n--to\nrgb8", "twelve bytes"},
      {"convert\n-\n-\n--from\nraw8\n--tile\nrggb\n--width\n4\n--height\n2\n--to\nbgr", "8 bytes."},
      {"convert\n-\n{index}.pgm\n--from\nmono8\n--width\n2\n--height\n2\n--to\nmono8\n--frames\n2",
       "two 2x2."},
      {"convert\n-\ny4m:-\n--from\nyuv444\n--width\n1\n--height\n1\n--to\nyuv444\n--skip\n1",
       "UYVUYVUYV"},
      {"convert\npnm:-\nout.tif\n--to\nrgb8", "P5 2 2 255\nabcd"},
      {"convert\npam:-\npnm:-\n--to\nmono8",
       "P7\nWIDTH 2\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nTUPLTYPE GRAYSCALE\nENDHDR\nab"},
      {"convert\npng:-\nout.pgm\n--to\nmono8", "\x89PNG\r\n\x1a\n"},
      {"guess\n-\n--width\n4", "twelve bytes"},
      {"diff\n-\nin.pgm\n--from\nmono8\n--width\n18\n--height\n16", "too little"},
  };
  for (const Piped& piped : kPiped) {
    Bytes bytes(piped.line.begin(), piped.line.end());
    bytes.push_back(0);
    bytes.insert(bytes.end(), piped.input.begin(), piped.input.end());
    seeds.push_back({"piped-" + std::to_string(seeds.size()), bytes});
  }
  // Each word once in its short form, so that a campaign has them all to put together.
  for (unsigned i = 0; i < std::size(kWords); ++i) {
    seeds.push_back(
        {"word-" + std::to_string(i), {0x80, '\n', static_cast<std::uint8_t>(kFirstWord + i)}});
  }
  return seeds;
}

}  // namespace Korvex2::Fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Korvex2::Fuzz::Run({data, size});
  return 0;
}
