#include "batch/OutputPattern.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <initializer_list>
#include <utility>

#include "io/File.h"
#include "terminal/Failure.h"

namespace Korvex2::Tool {
namespace {

namespace fs = std::filesystem;

// Names that are folders where a pattern has them to itself: "." and "..".
std::ptrdiff_t DotsIn(const fs::path& path) {
  return std::ranges::count_if(path,
                               [](const fs::path& name) { return name == "." || name == ".."; });
}

}  // namespace

OutputPattern::OutputPattern(std::string text) : m_text(std::move(text)) {
  try {
    if (Fill("name", 0, 0).find('\0') != std::string::npos) {
      throw fmt::format_error("a number is no character");
    }
  } catch (const fmt::format_error& error) {
    throw UsageFailure(
        "the output pattern {} is wrong ({}); write {{name}}, {{index:06}} or {{frame:06}}", m_text,
        error.what());
  }
}

bool OutputPattern::IsPattern(const std::string& text) {
  return std::ranges::any_of(std::initializer_list<const char*>{"{name", "{index", "{frame"},
                             [&](const char* field) { return text.find(field) != text.npos; });
}

std::string OutputPattern::Fill(const FramePlace& place) const {
  const std::string name =
      IsStandardStream(place.path) ? "stdin" : fs::path(place.path).stem().string();
  std::string filled = Fill(name, place.index, place.number);
  if (name.starts_with('.') && DotsIn(filled) != DotsIn(Fill("name", place.index, place.number))) {
    throw UsageFailure("{} has no name for {}; put {{index:06}} into the pattern", place.label,
                       m_text);
  }
  return filled;
}

std::string OutputPattern::Fill(const std::string& name, std::uint64_t index,
                                std::uint64_t frame) const {
  return fmt::format(fmt::runtime(m_text), fmt::arg("name", name), fmt::arg("index", index),
                     fmt::arg("frame", frame));
}

bool OutputPattern::TellsFramesApart() const {
  return Fill("name", 0, 0) != Fill("name", 1, 1);
}

bool OutputPattern::HasIndex() const {
  return Fill("name", 0, 0) != Fill("name", 1, 0);
}

}  // namespace Korvex2::Tool
