// The plain program around a fuzz target: runs the cases that are kept in code, or the files that
// it is given, each a case that a campaign has found.
//
//   NAME_replay                       every kept case
//   NAME_replay FILE ...              these
//   NAME_replay --write-seeds FOLDER  the kept cases as files, for a campaign to start from

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "Fuzz.h"

namespace Korvex2::Fuzz {
namespace {

void Run(const std::string& name, const Bytes& bytes) {
  std::fprintf(stderr, "%s\n", name.c_str());  // the last one printed is the one that failed
  const Bytes exact(bytes);
  LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

int WriteSeeds(const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  for (const Seed& seed : Seeds()) {
    std::ofstream file(folder / seed.name, std::ios::binary);
    file.write(reinterpret_cast<const char*>(seed.bytes.data()),
               static_cast<std::streamsize>(seed.bytes.size()));
    if (!file.flush()) {
      std::fprintf(stderr, "cannot write %s\n", (folder / seed.name).c_str());
      return 1;
    }
  }
  return 0;
}

Bytes Read(const char* path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    std::fprintf(stderr, "cannot read %s\n", path);
    std::exit(2);
  }
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

}  // namespace
}  // namespace Korvex2::Fuzz

int main(int argc, char** argv) {
  using namespace Korvex2::Fuzz;
  const std::string_view option = argc > 1 ? argv[1] : "";
  if (option == "--write-seeds") {
    return argc == 3 ? WriteSeeds(argv[2]) : 2;
  }
  for (int i = 1; i < argc; ++i) {
    Run(argv[i], Read(argv[i]));
  }
  const std::vector<Seed> seeds = argc > 1 ? std::vector<Seed>() : Seeds();
  for (const Seed& seed : seeds) {
    Run(seed.name, seed.bytes);
  }
  std::printf("%d cases\n", argc > 1 ? argc - 1 : static_cast<int>(seeds.size()));
  return argc > 1 || !seeds.empty() ? 0 : 1;
}
