#include "batch/OneFile.h"

#include <fmt/format.h>

#include <cstdio>

#include "batch/FileSet.h"

namespace Korvex2::Tool {
namespace {

void RequireOneFileWillDo(const FrameList& frames, const BatchOptions& options) {
  if (options.resume) {
    throw UsageFailure("--resume looks for files of single frames; put {{index:06}} into {}",
                       options.output);
  }
  if (!ContainerOf(options.output).appends && frames.count() != 1 &&
      !IsStandardStream(options.output)) {
    throw UsageFailure(
        "{} inputs or frames do not fit into {}; put {{name}} or {{index:06}} into its name",
        frames.count() ? fmt::format("{}", *frames.count()) : "many", options.output);
  }
  for (const std::string& file : frames.files()) {
    if (!IsStandardStream(file) && Identity(file) == Identity(options.output)) {
      throw UsageFailure("{} is both input and output", file);
    }
  }
}

}  // namespace

OneFile::OneFile(const FrameList& frames, const FrameLayout& layout, const BatchOptions& options)
    : m_layout(layout), m_options(options), m_isStandardStream(IsStandardStream(options.output)) {
  RequireOneFileWillDo(frames, options);
}

void OneFile::Begin() {
  m_file = std::make_unique<OutputFile>(m_options.output);
}

void OneFile::Write(const Frame& frame) {
  RequireSameShape(*frame.result);
  try {
    WriteImage(*frame.result, ContainerOf(m_options.output), *m_file, m_options.write);
  } catch (const Failure& failure) {
    if (std::ferror(m_file->stream()) != 0) {
      throw FatalFailure("{}", failure.what());
    }
    throw;
  }
}

void OneFile::RequireSameShape(const Image& image) {
  if (m_size.cols == 0) {
    m_size = {image.GetCols(), image.GetRows()};
  }
  if (m_size.cols != image.GetCols() || m_size.rows != image.GetRows()) {
    throw Failure("{} x {} pixels cannot follow frames of {} x {} in {}", image.GetCols(),
                  image.GetRows(), m_size.cols, m_size.rows, m_options.output);
  }
}

void OneFile::Finish(bool isComplete) {
  if (isComplete || m_isStandardStream) {
    m_file->Commit();
  }
  m_file.reset();
}

std::string OneFile::NotWritten() const {
  return m_options.output + " is not written, since frames would be missing; ";
}

std::string OneFile::AfterInterrupt(const std::string& begun, std::uint64_t next) const {
  if (m_isStandardStream) {
    return fmt::format(
        "stopped by SIGINT; the {} that were begun are finished; go on with --skip {} and another "
        "output",
        begun, m_layout.skip + next * m_layout.every);
  }
  return fmt::format(
      "stopped by SIGINT after {}; {}start again, or put {{index:06}} into its name, so that "
      "--resume can go on",
      begun, NotWritten());
}

std::string OneFile::AfterFailures(const Tally& tally) const {
  if (m_isStandardStream || tally.converted == 0) {
    return "";
  }
  return fmt::format("; {}put {{index:06}} into its name to keep the others", NotWritten());
}

}  // namespace Korvex2::Tool
