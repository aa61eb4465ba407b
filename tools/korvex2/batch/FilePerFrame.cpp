#include "batch/FilePerFrame.h"

#include <fmt/format.h>

#include <filesystem>
#include <unordered_map>

namespace Korvex2::Tool {
namespace {

namespace fs = std::filesystem;

void RequireNoInput(const FileSet& inputs, const FramePlace& place, const std::string& output) {
  if (inputs.Contains(output)) {
    throw UsageFailure(
        "{} would be written over the input {}; let the pattern lead to another folder",
        place.label, output);
  }
}

// Of outputs that cannot be the same no more than these are looked at before any is written, and
// each one again then: files of single pixels have names without end.
constexpr std::uint64_t kCheckedBeforehand = 1 << 14;

void RequireApart(const FrameList& frames, const OutputPattern& pattern, const FileSet& inputs) {
  if (!frames.count()) {
    if (!pattern.TellsFramesApart()) {
      throw UsageFailure("the frames of standard input would all get one name; write {{index:06}}");
    }
    return;
  }
  const bool unique =
      pattern.HasIndex() || (frames.files().size() == 1 && pattern.TellsFramesApart());
  std::unordered_map<std::string, std::uint64_t> outputs;
  for (std::uint64_t i = 0; i < *frames.count() && (!unique || i < kCheckedBeforehand); ++i) {
    const FramePlace place = frames[i];
    const std::string output = pattern.Fill(place);
    RequireNoInput(inputs, place, output);
    if (unique) {
      continue;
    }
    const auto [other, isNew] = outputs.emplace(output, i);
    if (!isNew) {
      throw UsageFailure("{} and {} would both be written to {}; put {{index:06}} into the pattern",
                         frames[other->second].label, place.label, output);
    }
  }
}

}  // namespace

FilePerFrame::FilePerFrame(const FrameList& frames, const FileSet& inputs,
                           const BatchOptions& options, const FrameWork& work)
    : m_inputs(inputs), m_options(options), m_work(work), m_pattern(options.output) {
  RequireApart(frames, m_pattern, inputs);
}

void FilePerFrame::Name(Frame& frame) const {
  frame.output = m_pattern.Fill(frame.place);
}

bool FilePerFrame::MayBeDone(const Frame& frame) const {
  std::error_code isNone;
  return m_options.resume && !frame.output.empty() && fs::exists(frame.output, isNone);
}

bool FilePerFrame::IsDone(Frame& frame) {
  if (!MayBeDone(frame) || !IsWhole(frame)) {
    return false;
  }
  m_folders.Prepare(frame.output);
  return true;
}

// Files get their names when they are complete, so this guards against what others did to them.
bool FilePerFrame::IsWhole(Frame& frame) const {
  const PixelFormatInfo& target = *FindPixelFormat(m_options.target);
  const Container& container = ContainerOf(frame.output);
  if (container.size != nullptr) {
    const auto file = [&]() -> const InputFile& { return frame.Open(m_options.shape); };
    const FrameSize size = m_work.sizeOfResult(file, ContainerOf(frame.place.path));
    std::error_code isGone;  // the answer is no file's size then
    return fs::file_size(frame.output, isGone) ==
           container.size(target, size.cols, size.rows, m_options.write);
  }
  try {
    InputShape shape;
    shape.format = &target;
    ReadImage(frame.output, shape);
    return true;
  } catch (const Failure&) {
    return false;
  }
}

void FilePerFrame::Write(const Frame& frame) {
  const std::string& path = frame.output;
  RequireNoInput(m_inputs, frame.place, path);
  m_folders.Prepare(path);
  try {
    WriteImage(*frame.result, path, m_options.write);
  } catch (const FatalFailure& failure) {
    m_folders.Prepare(path);
    throw FatalFailure(
        "{}; others of the folder may be gone too, which the same command with --resume makes",
        failure.what());
  } catch (const Failure&) {
    m_folders.Prepare(path);
    throw;
  }
}

void FilePerFrame::Finish(bool /*isComplete*/) {
  m_folders.RequireAll();
}

std::string FilePerFrame::AfterInterrupt(const std::string& begun, std::uint64_t /*next*/) const {
  return fmt::format(
      "stopped by SIGINT; the {} that were begun are finished; the same command with --resume goes "
      "on",
      begun);
}

std::string FilePerFrame::AfterFailures(const Tally& /*tally*/) const {
  return "";
}

}  // namespace Korvex2::Tool
